// A Mac made of arithmetic: the thermal model, driven by how busy this machine's processors really are. What the seams
// beside it show are its figures.
#pragma once

#include "Platform/Platform.h"
#include "Platform/Simulated/ThermalModel.h"
#include "Platform/SystemStatistics.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace vantoro {

/// Used from one thread at a time, with everything that shares it.
class SimulatedMac {
public:
    struct Options {
        ThermalDesign design = ThermalDesign::withFans();
        /// Of the small noise on the sensors.
        std::uint64_t seed = 1;
        int performanceCores = 6;
        int efficiencyCores = 4;
    };

    /// Starts rested. A null `host` is an idle one; `monotonicSeconds` gives seconds of any clock that does not go
    /// back.
    SimulatedMac(std::shared_ptr<SystemStatistics> host, std::function<double()> monotonicSeconds, Options options);

    /// The state as of now: has the model run for the time since the call before, under the load that the host had in
    /// it. Calls that follow each other within shortestUpdateSeconds give the same state, so that one round of reading
    /// sees one moment.
    const ThermalModelState& update();

    const Options& options() const { return options_; }
    const ThermalDesign& design() const { return options_.design; }

    static constexpr double shortestUpdateSeconds = 0.1;

private:
    void measureHostLoad();

    std::shared_ptr<SystemStatistics> host_;
    std::function<double()> monotonicSeconds_;
    Options options_;
    ThermalModelState state_;
    std::optional<double> lastTime_;
    std::optional<HostTicks> lastTicks_;
    double hostLoad_ = 0;
};

/// The host's platform with the sensors, clocks, energy counters, thermal state and name of a simulated Mac, which
/// warms up with the host's load. Processors, processes and applications stay the host's own. `monotonicSeconds` gives
/// seconds of any clock that does not go back; the noise on the sensors comes from `seed`. The host's statistics are
/// kept alive.
Platform simulatedPlatform(const Platform& host, bool fanless, std::function<double()> monotonicSeconds,
                           std::uint64_t seed);

} // namespace vantoro
