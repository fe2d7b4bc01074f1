#include "Platform/Simulated/SimulatedMac.h"

#include <utility>

namespace vantoro {

SimulatedMac::SimulatedMac(std::shared_ptr<SystemStatistics> host, std::function<double()> monotonicSeconds,
                           Options options)
    : host_(std::move(host))
    , monotonicSeconds_(std::move(monotonicSeconds))
    , options_(std::move(options))
    , state_(restingState(options_.design)) {
    update();
}

const ThermalModelState& SimulatedMac::update() {
    const double now = monotonicSeconds_();
    if (lastTime_ && now >= *lastTime_ && now - *lastTime_ < shortestUpdateSeconds)
        return state_;
    measureHostLoad();
    if (lastTime_)
        advance(options_.design, state_, hostLoad_, now - *lastTime_);
    lastTime_ = now;
    return state_;
}

// Without new ticks the load is what it was last.
void SimulatedMac::measureHostLoad() {
    const std::optional<HostTicks> ticks = host_ ? host_->hostTicks() : std::nullopt;
    if (!ticks)
        return;
    if (lastTicks_)
        hostLoad_ = TicksSpent(*lastTicks_, *ticks).busyShare().value_or(hostLoad_);
    lastTicks_ = ticks;
}

} // namespace vantoro
