// The process list and the machine's figures straight from the operating system, without any other program: what the
// process monitor falls back to. It sees the CPU times of those processes whose task information is not refused.
#pragma once

#include "Model/Records/Telemetry.h"
#include "Platform/ProcessTable.h"
#include "Platform/SystemStatistics.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// Memory in use from counts of pages: applications' own pages that cannot be thrown away, wired and compressed ones.
/// Without counts only the total is known.
MemoryLoad memoryLoad(std::uint64_t physicalMemoryBytes, const std::optional<VirtualMemory>& memory);

/// Not for concurrent use. A null table gives no processes, null statistics an idle machine.
class UnprivilegedProcesses {
public:
    struct Sample {
        /// In the table's order. Every kind is systemDaemon and no application is known yet: that is for the caller.
        std::vector<ProcessSample> processes;
        SystemLine system;
    };

    UnprivilegedProcesses(std::shared_ptr<ProcessTable> table, std::shared_ptr<SystemStatistics> statistics);

    /// One reading; CPU shares cover the time since the one before (the first has none), the work of children that
    /// ended included where the table tells it: then a process may have a row that has ended itself. `nowSeconds` comes
    /// from a clock that never steps.
    Sample sample(double nowSeconds);

    /// Of these processes alone, in their order; those that are gone are left out, and what the system refuses to tell
    /// is 0. Not to be mixed with the above without a rest in between.
    std::vector<ProcessSample> sampleThese(const std::vector<std::int32_t>& pids, double nowSeconds);

    /// Lets the table close what it keeps open; the next sample is a first one.
    void rest();

    /// Processes in the last sample whose task information was refused.
    int unreadableCount() const { return unreadableCount_; }

private:
    struct Previous {
        std::uint64_t cpuNanoseconds = 0;
        double atSeconds = 0;
        std::uint64_t startTime = 0;
        SharedProcessIdentity identity;
        std::uint64_t sampleNumber = 0;
    };

    enum class Refused { leftOut, zero };
    std::optional<ProcessSample> sampleProcess(std::int32_t pid, double nowSeconds, Refused refused);
    void forgetOthers();
    void addUnseenWork(std::vector<ProcessSample>& processes, double elapsedSeconds);
    const std::string& userName(std::uint32_t uid);
    SystemLine systemLine();

    std::shared_ptr<ProcessTable> table_;
    std::shared_ptr<SystemStatistics> statistics_;
    int unreadableCount_ = 0;
    std::uint64_t sampleNumber_ = 0;
    std::optional<double> previousSeconds_;
    std::unordered_map<std::int32_t, Previous> previousCPU_;
    std::optional<HostTicks> previousTicks_;
    std::unordered_map<std::uint32_t, std::string> userNames_;
    std::vector<std::int32_t> pids_;
};

} // namespace vantoro
