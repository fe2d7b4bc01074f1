#include "Views/Suspects/SuspectsModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Diagnosis/ProcessKnowledge.h"
#include "Views/Settings/SettingsModel.h"
#include "Views/Suspects/QuitModel.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <QStringList>
#include <unordered_set>

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

/// The version of a program's file is nobody's name for it: "python3.11" is "python3".
QString programOf(const ProcessAggregate& member) {
    QString program = toQString(member.executablePath).section(u'/', -1);
    const qsizetype dot = program.indexOf(u'.');
    const bool isVersion = dot > 0 && std::all_of(program.cbegin() + dot, program.cend(),
                                                  [](QChar sign) { return sign.isDigit() || sign == u'.'; });
    return isVersion ? program.left(dot) : program;
}

/// A process's own name; of one that runs a script "python3 codegen.py".
QString memberName(const ProcessAggregate& member) {
    const QString name = toQString(member.displayName);
    if (member.kind != ProcessKind::commandLine || name.startsWith(QLatin1String("virtual machine ")))
        return name;
    const QString program = programOf(member);
    const bool isOwnName = program.isEmpty() || program.startsWith(u'.') || name.startsWith(program) ||
                           program == QLatin1String("busybox") || program.startsWith(QLatin1String("wine"));
    return isOwnName ? name : program + u' ' + name;
}

/// Whole figures that add up to the sum: those that lose most by being cut are rounded up.
std::vector<int> wholeShares(const std::vector<double>& shares, int sum) {
    std::vector<int> whole;
    std::vector<std::size_t> order;
    int missing = sum;
    for (const double share : shares) {
        order.push_back(whole.size());
        whole.push_back(static_cast<int>(std::floor(std::clamp(share, 0.0, 1e6))));
        missing -= whole.back();
    }
    const auto lost = [&](std::size_t i) { return shares[i] - whole[i]; };
    std::ranges::stable_sort(order, std::greater{}, lost);
    for (std::size_t i = 0; i < order.size() && missing > 0; ++i, --missing)
        ++whole[order[i]];
    return whole;
}

/// What one line stands for.
struct MemberLineFigures {
    QString name;
    double percent = 0;
    int processes = 0;
    std::int32_t pid = 0;
};

void addTo(std::vector<MemberLineFigures>& lines, const ProcessAggregate& member, double percent) {
    const QString name = memberName(member);
    auto line = std::ranges::find(lines, name, &MemberLineFigures::name);
    if (line == lines.end())
        line = lines.insert(line, {.name = name, .pid = member.pid});
    line->percent += percent;
    ++line->processes;
}

bool hasEnded(const SensorHub& hub, const ProcessAggregate& member) {
    // What is idle may have left the list only.
    return member.lastSeen < hub.snapshot().timestamp && !hub.quits().isKnownToLive(member);
}

std::vector<MemberModel> members(const SensorHub& hub, const ProcessGroup& group) {
    constexpr std::size_t mostLines = 6;
    if (group.members.size() < 2)
        return {};
    double sum = 0;
    double work = 0;
    for (const ProcessAggregate& member : group.members) {
        sum += member.averageCPU;
        work += member.totalCPU;
    }
    // Where members took turns, the group used less than the sum of what each used while it was there.
    constexpr double rounding = 0.01;
    const bool tookTurns = sum > group.totalCPU + rounding && work > 0;
    std::vector<MemberLineFigures> living;
    std::vector<MemberLineFigures> ended;
    for (const ProcessAggregate& member : group.members)
        addTo(hasEnded(hub, member) ? ended : living, member,
              tookTurns ? member.totalCPU / work * group.totalCPU : member.averageCPU);
    std::ranges::stable_sort(living, std::greater{}, &MemberLineFigures::percent);
    std::ranges::stable_sort(ended, std::greater{}, &MemberLineFigures::percent);

    std::vector<MemberModel> lines;
    std::vector<double> shares;
    const std::size_t told = living.size() <= mostLines ? living.size() : mostLines - 1;
    for (std::size_t i = 0; i < told; ++i) {
        const MemberLineFigures& line = living[i];
        shares.push_back(line.percent);
        lines.push_back(line.processes > 1
                            ? MemberModel{.key = line.name, .name = tr("%1 × %2").arg(line.name).arg(line.processes)}
                            : MemberModel{.key = line.name, .name = line.name, .detail = tr("pid %1").arg(line.pid)});
    }
    const auto summarise = [&](const std::vector<MemberLineFigures>& those, std::size_t from, const auto& named) {
        int processes = 0;
        QStringList names;
        shares.push_back(0);
        for (std::size_t i = from; i < those.size(); ++i) {
            processes += those[i].processes;
            shares.back() += those[i].percent;
            names += those[i].name;
        }
        lines.push_back({.name = named(processes), .detail = names.join(QStringLiteral(", ")), .isSummary = true});
    };
    if (told < living.size()) {
        summarise(living, told, [](int others) { return tr("and %1 others").arg(others); });
        lines.back().detail.clear();
    }
    if (!ended.empty())
        summarise(ended, 0, [](int count) { return tr("%1 that ended").arg(count); });
    const std::vector<int> whole = wholeShares(shares, static_cast<int>(std::lround(group.stressScore)));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        lines[i].percent = shares[i];
        lines[i].figure = toQString(DiagnosisEngine::pct(whole[i]));
        lines[i].spokenFigure = tr("%1 percent of a core").arg(whole[i]);
    }
    return lines;
}

/// The most that the group's processes used of a core in one sample of the last seconds.
double peakOf(const SensorHub& hub, const ProcessGroup& group) {
    constexpr double seconds = 20;
    std::unordered_set<std::int32_t> pids;
    for (const ProcessAggregate& member : group.members)
        pids.insert(member.pid);
    double peak = 0;
    for (const Snapshot& snapshot : hub.history().recent(seconds)) {
        double percent = 0;
        for (const ProcessSample& row : snapshot.processes)
            percent += pids.contains(row.pid()) ? row.cpuPercent : 0;
        peak = std::max(peak, percent);
    }
    return peak;
}

QString about(const SensorHub& hub, const ProcessGroup& group, const QString& name, int processes) {
    QStringList parts{toQString(hub.words().kindPhrase(group.kind))};
    if (processes >= 2)
        parts += tr("%1 processes").arg(processes);
    if (const QString own = toQString(group.displayName); own != name)
        parts += own;
    return parts.join(separator());
}

QString details(const SensorHub& hub, const ProcessGroup& group, bool isUnfolded) {
    // Only what somebody looks at is reckoned.
    const bool isJob = isUnfolded && !hub.words().isMac() && group.members.size() > 1;
    const double peak = isJob ? peakOf(hub, group) : group.peakCPU;
    QStringList parts{tr("peak %1").arg(toQString(DiagnosisEngine::pct(peak)))};
    if (group.totalMemory > 0)
        parts += toQString(Format::bytes(group.totalMemory));
    if (group.members.size() == 1)
        parts += tr("pid %1").arg(group.members.front().pid);
    if (group.sustained > leastSustained)
        parts += tr("sustained");
    return parts.join(separator());
}

SuspectRowModel row(const SensorHub& hub, const ProcessGroup& group, const UnfoldedRow& unfolded) {
    constexpr double leastGraphics = 1;
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
    if (group.gpuPercent && *group.gpuPercent >= leastGraphics) {
        const double share = std::min(*group.gpuPercent, 100.0);
        row.graphicsPercent = share;
        row.graphicsFigure = toQString(DiagnosisEngine::pct(share));
        row.spokenFigure =
            tr("%1 percent of the graphics processor, %2").arg(QString::number(qRound(share)), row.spokenFigure);
    }
    if (!isAtRest(namedLevel(verdict)) && verdict.suspect && verdict.suspect->key == group.key) {
        row.heatStop = verdictHeatStop(verdict);
        row.isNamedForGraphics = verdict.isOfGraphics && row.graphicsPercent.has_value();
    }
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
    const bool isUnfolded = !unfolded.key.isEmpty() && unfolded.key == row.key;
    row.details = details(hub, group, isUnfolded);
    if (isUnfolded) {
        row.members = members(hub, group);
        if (!unfolded.folder.isEmpty())
            row.folder = tr("in %1").arg(unfolded.folder);
    }
    return row;
}

/// The work of the last seconds that belongs to no row, where it is more than a tenth of the machine.
std::optional<UnaccountedModel> unaccounted(const SensorHub& hub) {
    constexpr double seconds = 20;
    const std::optional<double> percent = unaccountedCPU(hub.history().recent(seconds), hub.history().processorCount());
    if (!percent)
        return std::nullopt;
    return UnaccountedModel{.name = tr("Not accounted for"),
                            .about = tr("interrupts, other users, a host's work"),
                            .toolTip = tr("Interrupts, programs of other users that may not be read, or work of the "
                                          "machine that hosts this one."),
                            .percent = *percent,
                            .figure = toQString(DiagnosisEngine::pct(*percent)),
                            .spokenFigure = tr("%1 percent of a core").arg(qRound(*percent))};
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

QString jobFolder(const SensorHub& hub, const QString& key, const QString& home) {
    const auto group = std::ranges::find(hub.suspects(), key.toStdString(), &ProcessGroup::key);
    if (group == hub.suspects().end() || group->kind != ProcessKind::commandLine)
        return {};
    const QString path = toQString(hub.quits().workingFolder(*group));
    const bool isWithin = home.size() > 1 && (path == home || path.startsWith(home + u'/'));
    return isWithin ? u'~' + path.mid(home.size()) : path;
}

SuspectsModel suspectsModel(const SensorHub& hub, const SourceNames& names, const UnfoldedRow& unfolded) {
    SuspectsModel model;
    const bool isMeasuring = hub.measuring() != Measuring::done;
    model.title = isMeasuring || isAtRest(namedLevel(hub.verdict())) ? tr("Busiest right now") : tr("Suspects");
    model.cores = static_cast<int>(hub.cores().size());
    model.unfoldAction = tr("Unfold");
    model.foldAction = tr("Fold");
    model.unfoldedWord = tr("unfolded");
    model.graphicsCaption = tr("graphics processor");
    model.quitAction = tr("Quit…");
    model.forceAction = tr("Force Quit…");
    model.footer = footer(hub, names);
    if (isMeasuring) {
        model.isPending = true;
        if (!hub.processesReady())
            model.caption = tr("first list pending");
        return model;
    }
    model.unaccounted = unaccounted(hub);
    for (const ProcessGroup& group : hub.suspects())
        if (!hub.quits().isEnded(group))
            model.rows.push_back(row(hub, group, unfolded));
    if (hub.verdict().isOfGraphics)
        std::ranges::stable_sort(model.rows, std::greater{},
                                 [](const SuspectRowModel& row) { return row.graphicsPercent.value_or(0); });
    const std::size_t lines = model.rows.size() + (model.unaccounted ? 1 : 0);
    if (lines == 0)
        model.emptyText = tr("Nothing is working the machine hard right now.");
    else
        model.caption = model.cores >= 1 && model.cores <= 24 ? tr("last 20 seconds · one cell is one core")
                                                              : tr("last 20 seconds");
    model.captionWithoutCells = tr("last 20 seconds");
    if (lines > SuspectsModel::rowsAtFirst) {
        model.showAll = tr("Show all %1").arg(lines);
        model.showFewer = tr("Show fewer");
    }
    return model;
}

} // namespace vantoro
