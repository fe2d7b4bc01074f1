// What the chip tells of itself: how long each core has spent in each performance state and how much energy its blocks
// have used, from the system's report (groups "CPU Stats" and "Energy Model"), and its frequency tables in the I/O
// registry.
#pragma once

#include "Platform/Darwin/Sensors/IOReportLibrary.h"
#include "Platform/EnergyReport.h"
#include "Platform/FrequencyTables.h"
#include "Platform/StateReport.h"

#include <memory>
#include <optional>

namespace vantoro {

/// Channel names begin with the core's cluster (see coreChannelName).
class DarwinStateReport : public StateReport {
public:
    bool load() override;
    bool subscribe() override;
    std::unique_ptr<StateSample> sample() override;

private:
    std::optional<IOReportLibrary> library_;
    std::optional<IOReportGroup> group_;
    std::shared_ptr<KeptTexts> texts_ = std::make_shared<KeptTexts>();
};

class DarwinEnergyReport : public EnergyReport {
public:
    bool load() override;
    bool subscribe() override;
    std::unique_ptr<EnergySample> sample() override;

private:
    std::optional<IOReportLibrary> library_;
    std::optional<IOReportGroup> group_;
    std::shared_ptr<KeptTexts> texts_ = std::make_shared<KeptTexts>();
};

/// Tables whose frequencies are in Hz are handed over in kHz (see rewriteInKilohertz).
class DarwinFrequencyTables : public FrequencyTables {
public:
    DarwinFrequencyTables();
    /// IORegistryEntryFromPath.
    std::unique_ptr<RegistryEntry> entryAtPath(const std::string& path) override;
    /// IOServiceGetMatchingServices on the name.
    std::optional<std::vector<std::unique_ptr<RegistryEntry>>> entriesNamed(const std::string& name) override;
    /// By the names of the performance levels.
    bool hasMiddleTier() const override { return hasMiddleTier_; }

private:
    bool hasMiddleTier_;
};

} // namespace vantoro
