// The Mac's processors, from the Mach kernel and sysctl.
#pragma once

#include "Platform/Darwin/Kernel/HostPort.h"
#include "Platform/Processors.h"

namespace vantoro {

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

} // namespace vantoro
