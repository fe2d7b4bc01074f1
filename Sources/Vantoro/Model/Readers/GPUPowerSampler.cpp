#include "Model/Readers/GPUPowerSampler.h"

#include <utility>

namespace vantoro {

GPUPowerSampler::GPUPowerSampler(std::function<double()> now) : now_(std::move(now)) {}

double GPUPowerSampler::sampleWatts() {
    constexpr double shortestSeconds = 0.05; // over less, the counter's own steps show
    double joules = 0;
    if (ior_gpu_energy_joules(&joules) == 0)
        return 0;
    const double now = now_();
    double watts = 0;
    if (lastJoules_ && lastTime_) {
        const double elapsed = now - *lastTime_;
        // A counter that was reset says nothing for one sample, rather than something negative.
        if (elapsed > shortestSeconds && joules >= *lastJoules_)
            watts = (joules - *lastJoules_) / elapsed;
    }
    lastJoules_ = joules;
    lastTime_ = now;
    return watts;
}

} // namespace vantoro
