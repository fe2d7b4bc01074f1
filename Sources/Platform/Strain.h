// What strains the machine beside its sensors: what its programs wait for, what slows it down, what its processors draw
// and how busy its graphics are.
#pragma once

#include "Model/Records/Telemetry.h"

#include <optional>
#include <vector>

namespace vantoro {

/// What the machine was told to favour.
enum class PowerProfile : std::uint8_t { unknown, saving, balanced, performance };

/// Whatever the system does not tell is absent.
struct StrainReading {
    StallShares stalls;
    /// Each reason once, in the order of its kind. None where nothing can tell; empty where nothing slows it down.
    std::optional<std::vector<ThrottleReason>> throttle;
    /// Busy share of the busiest engine of the busiest graphics device, 0 to 100.
    std::optional<double> gpuPercent;
    /// Share of the time in which a graphics device that does not tell its busy share was awake, 0 to 100: it was busy
    /// no longer.
    std::optional<double> gpuAwakePercent = {};
    /// What the processors draw.
    std::optional<double> cpuWatts;
    PowerProfile profile = PowerProfile::unknown;

    bool operator==(const StrainReading&) const = default;
};

/// Used from one thread at a time.
class Strain {
public:
    virtual ~Strain() = default;

    /// Powers and shares cover the time since the reading before.
    virtual StrainReading read() = 0;
};

} // namespace vantoro
