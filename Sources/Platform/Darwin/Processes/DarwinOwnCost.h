// What this process and the programs that it runs take, from libproc.
#pragma once

#include "Platform/Darwin/Portable/MachTime.h"
#include "Platform/OwnCost.h"

#include <vector>

namespace vantoro {

class DarwinOwnCost : public OwnCost {
public:
    DarwinOwnCost();

    /// proc_pid_rusage: user, system and waited-for children's time, and the same of the children that run. It is
    /// refused for a program with the rights of root.
    std::optional<ProcessorTime> processorTime() override;
    /// The physical footprint, of the children too where that is allowed.
    std::optional<std::uint64_t> memoryBytes() override;

private:
    static std::vector<int> children();

    std::optional<MachTimebase> timebase_;
};

} // namespace vantoro
