// The whole machine: what Mac it is, its processors and its memory, from the Mach kernel and sysctl.
#pragma once

#include "Platform/Darwin/Kernel/Handles.h"
#include "Platform/Machine.h"
#include "Platform/Processors.h"
#include "Platform/SystemStatistics.h"

namespace vantoro {

class DarwinMachine : public Machine {
public:
    /// "hw.model".
    std::optional<std::string> modelIdentifier() const override;
    /// "machdep.cpu.brand_string".
    std::optional<std::string> processorBrand() const override;
};

class DarwinProcessors : public Processors {
public:
    /// "hw.perflevel0.logicalcpu", "hw.perflevel1.logicalcpu" and "hw.logicalcpu".
    ProcessorCounts counts() override;
    /// "hw.perflevel0.name" and "hw.perflevel1.name".
    ProcessorTiers tiers() override;
    /// host_processor_info; the kernel numbers the efficiency cores first.
    int readTicks(std::vector<HostTicks>& ticks) override;

private:
    HostPort host_;
};

class DarwinSystemStatistics : public SystemStatistics {
public:
    /// host_statistics, HOST_CPU_LOAD_INFO.
    std::optional<HostTicks> hostTicks() override;
    /// host_statistics64, HOST_VM_INFO64.
    std::optional<VirtualMemory> virtualMemory() override;
    std::optional<LoadAverages> loadAverages() override;
    /// "hw.memsize".
    PhysicalMemory physicalMemory() override;

private:
    HostPort host_;
};

} // namespace vantoro
