// The chip's tables of operating frequencies, as the device registry holds them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// One entry of the device registry.
class RegistryEntry {
public:
    virtual ~RegistryEntry() = default;

    /// The bytes of a property; of a table of voltage states they are records of 8 bytes, of which the first four are a
    /// frequency in kHz, little-endian. None when there is no such property or it holds no bytes.
    virtual std::optional<std::vector<std::uint8_t>> data(const std::string& property) const = 0;
};

class FrequencyTables {
public:
    virtual ~FrequencyTables() = default;

    /// Null when there is none.
    virtual std::unique_ptr<RegistryEntry> entryAtPath(const std::string& path) = 0;
    /// Every entry of this name, in the registry's order; none when the search itself fails.
    virtual std::optional<std::vector<std::unique_ptr<RegistryEntry>>> entriesNamed(const std::string& name) = 0;
    /// Whether the slower cores of this chip are the middle kind ("MCPU") in place of efficiency cores; their table is
    /// then another.
    virtual bool hasMiddleTier() const { return false; }
};

} // namespace vantoro
