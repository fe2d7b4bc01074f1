// The chip's frequency tables in the I/O registry.
#pragma once

#include "Platform/FrequencyTables.h"

namespace vantoro {

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
