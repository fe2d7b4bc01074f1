// The chip's temperature as a person would feel it: an exponential moving average that weighs by elapsed time, so that
// it is the same at any sampling interval.
#pragma once

#include "Model/Records/Telemetry.h"

#include <optional>

namespace vantoro {

class HeatSmoothing {
public:
    static constexpr double timeConstantSeconds = 8;

    /// The smoothed temperature after a new reading, in degrees Celsius. A reading of 0 or less (none) changes nothing
    /// and gives the last value, 0 at first; a clock that stepped backwards leaves the value as it was.
    double smoothed(UnixSeconds at, double celsius);

private:
    struct Heat {
        double celsius = 0;
        UnixSeconds at = 0;
    };

    std::optional<Heat> heat_;
};

} // namespace vantoro
