#include "Platform/Simulated/SimulatedPlatform.h"

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
    std::optional<std::string> modelIdentifier() const override { return "Simulated Mac"; }
    std::optional<std::string> processorBrand() const override { return std::nullopt; }
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
    platform.machine = std::make_shared<SimulatedMachine>();
    platform.sources.sensors = "simulated sensors";
    platform.sources.reports = "simulated reports";
    return platform;
}

} // namespace vantoro
