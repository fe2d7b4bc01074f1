#include "Model/Diagnosis/Diagnosis.h"

#include "Model/Text/Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <utility>

namespace vantoro {

namespace {

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

/// What a graphics processor's watts say depends on the card; its busy share does not.
std::optional<Factor> graphicsFactor(const Snapshot& now, bool isMac) {
    const double watts = now.power.gpuWatts;
    const bool isDrawing = watts > 0.2;
    if (!isDrawing && !(now.gpuPercent.value_or(0) >= 1))
        return std::nullopt;
    const std::string busy = now.gpuPercent ? fmt::format("{}% busy", truncated(*now.gpuPercent)) : "";
    if (!isDrawing)
        return Factor{"cube.transparent", "GPU", DiagnosisEngine::pct(*now.gpuPercent), "Busy share"};
    const double realLoad = isMac ? 8.0 : 40.0;
    return Factor{"cube.transparent", "GPU", fmt::format("{:.1f} W", watts),
                  !busy.empty()      ? busy
                  : watts > realLoad ? "Under real graphics load"
                                     : "Light graphics activity"};
}

std::optional<Factor> powerFactor(const PowerReading& power, bool isMac) {
    constexpr double leastShown = 0.5; // less would read "0 W"
    if (power.systemWatts > (isMac ? 0 : leastShown))
        return Factor{"bolt.fill", "Power", fmt::format("{:.0f} W", power.systemWatts), "Whole-machine draw"};
    if (power.cpuWatts.value_or(0) > leastShown)
        return Factor{"bolt.fill", "Power", fmt::format("{:.0f} W", *power.cpuWatts), "Processor package"};
    return std::nullopt;
}

std::optional<Factor> memoryFactor(const MemoryLoad& memory, bool isMac) {
    if (!isMac && memory.totalBytes == 0)
        return std::nullopt;
    const double pressure = std::clamp(DiagnosisEngine::memoryPressure(memory), 0.0, 1.0);
    std::string detail = DiagnosisEngine::memoryText(memory);
    if (detail.empty())
        detail = memory.swapOutEvents != 0 ? "Has swapped to disk" : "Pressure";
    return Factor{"memorychip", "Memory", fmt::format("{}%", truncated(pressure * 100)), std::move(detail)};
}

std::optional<Factor> thermalFactor(const Snapshot& now, SystemKind system) {
    if (now.thermalPressure == ThermalPressure::nominal)
        return std::nullopt;
    const char* const detail = now.thermalPressure == ThermalPressure::fair   ? "Being watched"
                               : DiagnosisEngine::isSlowedByHeat(now, system) ? "Throttling now"
                                                                              : "Close to its limit";
    return Factor{"exclamationmark.triangle.fill", "Thermal", std::string(DiagnosisEngine::title(now.thermalPressure)),
                  detail};
}

std::optional<Factor> waitingFactor(const StallShares& stalls, bool isSpokenOfAnyway) {
    const auto waited = DiagnosisEngine::stallsOf(stalls);
    if (waited.empty() || !(waited.front().isFelt || isSpokenOfAnyway))
        return std::nullopt;
    return Factor{"hourglass", "Waiting", DiagnosisEngine::pct(waited.front().percent),
                  fmt::format("Of the time, for {}", waited.front().waitedFor)};
}

/// What is known, and nothing else; where neither fans nor temperature are, heat has no place.
std::vector<Factor> factorsOf(const Snapshot& now, SystemKind system) {
    constexpr std::size_t mostFactors = 6;
    const bool isMac = system == SystemKind::macos;
    const bool isOfWork = now.cooling == Cooling::load;
    const double busy = std::clamp(DiagnosisEngine::busyPercent(now.cpu), 0.0, 100.0);
    std::vector<Factor> factors{
        {"cpu", "CPU", fmt::format("{}%", truncated(busy)),
         fmt::format("{}% apps · {}% system", truncated(now.cpu.userPercent), truncated(now.cpu.systemPercent))}};
    const auto add = [&factors](std::optional<Factor> factor) {
        if (factor && factors.size() < mostFactors)
            factors.push_back(std::move(*factor));
    };
    add(graphicsFactor(now, isMac));
    if (now.temps.soc > 0 && !isOfWork)
        add(chipFactor(now.temps.soc));
    add(powerFactor(now.power, isMac));
    add(memoryFactor(now.memory, isMac));
    if (!isOfWork)
        add(thermalFactor(now, system));
    add(waitingFactor(now.stalls, isOfWork));
    return factors;
}

std::string ofAllMemory(std::uint64_t bytes, const MemoryLoad& memory) {
    const auto figure = [](std::uint64_t each) {
        std::string text = fmt::format("{:.1f}", static_cast<double>(each) / (1024.0 * 1024 * 1024));
        return text.ends_with(".0") ? text.substr(0, text.size() - 2) : text;
    };
    return fmt::format("{} of {} GB", figure(bytes), figure(memory.totalBytes));
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
    verdict.system = history.system();
    if (history.snapshots().empty())
        return verdict;
    const Snapshot& now = history.snapshots().back();
    const std::size_t newest = history.snapshots().size() - 1;
    verdict.load = history.load(newest, now.cooling);
    verdict.state = stressLevel(verdict.load);
    verdict.work = stressLevel(history.busyShare(newest));
    // Hard work that nobody feels yet is no rest; a Mac is judged by what is felt alone.
    if (verdict.system != SystemKind::macos && verdict.work >= StressLevel::heavy)
        verdict.state = std::max(verdict.state, StressLevel::light);
    verdict.cooling = now.cooling;
    verdict.awaitingReading = isJudgedByHeat(now.cooling) && now.chipHeat <= 0;
    verdict.severity = severityOf(verdict.state, now);
    verdict.factors = factorsOf(now, verdict.system);
    if (const auto rampStart = history.lastRampStart(std::nullopt))
        verdict.sustainedFor = now.timestamp - *rampStart;
    std::vector<ProcessGroup> culprits = blamed(history, verdict);
    narrate(verdict, now, culprits, format);
    verdict.cause = causePhrase(verdict, now, culprits);
    blame(verdict, std::move(culprits));
    return verdict;
}

Verdict DiagnosisEngine::atStart(const Snapshot& snapshot, SystemKind system) {
    Verdict verdict{.cooling = snapshot.cooling, .system = system};
    verdict.awaitingReading = isJudgedByHeat(snapshot.cooling) && snapshot.chipHeat <= 0;
    verdict.headline = verdict.awaitingReading ? "Waiting for the chip" : restHeadline(verdict, snapshot);
    return verdict;
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
    if (memory.availableBytes)
        return 1 - static_cast<double>(*memory.availableBytes) / static_cast<double>(memory.totalBytes);
    constexpr double swapSurcharge = 0.15;
    const double held = static_cast<double>(memory.wiredBytes) + static_cast<double>(memory.compressedBytes);
    return held / static_cast<double>(memory.totalBytes) + (memory.swapOutEvents != 0 ? swapSurcharge : 0);
}

bool DiagnosisEngine::isMemoryShort(const MemoryLoad& memory) {
    return memoryPressure(memory) > 0.75;
}

std::string DiagnosisEngine::memoryText(const MemoryLoad& memory) {
    if (memory.totalBytes == 0 || !memory.availableBytes)
        return {};
    return ofAllMemory(memory.totalBytes - std::min(*memory.availableBytes, memory.totalBytes), memory);
}

std::string DiagnosisEngine::heldText(const ProcessGroup& group, const MemoryLoad& memory) {
    const std::uint64_t free = std::min(memory.availableBytes.value_or(0), memory.totalBytes);
    return group.totalMemory <= memory.totalBytes - free ? ofAllMemory(group.totalMemory, memory) : std::string();
}

bool DiagnosisEngine::isThrottling(ThermalPressure pressure) {
    return pressure >= ThermalPressure::serious;
}

bool DiagnosisEngine::isSlowedByHeat(const Snapshot& snapshot, SystemKind system) {
    if (snapshot.throttle)
        return std::ranges::count(*snapshot.throttle, ThrottleReason::temperature) > 0;
    return system == SystemKind::macos && isThrottling(snapshot.thermalPressure);
}

bool DiagnosisEngine::isChargingFast(const Snapshot& snapshot, SystemKind system) {
    constexpr double fastWatts = 15;
    return snapshot.power.adapterWatts > 60 &&
           (system == SystemKind::macos || std::abs(snapshot.power.batteryWatts) >= fastWatts);
}

std::vector<DiagnosisEngine::Stall> DiagnosisEngine::stallsOf(const StallShares& shares) {
    struct Kind {
        std::optional<double> StallShares::*percent;
        std::string_view waitedFor;
        /// A queue for the processors is what a busy machine has; a wait for memory is felt long before.
        double feltPercent;
    };
    static constexpr std::array<Kind, 3> kinds{{{&StallShares::memory, "memory", 5},
                                                {&StallShares::io, "the disk", 10},
                                                {&StallShares::cpu, "the processors", 40}}};
    std::vector<Stall> stalls;
    for (const auto& [percent, waitedFor, feltPercent] : kinds)
        if (const std::optional<double> share = shares.*percent)
            stalls.push_back({waitedFor, *share, *share >= feltPercent});
    std::ranges::stable_sort(stalls, std::greater{}, &Stall::percent);
    return stalls;
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
