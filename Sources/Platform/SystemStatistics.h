// What the operating system says of the whole machine's processors and memory.
#pragma once

#include <cstdint>
#include <optional>

namespace vantoro {

/// Cumulative ticks of all processors together. 32 bits wide, and allowed to wrap.
struct HostTicks {
    std::uint32_t user = 0;
    std::uint32_t system = 0;
    std::uint32_t idle = 0;
    std::uint32_t nice = 0;

    bool operator==(const HostTicks&) const = default;
};

/// Counts of pages of `pageBytes` each; the swap counts are cumulative.
struct VirtualMemory {
    std::uint64_t pageBytes = 0;
    std::uint64_t wiredPages = 0;
    std::uint64_t compressorPages = 0;
    /// Pages of applications' own memory, and how many of those may be thrown away.
    std::uint64_t internalPages = 0;
    std::uint64_t purgeablePages = 0;
    std::uint64_t swapIns = 0;
    std::uint64_t swapOuts = 0;

    bool operator==(const VirtualMemory&) const = default;
};

struct LoadAverages {
    double oneMinute = 0;
    double fiveMinutes = 0;
    double fifteenMinutes = 0;

    bool operator==(const LoadAverages&) const = default;
};

class SystemStatistics {
public:
    virtual ~SystemStatistics() = default;

    virtual std::optional<HostTicks> hostTicks() = 0;
    virtual std::optional<VirtualMemory> virtualMemory() = 0;
    virtual std::optional<LoadAverages> loadAverages() = 0;
    /// Installed memory; 0 when unknown.
    virtual std::uint64_t physicalMemoryBytes() = 0;
};

} // namespace vantoro
