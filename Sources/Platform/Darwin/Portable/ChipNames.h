// What is pure in the Mac's back-end: what the report and the registry of real chips call things, turned into what the
// readers know, and the Mach kernel's unit of time.
#pragma once

#include "Platform/Processors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// A core's channel by the name of its cluster first. A chip of several dies writes the die in front
/// ("DIE_0_PCPU1_CPU0"): it goes to the end ("PCPU1_CPU0_DIE_0"). Any other name stays as it is.
std::string coreChannelName(std::string_view name);

/// A table of records of 8 bytes whose first four are a frequency, little-endian: older chips write it in Hz, newer
/// ones in kHz. A frequency of 100,000,000 or more is Hz (no processor runs at 100 GHz) and is rewritten in kHz, to the
/// nearest. A record that is cut short stays as it is.
void rewriteInKilohertz(std::vector<std::uint8_t>& frequencyTable);

/// The tiers by the names of the system's performance levels 0 and 1; what has no name keeps its usual one.
ProcessorTiers tiersNamed(const std::optional<std::string>& level0, const std::optional<std::string>& level1);

/// Whether the second level is the middle kind of core, as on chips whose first level is "Super" and whose second is
/// "Performance": these have no efficiency cores.
bool hasMiddleTier(const ProcessorTiers& tiers);

/// A unit is numerator ÷ denominator nanoseconds: 125/3 on Apple silicon.
struct MachTimebase {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;

    bool operator==(const MachTimebase&) const = default;
};

/// Whole nanoseconds, the fraction dropped.
constexpr std::uint64_t machNanoseconds(std::uint64_t units, const MachTimebase& timebase) {
    // In two steps, or five months of CPU time would overflow the product.
    return units / timebase.denominator * timebase.numerator +
           units % timebase.denominator * timebase.numerator / timebase.denominator;
}

} // namespace vantoro
