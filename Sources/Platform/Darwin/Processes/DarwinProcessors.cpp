#include "Platform/Darwin/Processes/DarwinProcessors.h"

#include "Platform/Darwin/Kernel/Sysctl.h"

#include <cstddef>
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

} // namespace vantoro
