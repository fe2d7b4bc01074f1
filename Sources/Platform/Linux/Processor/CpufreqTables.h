// The processors' frequencies, laid out as the device registry of a Mac holds them.
#pragma once

#include "Platform/FrequencyTables.h"

#include <string>

namespace vantoro {

/// One entry, at "IODeviceTree:/arm-io/pmgr", with the tables "voltage-states1-sram" (efficiency processors) and
/// "voltage-states5-sram" (performance processors); none on a machine without frequency scaling.
class CpufreqTables : public FrequencyTables {
public:
    explicit CpufreqTables(std::string root);

    std::unique_ptr<RegistryEntry> entryAtPath(const std::string& path) override;
    std::optional<std::vector<std::unique_ptr<RegistryEntry>>> entriesNamed(const std::string& name) override;

private:
    std::string root_;
};

} // namespace vantoro
