// From one reading of the machine to the next: which processes were busy in between.
#pragma once

#include "Platform/Linux/Proc/LinuxProcessTable.h"
#include "Platform/Linux/Proc/LinuxSystemStatistics.h"
#include "Platform/Linux/Proc/ProcJobs.h"
#include "VantoroTop/BlockText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vantoro::top {

/// When a sample is taken, by three clocks of the system.
struct Moment {
    /// Never set back, and still while the machine is suspended, like the processes themselves.
    double monotonicSeconds = 0;
    /// Since boot, as the processes' start times count.
    double bootSeconds = 0;
    std::tm localTime{};
};

class Sampler {
public:
    struct Options {
        std::string root = "/";
        KernelUnits units = KernelUnits::ofThisMachine();
        std::size_t descriptorBudget = vantoro::descriptorBudget();
        /// Whether rows are followed by where their processes come from.
        bool origins = false;
    };

    explicit Sampler(const Options& options);

    /// Takes a sample and appends its block: the `rows` busiest processes since the sample before, highest share first,
    /// equals by pid. The time of children that ended is their job's, whose leader may have ended as well. The first
    /// sample has nothing to compare with and shows every share as 0.
    void appendBlock(std::string& text, const Moment& moment, std::size_t rows, std::size_t columns);

private:
    void appendProcess(std::string& text, ScannedProcess& process, double cpuPercent, std::size_t columns);
    const std::string& userName(std::uint32_t uid);

    KernelUnits units_;
    bool origins_;
    LinuxSystemStatistics statistics_;
    ProcScan scan_;
    ProcJobs jobs_{scan_};
    SystemFigures figures_;
    std::vector<ScannedProcess*> busy_;
    std::vector<ScannedProcess*> idle_;
    std::unordered_map<std::uint32_t, std::string> userNames_;
    std::optional<Moment> previous_;
    std::optional<HostTicks> previousTicks_;
    std::optional<VirtualMemory> previousMemory_;
};

} // namespace vantoro::top
