// What this process and the programs that it runs take, from their accounts in /proc.
#pragma once

#include "Platform/OwnCost.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// /proc/PID/stat: the clock ticks of the process and of those below it that have ended, fields 14 to 17. None unless
/// all four are there.
std::optional<std::uint64_t> parseTotalTicks(std::string_view text);

/// /proc/PID/smaps_rollup: "Pss:" in bytes. None without that line.
std::optional<std::uint64_t> parseProportionalBytes(std::string_view text);

/// The programs that run are found in /proc/PID/task/TID/children, which not every kernel has.
class LinuxOwnCost : public OwnCost {
public:
    /// Of the process of this number, "self" for the one that asks, below the folder that holds proc.
    explicit LinuxOwnCost(std::string root = "", std::string process = "self");

    std::optional<ProcessorTime> processorTime() override;
    /// None on kernels before 4.14.
    std::optional<std::uint64_t> memoryBytes() override;

private:
    std::optional<std::string> read(const std::string& process, const std::string& name) const;
    /// All that run below this process; false where the kernel does not list them.
    bool addPrograms(const std::string& process, std::vector<std::string>& found) const;

    std::string root_;
    std::string process_;
    std::vector<std::string> programs_;
};

} // namespace vantoro
