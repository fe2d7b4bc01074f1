// The processors: which there are, of which kind, their tick counters and their frequencies, from /sys and /proc/stat.
#pragma once

#include "Platform/Linux/Processor/CpuClocks.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Processors.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// Numbers of logical processors, ascending.
struct CpuTopology {
    std::vector<int> efficiency;
    std::vector<int> performance;

    bool operator==(const CpuTopology&) const = default;
};

/// The processors online (/sys/devices/system/cpu/online; without that file, those that /proc/stat lists). Their kinds
/// from the hybrid processor's own lists (/sys/devices/cpu_core/cpus; cpu_atom and cpu_lowpower are the efficient
/// ones), else from their capacities (cpuN/cpu_capacity); all are performance processors where neither tells them
/// apart.
CpuTopology readCpuTopology(const std::string& root);

/// Processors by capacity. Two groups where the widest gap between neighbouring capacities is a quarter or more: those
/// below it are the efficiency processors. Favoured cores of one kind differ by less.
CpuTopology splitByCapacity(const std::map<int, std::int64_t>& capacities);

/// The processors are those online when counted. One that goes offline later keeps its place, with counters that stand
/// still; one that is plugged in later appears when they are counted anew.
class LinuxProcessors : public Processors {
public:
    /// `root` is the folder that holds proc and sys. Without a lane there are no frequencies.
    explicit LinuxProcessors(const std::string& root = "/", std::shared_ptr<SlowLane> lane = nullptr);

    ProcessorCounts counts() override;
    int readTicks(std::vector<HostTicks>& ticks) override;
    bool readClocks(std::vector<double>& megahertz) override;
    ClockCeilings ceilings() override;

private:
    CpuClocks& clocks();

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    KeptFile stat_;
    CpuTopology topology_;
    /// Efficiency processors first.
    std::vector<int> order_;
    std::map<int, HostTicks> last_;
    /// Found when first asked for.
    std::optional<CpuClocks> clocks_;
};

/// Puts the "cpuN" lines of /proc/stat under their numbers, counted as LinuxSystemStatistics counts the whole; other
/// processors stay as they are.
void parseProcessorTicks(std::string_view text, std::map<int, HostTicks>& ticks);

} // namespace vantoro
