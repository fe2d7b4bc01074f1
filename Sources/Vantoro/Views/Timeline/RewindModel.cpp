#include "Views/Timeline/RewindModel.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Views/Shared/Words.h"

#include <algorithm>
#include <cmath>
#include <QStringList>

namespace vantoro {

namespace {

QString noReading() {
    return QStringLiteral("—");
}

QString fanSpeeds(const Snapshot& snapshot, const Format& format) {
    // More of them than that do not fit beside their label.
    constexpr std::size_t mostNamed = 3;
    if (snapshot.fans.empty())
        return noReading();
    if (snapshot.fans.size() > mostNamed)
        return tr("up to %1 rpm").arg(toQString(format.rpm(snapshot.peakRPM())));
    QStringList speeds;
    for (const FanReading& fan : snapshot.fans)
        speeds.append(toQString(format.rpm(std::round(fan.rpm / 10) * 10)));
    return tr("%1 rpm").arg(speeds.join(QStringLiteral(" · ")));
}

QString percent(double value) {
    return toQString(DiagnosisEngine::pct(value));
}

/// Kernels keep no more than the beginning of a name, 15 bytes of it: that is no other name.
bool isCutFrom(const std::string& rawName, const std::string& name) {
    constexpr std::size_t keptBytes = 15;
    return rawName.size() >= keptBytes && name.starts_with(rawName);
}

std::vector<RewindModel::Reading> readingsOf(const Snapshot& snapshot, const Format& format) {
    const bool isOfWork = snapshot.cooling == Cooling::load;
    std::vector<RewindModel::Reading> readings;
    if (snapshot.cooling == Cooling::fans || (snapshot.cooling == Cooling::heat && !snapshot.fans.empty()))
        readings.push_back({tr("Fans"), fanSpeeds(snapshot, format)});
    if (!isOfWork) {
        readings.push_back({tr("Whole chip"), toQString(format.temperature(snapshot.temps.socMean))});
        readings.push_back({tr("Hottest core"), toQString(format.temperature(snapshot.temps.soc))});
    }
    readings.push_back({tr("CPU"), percent(std::clamp(DiagnosisEngine::busyPercent(snapshot.cpu), 0.0, 100.0))});
    if (isOfWork && snapshot.memory.totalBytes > 0)
        readings.push_back(
            {tr("Memory"), percent(std::clamp(DiagnosisEngine::memoryPressure(snapshot.memory), 0.0, 1.0) * 100)});
    for (const auto& [waitedFor, share, isFelt] : DiagnosisEngine::stallsOf(snapshot.stalls))
        if (isFelt || isOfWork)
            readings.push_back({tr("Waiting for %1").arg(tr(std::string(waitedFor).c_str())), percent(share)});
    const double watts = snapshot.power.systemWatts;
    if (watts > 0 || !(isOfWork || snapshot.cooling == Cooling::heat))
        readings.push_back({tr("Power"), watts > 0 ? tr("%1 W").arg(std::round(watts)) : noReading()});
    if (isOfWork)
        return readings;
    readings.push_back({tr("Thermal pressure"), toQString(DiagnosisEngine::title(snapshot.thermalPressure))});
    return readings;
}

} // namespace

QString scrubTitle(const Snapshot* snapshot, const Format& format) {
    return snapshot != nullptr ? tr("At %1").arg(toQString(format.timeWithSeconds(snapshot->timestamp))) : tr("Rewind");
}

RewindModel rewindModel(const Snapshot* snapshot, bool isPinned, const Format& format) {
    RewindModel model{.title = scrubTitle(snapshot, format)};
    if (snapshot == nullptr) {
        model.notice =
            tr("Hover anywhere on a chart to reconstruct that moment, including which processes were running.");
        return model;
    }
    model.isPinned = isPinned;
    model.readings = readingsOf(*snapshot, format);
    if (snapshot->processes.empty())
        model.notice = tr("No process data was captured for this moment.");
    for (const ProcessSample& process : snapshot->processes) {
        const bool isRenamed =
            process.rawName() != process.displayName() && !isCutFrom(process.rawName(), process.displayName());
        model.processes.push_back({.name = toQString(process.displayName()),
                                   .rawName = isRenamed ? toQString(process.rawName()) : QString(),
                                   .share = percent(process.cpuPercent)});
    }
    return model;
}

} // namespace vantoro
