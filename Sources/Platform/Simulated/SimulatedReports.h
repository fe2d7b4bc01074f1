// The simulated Mac's counters: how long its cores have spent in each performance state, and the energy it has used.
#pragma once

#include "Platform/EnergyReport.h"
#include "Platform/FrequencyTables.h"
#include "Platform/Simulated/SimulatedMac.h"
#include "Platform/StateReport.h"

#include <memory>
#include <string>
#include <vector>

namespace vantoro {

/// One channel per core, "ECPU0", … before "PCPU0", …: "IDLE" and one state per clock of the cluster, in ticks of 24
/// MHz.
class SimulatedStateReport : public StateReport {
public:
    explicit SimulatedStateReport(std::shared_ptr<SimulatedMac> mac);

    bool load() override { return true; }
    bool subscribe() override { return true; }
    std::unique_ptr<StateSample> sample() override;

private:
    std::shared_ptr<SimulatedMac> mac_;
};

/// "voltage-states1-sram" (efficiency) and "voltage-states5-sram" (performance) at "IODeviceTree:/arm-io/pmgr".
class SimulatedFrequencyTables : public FrequencyTables {
public:
    explicit SimulatedFrequencyTables(std::shared_ptr<SimulatedMac> mac);

    std::unique_ptr<RegistryEntry> entryAtPath(const std::string& path) override;
    std::optional<std::vector<std::unique_ptr<RegistryEntry>>> entriesNamed(const std::string& name) override;

private:
    std::shared_ptr<SimulatedMac> mac_;
};

/// "CPU Energy" and "GPU Energy" in mJ.
class SimulatedEnergyReport : public EnergyReport {
public:
    explicit SimulatedEnergyReport(std::shared_ptr<SimulatedMac> mac);

    bool load() override { return true; }
    bool subscribe() override { return true; }
    std::unique_ptr<EnergySample> sample() override;

private:
    std::shared_ptr<SimulatedMac> mac_;
};

} // namespace vantoro
