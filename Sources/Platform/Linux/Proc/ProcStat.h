// What the kernel's text files say, taken apart. Pure: every function takes the bytes of one file, whatever they are,
// and gives a record or none. Layouts: Documentation/filesystems/proc.rst and admin-guide/blockdev/zram.rst in the
// kernel's sources.
#pragma once

#include "Platform/SystemStatistics.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantoro {

/// The part of /proc/PID/stat that is used.
struct ProcessStat {
    /// The command name, a view into the bytes parsed: any bytes at all but NUL, parentheses and newlines among them.
    std::string_view name;
    /// 'R' running, 'S' sleeping, 'Z' ended but not yet waited for, …
    char state = '?';
    std::int32_t parentPid = 0;
    /// The leaders of its process group and its session; 0 where they are out of sight.
    std::int32_t groupPid = 0;
    std::int32_t sessionPid = 0;
    /// The kernel's PF_… flags.
    std::uint64_t flags = 0;
    /// Cumulative CPU time and the moment of start after boot, in clock ticks.
    std::uint64_t userTicks = 0;
    std::uint64_t systemTicks = 0;
    std::uint64_t startTicks = 0;
    /// What its children had used, with all below them, when they ended and were waited for.
    std::uint64_t childTicks = 0;
    std::uint64_t threads = 0;
    std::uint64_t residentPages = 0;
    /// How many bytes, from the first, hold all of the above: equal bytes give an equal record.
    std::size_t usedBytes = 0;

    /// A thread of the kernel's own, without an executable.
    bool isKernelThread() const { return (flags & kernelThreadFlag) != 0; }
    bool operator==(const ProcessStat&) const = default;

    /// PF_KTHREAD of include/linux/sched.h.
    static constexpr std::uint64_t kernelThreadFlag = 0x00200000;
};

/// /proc/PID/stat. None unless every field up to the resident size is there and reads. A resident size or a thread
/// count below zero counts as 0.
std::optional<ProcessStat> parseProcessStat(std::string_view text);

/// The real user of /proc/PID/status ("Uid:", first number).
std::optional<std::uint32_t> parseRealUid(std::string_view text);

/// The part of /proc/stat that is used.
struct KernelStat {
    /// Of all processors together. `system` holds the interrupts' time too and `idle` the time waited for disks. Time
    /// stolen by other guests of a hypervisor is left out: this machine neither worked nor rested then.
    HostTicks ticks;
    /// All that was not rest, the stolen time among it: processes' own times may hold it.
    std::uint64_t busyTicks = 0;
    /// Processes and threads ever started; absent when the file does not say.
    std::optional<std::uint64_t> forks;

    bool operator==(const KernelStat&) const = default;
};

/// None without a "cpu" line of at least the four oldest counters.
std::optional<KernelStat> parseKernelStat(std::string_view text);

/// /proc/loadavg. None unless all three are plain decimals of at least 0.
std::optional<LoadAverages> parseLoadAverages(std::string_view text);

/// The part of /proc/meminfo that is used, in KiB; 0 where a kernel does not print the line.
struct MemoryInfo {
    std::uint64_t totalKiB = 0;
    std::uint64_t unevictableKiB = 0;
    std::uint64_t swapTotalKiB = 0;
    std::uint64_t zswapKiB = 0;
    std::uint64_t anonymousKiB = 0;
    std::uint64_t unreclaimableSlabKiB = 0;
    std::uint64_t kernelStackKiB = 0;
    std::uint64_t pageTablesKiB = 0;
    std::optional<std::uint64_t> availableKiB = {};

    bool operator==(const MemoryInfo&) const = default;
};

/// None without a "MemTotal" line.
std::optional<MemoryInfo> parseMemoryInfo(std::string_view text);

/// Cumulative pages swapped in and out.
struct SwapCounts {
    std::uint64_t pagesIn = 0;
    std::uint64_t pagesOut = 0;

    bool operator==(const SwapCounts&) const = default;
};

/// /proc/vmstat. None unless both counts are there.
std::optional<SwapCounts> parseSwapCounts(std::string_view text);

/// Memory that a compressed block device really occupies, in bytes (/sys/block/zramN/mm_stat, third number).
std::optional<std::uint64_t> parseZramUsedBytes(std::string_view text);

/// The control group that the service manager placed a process in: the path of the unified hierarchy's line ("0::") of
/// /proc/PID/cgroup, or, where that is the root or missing, of the line of the hierarchy named systemd. Empty when
/// unknown.
std::string_view parseControlGroup(std::string_view text);

} // namespace vantoro
