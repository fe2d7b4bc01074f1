#include "Platform/Darwin/Processes/DarwinMachine.h"

#include "Platform/Darwin/Kernel/Sysctl.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <mach/mach.h>

namespace vantoro {

namespace {

/// Memory that the kernel handed to this task: `count` integers of `values`.
struct KernelArray {
    KernelArray() = default;
    KernelArray(const KernelArray&) = delete;
    KernelArray& operator=(const KernelArray&) = delete;
    ~KernelArray() {
        if (values != nullptr)
            vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(values), count * sizeof *values);
    }

    processor_info_array_t values = nullptr;
    mach_msg_type_number_t count = 0;
};

int processorCount(const char* name) {
    return static_cast<int>(sysctlNumber(name).value_or(0));
}

HostTicks ticksAt(const integer_t* counters) {
    const auto counter = [counters](int state) { return static_cast<std::uint32_t>(counters[state]); };
    return {.user = counter(CPU_STATE_USER),
            .system = counter(CPU_STATE_SYSTEM),
            .idle = counter(CPU_STATE_IDLE),
            .nice = counter(CPU_STATE_NICE)};
}

} // namespace

std::optional<std::string> DarwinMachine::modelIdentifier() const {
    return sysctlText("hw.model");
}

std::optional<std::string> DarwinMachine::processorBrand() const {
    return sysctlText("machdep.cpu.brand_string");
}

ProcessorCounts DarwinProcessors::counts() {
    return {.performance = processorCount("hw.perflevel0.logicalcpu"),
            .efficiency = processorCount("hw.perflevel1.logicalcpu"),
            .all = processorCount("hw.logicalcpu")};
}

ProcessorTiers DarwinProcessors::tiers() {
    return processorTiers();
}

int DarwinProcessors::readTicks(std::vector<HostTicks>& ticks) {
    natural_t processors = 0;
    KernelArray counters;
    const kern_return_t code =
        host_processor_info(host_.get(), PROCESSOR_CPU_LOAD_INFO, &processors, &counters.values, &counters.count);
    if (code != KERN_SUCCESS)
        return code;
    if (counters.values == nullptr || counters.count < processors * CPU_STATE_MAX)
        return KERN_FAILURE;
    ticks.clear();
    for (std::size_t processor = 0; processor < processors; ++processor)
        ticks.push_back(ticksAt(counters.values + processor * CPU_STATE_MAX));
    return KERN_SUCCESS;
}

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

PhysicalMemory DarwinSystemStatistics::physicalMemory() {
    return {.totalBytes = static_cast<std::uint64_t>(sysctlNumber("hw.memsize").value_or(0)), .availableBytes = {}};
}

} // namespace vantoro
