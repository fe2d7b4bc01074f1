#include "Views/Suspects/SuspectsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Views/Settings/SettingsModel.h"
#include "Views/Suspects/QuitModel.h"

#include <QStringList>

namespace vantoro {

namespace {

/// Busy for this share of the window counts as sustained.
constexpr double leastSustained = 0.6;

const QString& separator() {
    static const QString dot = QStringLiteral(" · ");
    return dot;
}

QString symbol(ProcessKind kind) {
    switch (kind) {
    case ProcessKind::userApp:
    case ProcessKind::helper:
        return "window";
    case ProcessKind::commandLine:
        return "terminal";
    case ProcessKind::systemDaemon:
        return "gearshape";
    case ProcessKind::kernel:
        break;
    }
    return "cpu";
}

bool offersQuit(const SensorHub& hub, const ProcessGroup& group, const std::optional<ProcessNote>& note) {
    const bool isTheUsers = group.kind == ProcessKind::userApp || group.kind == ProcessKind::helper ||
                            group.kind == ProcessKind::commandLine;
    return isTheUsers && (!note || note->quittable) && canBeQuit(hub, group);
}

QString about(const SensorHub& hub, const ProcessGroup& group, const QString& name, int processes) {
    QStringList parts{toQString(hub.words().kindPhrase(group.kind))};
    if (processes >= 2)
        parts += tr("%1 processes").arg(processes);
    if (const QString own = toQString(group.displayName); own != name)
        parts += own;
    return parts.join(separator());
}

QString details(const ProcessGroup& group) {
    QStringList parts{tr("peak %1").arg(toQString(DiagnosisEngine::pct(group.peakCPU)))};
    if (group.totalMemory > 0)
        parts += toQString(Format::bytes(group.totalMemory));
    if (group.members.size() == 1)
        parts += tr("pid %1").arg(group.members.front().pid);
    if (group.sustained > leastSustained)
        parts += tr("sustained");
    return parts.join(separator());
}

SuspectRowModel row(const SensorHub& hub, const ProcessGroup& group) {
    const Verdict& verdict = hub.verdict();
    const ProcessGroup whole = wholeGroup(hub, group.key).value_or(group);
    const std::optional<ProcessNote> note = noteOn(group, hub.words().kind);
    SuspectRowModel row;
    row.key = toQString(group.key);
    row.name = toQString(friendlyName(group, hub.words().kind));
    row.about = about(hub, group, row.name, hub.quits().living(whole));
    row.appPath = toQString(group.owningAppPath.value_or(std::string()));
    row.symbol = symbol(group.kind);
    row.percent = group.stressScore;
    row.figure = toQString(DiagnosisEngine::pct(group.stressScore));
    row.spokenFigure = tr("%1 percent of a core").arg(qRound(group.stressScore));
    if (!isAtRest(verdict.state) && verdict.suspect && verdict.suspect->key == group.key)
        row.heatStop = verdictHeatStop(verdict);
    row.offersQuit = offersQuit(hub, whole, note);
    if (const Quitting* const quitting = hub.quits().find(group.key)) {
        row.offersForce = quitting->stage() == Quitting::Stage::stillRunning;
        row.offersQuit = row.offersForce;
        if (!row.offersForce)
            row.quitting = tr("quitting…");
    }
    row.quitPID = group.members.empty() ? 0 : group.members.front().pid;
    if (note)
        row.explanation = tr("It's %1").arg(toQString(note->what));
    row.details = details(group);
    return row;
}

QString footer(const SensorHub& hub, const SourceNames& names) {
    const ProcessMonitor::Source source = hub.processSource();
    if (source.kind != ProcessMonitor::Source::Kind::ownProcessesOnly)
        return {};
    QString text = currentlyReading(source, names);
    if (hub.unreadableProcessCount() > 0)
        text += separator() + tr("%1 without figures").arg(hub.unreadableProcessCount());
    return text;
}

} // namespace

SuspectsModel suspectsModel(const SensorHub& hub, const SourceNames& names) {
    SuspectsModel model;
    const bool isMeasuring = hub.measuring() != Measuring::done;
    model.title = isMeasuring || isAtRest(hub.verdict().state) ? tr("Busiest right now") : tr("Suspects");
    model.cores = static_cast<int>(hub.cores().size());
    model.expandAction = tr("Expand");
    model.quitAction = tr("Quit…");
    model.forceAction = tr("Force Quit…");
    model.footer = footer(hub, names);
    if (isMeasuring) {
        model.isPending = true;
        if (!hub.processesReady())
            model.caption = tr("first list pending");
        return model;
    }
    for (const ProcessGroup& group : hub.suspects())
        if (!hub.quits().isEnded(group))
            model.rows.push_back(row(hub, group));
    if (model.rows.empty())
        model.emptyText = tr("Nothing is working the machine hard right now.");
    else
        model.caption = model.cores >= 1 && model.cores <= 24 ? tr("last 20 seconds · one cell is one core")
                                                              : tr("last 20 seconds");
    model.captionWithoutCells = tr("last 20 seconds");
    if (model.rows.size() > SuspectsModel::rowsAtFirst) {
        model.showAll = tr("Show all %1").arg(model.rows.size());
        model.showFewer = tr("Show fewer");
    }
    return model;
}

} // namespace vantoro
