#include "Views/Shared/Words.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/Live/SensorHub.h"
#include "Model/Records/Telemetry.h"

#include <algorithm>
#include <QTranslator>

namespace vantoro {

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString alikeCores(int count) {
    return count == 1 ? tr("1 core") : tr("%1 cores").arg(count);
}

QString coreCounts(const std::vector<Core>& cores) {
    int performanceCount = 0;
    std::string performance = Core{.isPerformance = true}.tierName();
    std::string efficiency = Core().tierName();
    for (const Core& core : cores) {
        performanceCount += core.isPerformance ? 1 : 0;
        (core.isPerformance ? performance : efficiency) = core.tierName();
    }
    const int all = static_cast<int>(cores.size());
    if (performanceCount == all || performanceCount == 0)
        return alikeCores(all);
    return tr("%1 %2 · %3 %4")
        .arg(performanceCount)
        .arg(tr(performance.c_str()))
        .arg(all - performanceCount)
        .arg(tr(efficiency.c_str()));
}

SourceNames sourcesShown(const SensorHub& hub, const SourceNames& own) {
    if (!hub.isReplay())
        return own;
    SourceNames names;
    if (!hub.words().isMac())
        names = {.system = hub.words().kind,
                 .stream = "vantoro-top",
                 .streamForShort = "vantoro-top",
                 .sensors = "hwmon",
                 .reports = "cpufreq"};
    names.costsAreStated = own.costsAreStated;
    return names;
}

QString trayText(const QString& text) {
    QString shown = text;
    return shown.replace(u'<', QChar(0x2039)).replace(u'>', QChar(0x203A)).replace(u'&', QChar(0xFF06));
}

QString tr(const char* text, int count) {
    return QCoreApplication::translate("vantoro", text, nullptr, count);
}

bool installCatalogue(const QLocale& locale, const QStringList& folders) {
    auto* const catalogue = new QTranslator(QCoreApplication::instance()); // owned by Qt as a child
    const auto holds = [&](const QString& folder) { return catalogue->load(locale, "vantoro", "_", folder); };
    return std::any_of(folders.begin(), folders.end(), holds) && QCoreApplication::installTranslator(catalogue);
}

StressLevel namedLevel(const Verdict& verdict) {
    return verdict.cooling != Cooling::load && verdict.speaksOfWork() ? verdict.work : verdict.state;
}

int verdictHeatStop(const Verdict& verdict) {
    return static_cast<int>(verdict.severity == Severity::critical ? StressLevel::extreme : namedLevel(verdict));
}

int dialHeatStop(const Verdict& verdict) {
    return static_cast<int>(verdict.severity == Severity::critical ? StressLevel::extreme : verdict.state);
}

EyebrowModel eyebrowModel(const Verdict& verdict) {
    constexpr double shortestMentioned = 45;
    EyebrowModel model;
    model.heatStop = verdictHeatStop(verdict);
    model.label = toQString(verdict.stateLabel());
    model.isCritical = verdict.severity == Severity::critical;
    model.spokenValue = model.label;
    if (!verdict.awaitingReading) {
        model.level = static_cast<int>(namedLevel(verdict));
        model.spokenValue = tr("%1, %2 of 5").arg(model.label).arg(*model.level + 1);
    }
    if (verdict.sustainedFor > shortestMentioned)
        model.duration = tr("for %1").arg(toQString(DiagnosisEngine::duration(verdict.sustainedFor)));
    return model;
}

EyebrowModel measuringEyebrow() {
    const QString label = tr("Measuring");
    return {.label = label, .spokenValue = label};
}

} // namespace vantoro
