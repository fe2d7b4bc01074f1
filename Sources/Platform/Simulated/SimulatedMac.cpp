#include "Platform/Simulated/SimulatedMac.h"

#include "Platform/Simulated/SimulatedReports.h"
#include "Platform/Simulated/SimulatedSMCService.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace vantoro {

namespace {

class SimulatedThermalState : public ThermalState {
public:
    explicit SimulatedThermalState(std::shared_ptr<SimulatedMac> mac) : mac_(std::move(mac)) {}
    int rawValue() override { return mac_->update().pressure; }

private:
    std::shared_ptr<SimulatedMac> mac_;
};

/// Without a processor's brand, so that the model is what the machine is called.
class SimulatedMachine : public Machine {
public:
    explicit SimulatedMachine(SystemKind host) : host_(host) {}
    std::optional<std::string> modelIdentifier() const override {
        return "Simulated " + std::string(systemWords(host_).machine);
    }
    std::optional<std::string> processorBrand() const override { return std::nullopt; }

private:
    SystemKind host_;
};

/// As many cores of each kind as the host has, so that every one that is shown has a clock.
void takeCores(SimulatedMac::Options& options, Processors& host) {
    const ProcessorCounts counts = host.counts();
    const int all = std::max(counts.performance + counts.efficiency, counts.all);
    if (all < 1)
        return;
    options.performanceCores = counts.performance > 0 ? counts.performance : all;
    options.efficiencyCores = counts.efficiency;
}

} // namespace

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

Platform simulatedPlatform(const Platform& host, bool fanless, std::function<double()> monotonicSeconds,
                           std::uint64_t seed) {
    SimulatedMac::Options options{.design = fanless ? ThermalDesign::fanless() : ThermalDesign::withFans(),
                                  .seed = seed};
    if (host.processors)
        takeCores(options, *host.processors);
    const auto mac =
        std::make_shared<SimulatedMac>(host.systemStatistics, std::move(monotonicSeconds), std::move(options));
    Platform platform = host;
    platform.smcService = std::make_shared<SimulatedSMCService>(mac);
    platform.stateReport = std::make_shared<SimulatedStateReport>(mac);
    platform.energyReport = std::make_shared<SimulatedEnergyReport>(mac);
    platform.frequencyTables = std::make_shared<SimulatedFrequencyTables>(mac);
    platform.thermalState = std::make_shared<SimulatedThermalState>(mac);
    platform.machine = std::make_shared<SimulatedMachine>(host.system);
    platform.sources.sensors = "simulated sensors";
    platform.sources.reports = "simulated reports";
    return platform;
}

} // namespace vantoro
