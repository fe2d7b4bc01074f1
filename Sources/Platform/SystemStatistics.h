// What the operating system says of the whole machine's processors and memory.
#pragma once

#include "Model/Records/Telemetry.h"

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

/// Ticks from one reading to the next: unsigned differences survive a counter that wrapped in between.
struct TicksSpent {
    TicksSpent(const HostTicks& before, const HostTicks& now)
        : user(static_cast<double>(now.user - before.user) + (now.nice - before.nice))
        , system(now.system - before.system)
        , idle(now.idle - before.idle) {}

    double all() const { return user + system + idle; }
    /// 0 to 1; none when no tick went by.
    std::optional<double> busyShare() const {
        return all() > 0 ? std::optional((user + system) / all()) : std::nullopt;
    }
    /// All idle when no tick went by; the load average is not among the ticks.
    CPULoad load() const {
        if (!(all() > 0))
            return {};
        return {.userPercent = user / all() * 100,
                .systemPercent = system / all() * 100,
                .idlePercent = idle / all() * 100};
    }

    /// With what was nice.
    double user;
    double system;
    double idle;
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

struct PhysicalMemory {
    /// Installed; 0 when unknown.
    std::uint64_t totalBytes = 0;
    /// What could be had without swapping; absent where the system does not tell.
    std::optional<std::uint64_t> availableBytes;

    bool operator==(const PhysicalMemory&) const = default;
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
    virtual PhysicalMemory physicalMemory() = 0;
};

} // namespace vantoro
