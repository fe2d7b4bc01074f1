// The whole machine's processors and memory, from the Mach kernel and sysctl.
#pragma once

#include "Platform/Darwin/Kernel/HostPort.h"
#include "Platform/SystemStatistics.h"

namespace vantoro {

class DarwinSystemStatistics : public SystemStatistics {
public:
    /// host_statistics, HOST_CPU_LOAD_INFO.
    std::optional<HostTicks> hostTicks() override;
    /// host_statistics64, HOST_VM_INFO64.
    std::optional<VirtualMemory> virtualMemory() override;
    std::optional<LoadAverages> loadAverages() override;
    /// "hw.memsize".
    std::uint64_t physicalMemoryBytes() override;

private:
    HostPort host_;
};

} // namespace vantoro
