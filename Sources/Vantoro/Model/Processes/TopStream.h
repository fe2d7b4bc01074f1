// The text that `top` prints in logging mode, and what prints in its place elsewhere: cut into blocks, and a block into
// the machine's figures and one row per process. All functions take text and touch nothing.
//
// A block begins with a line "Processes:", goes on with summary lines, an empty line, a header of column titles, and
// ends with the rows, the busiest process first:
//
//     Processes: 312 total, 2 running, 310 sleeping, 1519 threads
//     Load Avg: 2.11, 2.04, 1.98
//     CPU usage: 5.12% user, 10.25% sys, 84.61% idle
//     PhysMem: 15G used (2318M wired, 4107M compressor), 120M unused.
//     VM: 221T vsize, 3802M framework vsize, 25858(0) swapins, 27431(0) swapouts.
//
//     PID    COMMAND          %CPU MEM    POWER USER
//     1042   Editor           98.5 812M+  98.5  anna
#pragma once

#include "Model/Records/Telemetry.h"
#include "Platform/AppIdentity.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vantoro {

struct TopRow {
    std::int32_t pid = 0;
    /// As printed, so possibly cut short.
    std::string command;
    /// Per cent of one core.
    double cpuPercent = 0;
    std::uint64_t memoryBytes = 0;
    double energyImpact = 0;
    std::string user;
    /// Where the program says so: a line behind the row that begins with a tab.
    std::optional<ProcessOrigin> origin;

    bool operator==(const TopRow&) const = default;
};

struct TopBlock {
    std::vector<TopRow> rows;
    SystemLine system;

    bool operator==(const TopBlock&) const = default;
};

/// Cuts a stream that arrives in arbitrary pieces into blocks of lines. What it holds is bounded: a line of more than
/// longestLine bytes is dropped whole, and of a block only the first mostLines lines are kept.
class TopBlockCutter {
public:
    static constexpr std::size_t longestLine = std::size_t{64} * 1024;
    static constexpr std::size_t mostLines = 10'000;

    using BlockHandler = std::function<void(const std::vector<std::string>& lines)>;

    /// Takes the next piece. A piece that is not UTF-8 is dropped; a character cut in two by the end of a piece is put
    /// together again. A block is handed on when the next one begins.
    void ingest(std::string_view bytes, const BlockHandler& onBlock);

    /// Forgets all that has arrived.
    void reset();

private:
    void takeLine(std::string line, const BlockHandler& onBlock);

    std::string incompleteCharacter_;
    std::string buffer_;
    bool isDroppingLine_ = false;
    std::vector<std::string> block_;
};

/// Half-open range of bytes in a line.
struct ColumnRange {
    std::size_t start = 0;
    std::size_t end = 0;

    bool operator==(const ColumnRange&) const = default;
};

/// Where each column lies, by its title. A title that the header lacks has no entry.
using ColumnRanges = std::map<std::string_view, ColumnRange>;

/// A block's rows and figures; what does not read is 0 (the idle share 100), and a row without pid or command is left
/// out. `physicalMemoryBytes` stands in where the block does not tell the machine's memory.
TopBlock parseBlock(const std::vector<std::string>& lines, std::uint64_t physicalMemoryBytes);

/// The columns of a header line, each from its title to the next.
ColumnRanges columnRanges(std::string_view header);

/// The column's text without the white space around it; none where the line or the header does not reach. Programs pad
/// their columns by bytes, so that is how they are cut; a character that lies across an end belongs to the column in
/// which it begins.
std::optional<std::string_view> slice(std::string_view line, const ColumnRanges& columns, std::string_view title);

/// None without a pid (which may have a "*" or "-" behind it) or a command.
std::optional<TopRow> parseRow(std::string_view line, const ColumnRanges& columns);

/// A line behind a row: a tab, then path, subject, control group, container, the shell's part and the job with tabs
/// between them; none unless all are there, of which only the job may be missing.
std::optional<ProcessOrigin> parseOrigin(std::string_view line);

/// "1234K", "56M+", "2G-", "4096" in bytes; 0 for what does not read, "512B" included.
std::uint64_t parseSize(std::string_view text);

/// The figures of a "PhysMem:" line.
MemoryLoad parsePhysMem(std::string_view line, std::uint64_t physicalMemoryBytes);

/// The count of pages swapped out on a "VM:" line; 0 when there is none.
std::uint64_t parseSwap(std::string_view line);

/// The last of the blocks in a whole output that holds at least two; else none. The first block of any stream covers no
/// interval, so its CPU figures mean nothing.
std::optional<std::vector<std::string>> lastBlock(std::string_view output);

/// The lines "PID PATH" of a path list; a line that does not give both is skipped.
std::unordered_map<std::int32_t, std::string> parsePathList(std::string_view output);

} // namespace vantoro
