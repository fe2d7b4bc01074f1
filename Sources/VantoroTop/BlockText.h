// The text that vantoro-top prints. Pure: records in, bytes out, appended to a string that keeps its room.
#pragma once

#include "Platform/AppIdentity.h"
#include "Platform/SystemStatistics.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace vantoro::top {

struct ProcessCounts {
    std::uint64_t total = 0;
    std::uint64_t running = 0;
    std::uint64_t threads = 0;
};

/// What one block says of the whole machine.
struct SystemFigures {
    ProcessCounts processes;
    std::tm localTime{};
    LoadAverages load;
    CPULoad cpu;
    std::uint64_t totalKiB = 0;
    VirtualMemory memory;
    /// Pages swapped since the block before.
    std::uint64_t swapInsSince = 0;
    std::uint64_t swapOutsSince = 0;
};

struct Row {
    std::int32_t pid = 0;
    std::string_view command;
    /// 100 is one fully busy core.
    double cpuPercent = 0;
    std::uint64_t residentKiB = 0;
    std::string_view user;
};

/// Appends the block's head: the lines on the machine, a blank line and the column titles, each of at most `columns`
/// bytes.
void appendHead(std::string& text, const SystemFigures& figures, std::size_t columns);

/// Appends one process's line, with its columns cut and padded by bytes. What could steer a terminal becomes "?".
void appendRow(std::string& text, const Row& row, std::size_t columns);

/// Appends the line that may follow a row: a tab, then path, subject, control group, container, the shell's part (0 to
/// 3) and the job with tabs between them.
void appendOrigin(std::string& text, const ProcessOrigin& origin);

/// Appends one line of the path list: "PID PATH".
void appendPathLine(std::string& text, std::int32_t pid, std::string_view path);

} // namespace vantoro::top
