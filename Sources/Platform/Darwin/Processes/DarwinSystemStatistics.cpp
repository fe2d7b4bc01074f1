#include "Platform/Darwin/Processes/DarwinSystemStatistics.h"

#include "Platform/Darwin/Kernel/Sysctl.h"

#include <array>
#include <cstdlib>
#include <mach/mach.h>

namespace vantoro {

std::optional<HostTicks> DarwinSystemStatistics::hostTicks() {
    host_cpu_load_info_data_t load{};
    mach_msg_type_number_t count = HOST_CPU_LOAD_INFO_COUNT;
    const kern_return_t code =
        host_statistics(host_.get(), HOST_CPU_LOAD_INFO, reinterpret_cast<host_info_t>(&load), &count);
    if (code != KERN_SUCCESS)
        return {};
    return HostTicks{.user = load.cpu_ticks[CPU_STATE_USER],
                     .system = load.cpu_ticks[CPU_STATE_SYSTEM],
                     .idle = load.cpu_ticks[CPU_STATE_IDLE],
                     .nice = load.cpu_ticks[CPU_STATE_NICE]};
}

std::optional<VirtualMemory> DarwinSystemStatistics::virtualMemory() {
    vm_statistics64_data_t memory{};
    mach_msg_type_number_t count = HOST_VM_INFO64_COUNT;
    const kern_return_t code =
        host_statistics64(host_.get(), HOST_VM_INFO64, reinterpret_cast<host_info64_t>(&memory), &count);
    if (code != KERN_SUCCESS)
        return {};
    return VirtualMemory{.pageBytes = vm_kernel_page_size,
                         .wiredPages = memory.wire_count,
                         .compressorPages = memory.compressor_page_count,
                         .internalPages = memory.internal_page_count,
                         .purgeablePages = memory.purgeable_count,
                         .swapIns = memory.swapins,
                         .swapOuts = memory.swapouts};
}

std::optional<LoadAverages> DarwinSystemStatistics::loadAverages() {
    std::array<double, 3> averages{};
    // An average that was not filled stays 0.
    if (::getloadavg(averages.data(), static_cast<int>(averages.size())) < 1)
        return {};
    return LoadAverages{.oneMinute = averages[0], .fiveMinutes = averages[1], .fifteenMinutes = averages[2]};
}

std::uint64_t DarwinSystemStatistics::physicalMemoryBytes() {
    return static_cast<std::uint64_t>(sysctlNumber("hw.memsize").value_or(0));
}

} // namespace vantoro
