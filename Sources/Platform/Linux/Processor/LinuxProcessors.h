// The processors' kinds and tick counters, from /sys and /proc/stat.
#pragma once

#include "Platform/Linux/Processor/CpuTopology.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Processors.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// The processors are those online when counted. One that goes offline later keeps its place, with counters that stand
/// still; one that is plugged in later appears when they are counted anew.
class LinuxProcessors : public Processors {
public:
    /// `root` is the folder that holds proc and sys.
    explicit LinuxProcessors(const std::string& root = "/");

    ProcessorCounts counts() override;
    int readTicks(std::vector<HostTicks>& ticks) override;

private:
    std::string root_;
    KeptFile stat_;
    /// Efficiency processors first.
    std::vector<int> order_;
    std::map<int, HostTicks> last_;
};

/// The "cpuN" lines of /proc/stat by number, counted as LinuxSystemStatistics counts the whole.
std::map<int, HostTicks> parseProcessorTicks(std::string_view text);

} // namespace vantoro
