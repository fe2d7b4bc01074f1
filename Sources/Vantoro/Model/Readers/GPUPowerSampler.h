// The graphics processor's power: its energy counter, differentiated over time.
#pragma once

#include "CSensors/ioreport.h"
#include "Model/Readers/SensorSources.h"

#include <functional>
#include <optional>

namespace vantoro {

class GPUPowerSampler : public GPUPowerSource {
public:
    /// `now` gives seconds of any clock.
    explicit GPUPowerSampler(std::function<double()> now);

    /// Watts since the reading before. 0 for the first, over less than 50 ms, when the counter went back, and when
    /// there is none; a failed reading leaves the one before in place.
    double sampleWatts() override;

private:
    std::function<double()> now_;
    std::optional<double> lastJoules_;
    std::optional<double> lastTime_;
};

} // namespace vantoro
