#include "Platform/Linux/Proc/LinuxSystemStatistics.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <string_view>

namespace vantoro {

LinuxSystemStatistics::LinuxSystemStatistics(const std::string& root)
    : root_(root)
    , stat_(root + "/proc/stat")
    , loadavg_(root + "/proc/loadavg")
    , meminfo_(root + "/proc/meminfo")
    , vmstat_(root + "/proc/vmstat", FileDelivery::pieces) {}

std::optional<KernelStat> LinuxSystemStatistics::kernelStat() {
    const auto text = stat_.read();
    return text ? parseKernelStat(*text) : std::nullopt;
}

std::optional<HostTicks> LinuxSystemStatistics::hostTicks() {
    const auto stat = kernelStat();
    return stat ? std::optional(stat->ticks) : std::nullopt;
}

std::optional<LoadAverages> LinuxSystemStatistics::loadAverages() {
    const auto text = loadavg_.read();
    return text ? parseLoadAverages(*text) : std::nullopt;
}

PhysicalMemory LinuxSystemStatistics::physicalMemory() {
    const auto text = meminfo_.read();
    const auto info = text ? parseMemoryInfo(*text) : std::nullopt;
    if (!info)
        return {};
    PhysicalMemory memory{.totalBytes = info->totalKiB * 1024, .availableBytes = {}};
    if (info->availableKiB)
        memory.availableBytes = std::min(*info->availableKiB * 1024, memory.totalBytes);
    return memory;
}

std::optional<VirtualMemory> LinuxSystemStatistics::virtualMemory() {
    const auto text = meminfo_.read();
    const auto info = text ? parseMemoryInfo(*text) : std::nullopt;
    if (!info)
        return {};
    if (swapTotalKiB_ != info->swapTotalKiB) {
        // Compressed devices come and go with the swap space they hold.
        swapTotalKiB_ = info->swapTotalKiB;
        findZramDevices();
    }
    std::uint64_t zramBytes = 0;
    for (KeptFile& device : zram_)
        if (const auto figures = device.read())
            zramBytes += parseZramUsedBytes(*figures).value_or(0);
    // Without swap space the counters stand still, and the kernel sums every processor's to print them.
    if (!swapCounts_ || info->swapTotalKiB != 0)
        if (const auto counters = vmstat_.read())
            swapCounts_ = parseSwapCounts(*counters);

    VirtualMemory memory;
    memory.pageBytes = 1024;
    memory.wiredPages = info->unevictableKiB + info->unreclaimableSlabKiB + info->pageTablesKiB + info->kernelStackKiB;
    memory.compressorPages = info->zswapKiB + zramBytes / 1024;
    memory.internalPages = info->anonymousKiB;
    memory.swapIns = swapCounts_ ? swapCounts_->pagesIn : 0;
    memory.swapOuts = swapCounts_ ? swapCounts_->pagesOut : 0;
    return memory;
}

void LinuxSystemStatistics::findZramDevices() {
    zram_.clear();
    const std::string blocks = root_ + "/sys/block";
    const auto close = [](DIR* folder) { ::closedir(folder); };
    const std::unique_ptr<DIR, decltype(close)> folder(::opendir(blocks.c_str()), close);
    if (!folder)
        return;
    while (const dirent* entry = ::readdir(folder.get()))
        if (const std::string_view name = entry->d_name; name.starts_with("zram"))
            zram_.emplace_back(blocks + "/" + entry->d_name + "/mm_stat");
}

} // namespace vantoro
