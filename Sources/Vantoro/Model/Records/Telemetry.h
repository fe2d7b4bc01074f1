// The plain value records that everything else passes around: one Snapshot per sampling tick, the coarser Vitals that
// the interface watches, and the small readings of which both are made.
#pragma once

#include "Model/Records/ProcessIdentity.h"
#include "Model/Records/Temperatures.h"
#include "Model/Text/Numbers.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// The operating systems that a machine may run.
enum class SystemKind : std::uint8_t { macos, gnuLinux };

/// One fan. Speeds in revolutions per minute; limits of 0 mean they are not known: a
/// graphics card's own fan, a pump, a fan whose driver tells its speed only.
struct FanReading {
    int index = 0;
    double rpm = 0;
    double minRPM = 0;
    double maxRPM = 0;
    double targetRPM = 0;
    /// As the driver calls it; empty where it does not.
    std::string name = {};
    /// The limits were learned by watching.
    bool hasLearnedLimits = false;
    /// They are not known yet, and are being learned.
    bool learnsLimits = false;

    /// Its name; without one "Left" for index 0 and "Right" for 1 of a Mac, else "Fan " and the index counted from 1.
    std::string label(SystemKind system = SystemKind::macos) const;

    bool operator==(const FanReading&) const = default;
};

/// Watts; 0 means no reading.
struct PowerReading {
    double systemWatts = 0;
    double adapterWatts = 0;
    double batteryWatts = 0;
    double gpuWatts = 0;
    /// What the processors draw.
    std::optional<double> cpuWatts = {};

    bool operator==(const PowerReading&) const = default;
};

/// Shares of all processor time in per cent (0 to 100), and the one-minute load average.
struct CPULoad {
    double userPercent = 0;
    double systemPercent = 0;
    double idlePercent = 100;
    double loadAverage = 0;

    /// What is not idle, held to 0 to 100; not a number is nothing.
    double busyPercent() const {
        const double percent = 100 - idlePercent;
        return percent > 0 ? percent < 100 ? percent : 100 : 0;
    }
    bool operator==(const CPULoad&) const = default;
};

/// Bytes, and the system's running count of pages swapped out.
struct MemoryLoad {
    std::uint64_t usedBytes = 0;
    std::uint64_t totalBytes = 0;
    std::uint64_t wiredBytes = 0;
    std::uint64_t compressedBytes = 0;
    std::uint64_t swapOutEvents = 0;
    /// What could be had without swapping.
    std::optional<std::uint64_t> availableBytes = {};

    bool operator==(const MemoryLoad&) const = default;
};

/// The machine-wide figures that come with each process list: an idle machine of unknown size until something is read.
struct SystemLine {
    CPULoad cpu;
    MemoryLoad memory;

    bool operator==(const SystemLine&) const = default;
};

/// How hard the system says heat presses on it; ordered by raw value.
enum class ThermalPressure : std::uint8_t { nominal = 0, fair = 1, serious = 2, critical = 3 };

inline constexpr std::array allThermalPressures{ThermalPressure::nominal, ThermalPressure::fair,
                                                ThermalPressure::serious, ThermalPressure::critical};

/// The pressure with this raw value; none outside 0 to 3.
std::optional<ThermalPressure> thermalPressure(int rawValue);

/// What a machine's verdict may speak of: what it can tell of its cooling.
enum class Cooling : std::uint8_t {
    fans,    ///< how hard its fans work is known
    passive, ///< it has no fans, the chip's temperature is known
    heat,    ///< it has or may have fans, how hard they work is not known; the chip's temperature is
    load     ///< neither is known
};

/// Per cent of the last ten seconds in which some work waited for it, 0 to 100.
struct StallShares {
    std::optional<double> cpu = {};
    std::optional<double> memory = {};
    std::optional<double> io = {};

    bool operator==(const StallShares&) const = default;
};

/// What slows a machine down.
enum class ThrottleReason : std::uint8_t { temperature, power, current, firmware, profile };

/// "P" of "performance".
inline std::string tierLetter(const std::string& tierName) {
    const char first = tierName.empty() ? '?' : tierName.front();
    return {first >= 'a' && first <= 'z' ? static_cast<char>(first - 'a' + 'A') : first};
}

/// One logical processor over the last interval.
struct Core {
    int index = 0;
    bool isPerformance = false;
    /// Share of the interval spent not idle, 0 to 1.
    double busy = 0;
    /// Mean frequency weighted by the time spent at each; 0 until measured.
    double megahertz = 0;
    /// Position among the cores of its kind.
    int clusterIndex = 0;
    /// What the system calls its kind ("super"); empty for the usual names.
    std::string tier = {};

    std::string tierName() const { return !tier.empty() ? tier : isPerformance ? "performance" : "efficiency"; }
    /// "P0", "E3": the first letter of its kind.
    std::string label() const { return tierLetter(tierName()) + std::to_string(clusterIndex); }

    bool operator==(const Core&) const = default;
};

/// What one processor core did, as a recording holds it. Cores stand in their kind's order.
struct CoreReading {
    bool isPerformance = false;
    /// 0 to 100.
    double busyPercent = 0;
    /// 0 when not known.
    double megahertz = 0;

    bool operator==(const CoreReading&) const = default;
};

/// One process in one tick. What stays the same from tick to tick is shared (see ProcessIdentity.h).
struct ProcessSample {
    SharedProcessIdentity identity;
    /// Per cent of one core; may exceed 100.
    double cpuPercent = 0;
    std::uint64_t memoryBytes = 0;
    double energyImpact = 0;
    /// The part of the graphics processor's busy share that was this process's, 0 to 100.
    std::optional<double> gpuPercent = {};

    std::int32_t pid() const { return identity->pid; }
    const std::string& rawName() const { return identity->rawName; }
    const std::string& displayName() const { return identity->displayName; }
    const std::string& executablePath() const { return identity->executablePath; }
    const std::optional<std::string>& owningAppName() const { return identity->owningAppName; }
    const std::optional<std::string>& owningAppPath() const { return identity->owningAppPath; }
    const std::string& user() const { return identity->user; }
    ProcessKind kind() const { return identity->kind; }

    bool operator==(const ProcessSample&) const = default;
};

/// Everything measured at one instant.
struct Snapshot {
    UnixSeconds timestamp = 0;
    std::vector<FanReading> fans;
    Temperatures temps;
    PowerReading power;
    CPULoad cpu;
    MemoryLoad memory;
    ThermalPressure thermalPressure = ThermalPressure::nominal;
    std::vector<ProcessSample> processes;
    Cooling cooling = Cooling::fans;
    /// Degrees Celsius: the smoothed chip temperature.
    double chipHeat = 0;
    StallShares stalls = {};
    /// None where it cannot be told; empty where nothing does.
    std::optional<std::vector<ThrottleReason>> throttle = {};
    /// The platform profile in force favours speed over quiet. Known of the living machine only, never of a recording.
    bool favoursSpeed = false;
    /// Busy share of the busiest engine of the busiest graphics device, 0 to 100.
    std::optional<double> gpuPercent = {};
    /// Single readings, only on their way into a recording and out of one: a history holds none. None where they were
    /// not taken; temperatures ascend, in degrees Celsius.
    std::optional<std::vector<CoreReading>> cores = {};
    std::optional<std::vector<double>> dieSensors = {};
    std::optional<std::vector<double>> gpuSensors = {};

    /// How hard the fans work, 0 to 1: the largest share of its span that any fan has climbed. A fan whose limits lie
    /// no more than 1 rpm apart counts as 0; no fans gives 0.
    double fanLoad() const;
    /// The highest speed among the fans; 0 without fans. Named fans without limits, not the machine's own, count where
    /// there is no other.
    double peakRPM() const;
    /// A chip temperature in degrees Celsius as a load of 0 to 1, along a convex curve: low through ordinary warmth,
    /// steep above 80. 35 and below (and NaN) give 0, above 100 gives 1.
    static double heatLoad(double celsius);

    bool operator==(const Snapshot&) const = default;
};

/// What the interface redraws from: the figures rounded to the step at which they are shown, so that two ticks compare
/// equal while nothing visible has changed.
struct Vitals {
    std::vector<FanReading> fans;
    Temperatures temps;
    PowerReading power;
    CPULoad cpu;
    MemoryLoad memory;
    ThermalPressure thermalPressure = ThermalPressure::nominal;

    Vitals() = default;
    /// Speeds to 10 rpm, temperatures to whole degrees, system and adapter power to 0.5 W, battery and GPU power to
    /// 0.1 W, shares to whole per cent, the load average to one decimal; memory and pressure as they are.
    static Vitals quantising(const Snapshot& snapshot);

    /// As for a Snapshot.
    double fanLoad() const;
    double peakRPM() const;

    bool operator==(const Vitals&) const = default;
};

} // namespace vantoro
