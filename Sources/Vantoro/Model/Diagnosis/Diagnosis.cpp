#include "Model/Diagnosis/Diagnosis.h"

#include "Model/Text/Numbers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fmt/format.h>
#include <iterator>
#include <utility>

namespace vantoro {

namespace {

constexpr double leastCauseCPU = 4.0;
constexpr std::size_t mostRunnersUp = 4;

Severity severityOf(StressLevel state, const Snapshot& now) {
    if (DiagnosisEngine::isThrottling(now.thermalPressure))
        return Severity::critical;
    switch (state) {
    case StressLevel::extreme:
        return Severity::high;
    case StressLevel::heavy:
        return Severity::elevated;
    case StressLevel::moderate:
        return Severity::normal;
    case StressLevel::light:
    case StressLevel::idle:
        break;
    }
    return DiagnosisEngine::busyPercent(now.cpu) > 60 ? Severity::normal : Severity::calm;
}

Factor chipFactor(double celsius) {
    const char* detail = celsius > 95 ? "Very hot" : celsius > 80 ? "Hot" : "Comfortable";
    return {"thermometer.medium", "Chip", fmt::format("{} °C", truncated(celsius)), detail};
}

std::vector<Factor> factorsOf(const Snapshot& now) {
    const double busy = std::clamp(DiagnosisEngine::busyPercent(now.cpu), 0.0, 100.0);
    const double pressure = std::clamp(DiagnosisEngine::memoryPressure(now.memory), 0.0, 1.0);
    std::vector<Factor> factors;
    factors.push_back(
        {"cpu", "CPU", fmt::format("{}%", truncated(busy)),
         fmt::format("{}% apps · {}% system", truncated(now.cpu.userPercent), truncated(now.cpu.systemPercent))});
    if (now.power.gpuWatts > 0.2)
        factors.push_back({"cube.transparent", "GPU", fmt::format("{:.1f} W", now.power.gpuWatts),
                           now.power.gpuWatts > 8.0 ? "Under real graphics load" : "Light graphics activity"});
    if (now.temps.soc > 0)
        factors.push_back(chipFactor(now.temps.soc));
    if (now.power.systemWatts > 0)
        factors.push_back({"bolt.fill", "Power", fmt::format("{:.0f} W", now.power.systemWatts), "Whole-machine draw"});
    factors.push_back({"memorychip", "Memory", fmt::format("{}%", truncated(pressure * 100)),
                       now.memory.swapOutEvents != 0 ? "Has swapped to disk" : "Pressure"});
    if (now.thermalPressure != ThermalPressure::nominal)
        factors.push_back({"exclamationmark.triangle.fill", "Thermal",
                           std::string(DiagnosisEngine::title(now.thermalPressure)),
                           now.thermalPressure == ThermalPressure::fair ? "Being watched" : "Throttling now"});
    return factors;
}

void blame(Verdict& verdict, std::vector<ProcessGroup> causes) {
    if (causes.empty())
        return;
    const auto last = causes.begin() + static_cast<std::ptrdiff_t>(std::min(causes.size(), mostRunnersUp + 1));
    verdict.runnersUp.assign(std::make_move_iterator(causes.begin() + 1), std::make_move_iterator(last));
    verdict.suspect = std::move(causes.front());
}

} // namespace

Verdict DiagnosisEngine::evaluate(const History& history, const Format& format) {
    Verdict verdict;
    if (history.snapshots().empty())
        return verdict;
    const Snapshot& now = history.snapshots().back();
    verdict.state = stressLevel(load(now, now.cooling));
    verdict.cooling = now.cooling;
    verdict.awaitingReading = now.cooling == Cooling::passive && now.chipHeat <= 0;
    verdict.severity = severityOf(verdict.state, now);
    verdict.factors = factorsOf(now);
    if (const auto rampStart = history.lastRampStart(std::nullopt))
        verdict.sustainedFor = now.timestamp - *rampStart;
    std::vector<ProcessGroup> culprits = causes(history, leastCauseCPU);
    narrate(verdict, now, culprits, format);
    verdict.cause = causePhrase(verdict, now, culprits);
    blame(verdict, std::move(culprits));
    return verdict;
}

std::vector<ProcessGroup> DiagnosisEngine::causes(const History& history, double leastCPU) {
    constexpr double lagSeconds = 15;
    constexpr double spanSeconds = 75;
    std::vector<ProcessGroup> groups = History::group(History::aggregate(history.causeWindow(lagSeconds, spanSeconds)));
    std::erase_if(groups, [leastCPU](const ProcessGroup& group) { return !(group.totalCPU >= leastCPU); });
    return groups;
}

double DiagnosisEngine::load(const Snapshot& snapshot, Cooling cooling) {
    return cooling == Cooling::passive ? Snapshot::heatLoad(snapshot.chipHeat) : snapshot.fanLoad();
}

StressLevel DiagnosisEngine::stressLevel(double load) {
    static constexpr std::array upperBounds{0.06, 0.22, 0.48, 0.78};
    const auto above = std::ranges::upper_bound(upperBounds, load);
    return static_cast<StressLevel>(above - upperBounds.begin());
}

double DiagnosisEngine::busyPercent(const CPULoad& cpu) {
    return 100 - cpu.idlePercent;
}

double DiagnosisEngine::memoryPressure(const MemoryLoad& memory) {
    if (memory.totalBytes == 0)
        return 0;
    constexpr double swapSurcharge = 0.15;
    const double held = static_cast<double>(memory.wiredBytes) + static_cast<double>(memory.compressedBytes);
    return held / static_cast<double>(memory.totalBytes) + (memory.swapOutEvents != 0 ? swapSurcharge : 0);
}

bool DiagnosisEngine::isMemoryShort(const MemoryLoad& memory) {
    return memoryPressure(memory) > 0.75;
}

bool DiagnosisEngine::isThrottling(ThermalPressure pressure) {
    return pressure >= ThermalPressure::serious;
}

std::string_view DiagnosisEngine::title(ThermalPressure pressure) {
    static constexpr std::array<std::string_view, 4> titles{"Nominal", "Fair", "Serious", "Critical"};
    return titles[static_cast<std::size_t>(pressure)];
}

std::string_view DiagnosisEngine::word(ThermalPressure pressure) {
    static constexpr std::array<std::string_view, 4> words{"nominal", "fair", "serious", "critical"};
    return words[static_cast<std::size_t>(pressure)];
}

std::string DiagnosisEngine::duration(double seconds) {
    if (seconds < 90)
        return fmt::format("{} seconds", truncated(seconds));
    const std::int64_t minutes = rounded(seconds / 60);
    if (minutes >= 120)
        return fmt::format("{} hours", minutes / 60);
    if (minutes >= 60)
        return "an hour";
    return minutes == 1 ? "a minute" : fmt::format("{} minutes", minutes);
}

std::string DiagnosisEngine::pct(double percent) {
    return fmt::format("{}%", rounded(percent));
}

std::string DiagnosisEngine::countSuffix(const ProcessGroup& group) {
    if (group.members.size() < 2)
        return {};
    return fmt::format(" across {} processes", group.members.size());
}

} // namespace vantoro
