// The whole machine's processors and memory, from /proc.
#pragma once

#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/SystemStatistics.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// Host ticks, from the "cpu" line of /proc/stat: user is "user", nice is "nice", system is "system" with "irq" and
/// "softirq", idle is "idle" with "iowait". "steal" is left out: the machine neither worked nor rested while another
/// guest had its processor, and counting it either way would bend the shares.
///
/// Memory, in KiB "pages" as /proc/meminfo counts:
///   wired       Unevictable + SUnreclaim + PageTables + KernelStack: what cannot be paged out
///   compressor  Zswap + what the compressed swap devices (zram) really occupy
///   internal    AnonPages
///   available   MemAvailable, which kernels since 3.14 reckon
///   purgeable   0: memory that applications gave up for lazy freeing has no counter for the whole machine
///   swap counts pswpin and pswpout of /proc/vmstat, in pages of the processor's
class LinuxSystemStatistics : public SystemStatistics {
public:
    /// `root` is the folder that holds proc and sys.
    explicit LinuxSystemStatistics(const std::string& root = "/");

    std::optional<HostTicks> hostTicks() override;
    std::optional<VirtualMemory> virtualMemory() override;
    std::optional<LoadAverages> loadAverages() override;
    PhysicalMemory physicalMemory() override;

    /// Ticks and the count of processes ever started, from one reading of /proc/stat.
    std::optional<KernelStat> kernelStat();

private:
    void findZramDevices();

    std::string root_;
    KeptFile stat_;
    KeptFile loadavg_;
    KeptFile meminfo_;
    KeptFile vmstat_;
    std::vector<KeptFile> zram_;
    /// Swap space when the compressed devices were last looked for.
    std::optional<std::uint64_t> swapTotalKiB_;
    std::optional<SwapCounts> swapCounts_;
};

} // namespace vantoro
