// The machine's processors, one by one.
#pragma once

#include "Platform/SystemStatistics.h"

#include <string>
#include <vector>

namespace vantoro {

/// How many logical processors there are; 0 for what cannot be told.
struct ProcessorCounts {
    int performance = 0;
    int efficiency = 0;
    int all = 0;

    bool operator==(const ProcessorCounts&) const = default;
};

/// What the system calls its two kinds of processors, in lower case.
struct ProcessorTiers {
    std::string performance = "performance";
    std::string efficiency = "efficiency";

    bool operator==(const ProcessorTiers&) const = default;
};

/// The highest frequency announced for each kind, in MHz; 0 when not known.
struct ClockCeilings {
    double performance = 0;
    double efficiency = 0;

    bool operator==(const ClockCeilings&) const = default;
};

/// Used from one thread at a time.
class Processors {
public:
    virtual ~Processors() = default;

    virtual ProcessorCounts counts() = 0;
    virtual ProcessorTiers tiers() { return {}; }
    /// Fills the cumulative ticks of every processor, efficiency cores first. Gives the system's code, 0 for success;
    /// leaves `ticks` as it was on failure.
    virtual int readTicks(std::vector<HostTicks>& ticks) = 0;
    /// Fills every processor's mean frequency of late in MHz, in the order of the ticks; 0 where it is not known. False
    /// where a processor's frequency is only told as the time in each performance state (StateReport).
    virtual bool readClocks(std::vector<double>& /*megahertz*/) { return false; }
    virtual ClockCeilings ceilings() { return {}; }
};

} // namespace vantoro
