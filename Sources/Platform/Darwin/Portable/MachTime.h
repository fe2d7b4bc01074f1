// The Mach kernel's unit of time. No header of the platform's.
#pragma once

#include <cstdint>

namespace vantoro {

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
