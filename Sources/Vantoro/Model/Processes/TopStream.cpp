#include "Model/Processes/TopStream.h"

#include "Model/Text/Numbers.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace vantoro {

namespace {

constexpr std::string_view blockStart = "Processes:";
constexpr std::array<std::string_view, 6> columnTitles{"PID", "COMMAND", "%CPU", "MEM", "POWER", "USER"};

/// Calls back with each piece between separators, the empty ones too.
template <typename Handler>
void forEachPiece(std::string_view text, char separator, const Handler& handler) {
    while (true) {
        const std::size_t end = text.find(separator);
        handler(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

double parseLoadAverage(std::string_view rest) {
    std::optional<double> first;
    forEachPiece(rest, ',', [&](std::string_view piece) {
        if (!first)
            first = parseDecimal(trimmed(piece));
    });
    return first.value_or(0);
}

void parseCPUUsage(std::string_view rest, CPULoad& cpu) {
    forEachPiece(rest, ',', [&](std::string_view piece) {
        piece = trimmed(piece);
        const std::size_t space = piece.find(' ');
        if (space == std::string_view::npos)
            return;
        std::string_view value = piece.substr(0, space);
        if (value.ends_with('%'))
            value.remove_suffix(1);
        const std::string_view label = trimmed(piece.substr(space));
        const std::optional<double> percent = parseDecimal(value);
        if (!percent)
            return;
        if (label == "user")
            cpu.userPercent = *percent;
        else if (label == "sys")
            cpu.systemPercent = *percent;
        else if (label == "idle")
            cpu.idlePercent = *percent;
    });
}

/// A mark may follow the number: `top` puts "*" or "-" behind a process of another architecture.
std::optional<std::int32_t> parsePid(std::string_view field) {
    if (field.ends_with('*') || field.ends_with('-'))
        field.remove_suffix(1);
    return parseInt32(field);
}

double numberIn(std::optional<std::string_view> field) {
    return field ? parseDecimal(*field).value_or(0) : 0;
}

} // namespace

void TopBlockCutter::reset() {
    *this = TopBlockCutter();
}

void TopBlockCutter::ingest(std::string_view bytes, const BlockHandler& onBlock) {
    std::string joined;
    if (!incompleteCharacter_.empty()) {
        joined = std::exchange(incompleteCharacter_, {});
        joined += bytes;
        bytes = joined;
    }
    const std::size_t valid = validUtf8Length(bytes);
    if (valid < bytes.size()) {
        if (!isIncompleteCharacter(bytes.substr(valid)))
            return;
        incompleteCharacter_ = bytes.substr(valid);
        bytes = bytes.substr(0, valid);
    }
    for (std::size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
        buffer_ += bytes.substr(0, std::min(end, longestLine + 1));
        bytes.remove_prefix(end + 1);
        std::string line = std::exchange(buffer_, {});
        if (!std::exchange(isDroppingLine_, false) && line.size() <= longestLine)
            takeLine(std::move(line), onBlock);
    }
    if (isDroppingLine_ || buffer_.size() + bytes.size() > longestLine) {
        isDroppingLine_ = true;
        buffer_.clear();
    } else {
        buffer_ += bytes;
    }
}

void TopBlockCutter::takeLine(std::string line, const BlockHandler& onBlock) {
    if (line.starts_with(blockStart)) {
        const std::vector<std::string> finished = std::exchange(block_, {});
        block_.push_back(std::move(line));
        if (!finished.empty())
            onBlock(finished);
    } else if (!block_.empty() && block_.size() < mostLines) {
        block_.push_back(std::move(line));
    }
}

ColumnRanges columnRanges(std::string_view header) {
    ColumnRanges ranges;
    ColumnRange* previous = nullptr;
    std::size_t searchFrom = 0;
    for (const std::string_view title : columnTitles) {
        const std::size_t found = header.find(title, searchFrom);
        if (found == std::string_view::npos)
            continue;
        searchFrom = found + title.size();
        if (previous != nullptr)
            previous->end = found;
        previous = &(ranges[title] = {.start = found, .end = std::numeric_limits<std::size_t>::max()});
    }
    return ranges;
}

std::optional<std::string_view> slice(std::string_view line, const ColumnRanges& columns, std::string_view title) {
    const auto column = columns.find(title);
    if (column == columns.end())
        return std::nullopt;
    const std::size_t start = characterStart(line, column->second.start);
    if (start >= line.size())
        return std::nullopt;
    return trimmed(line.substr(start, characterStart(line, column->second.end) - start));
}

std::optional<TopRow> parseRow(std::string_view line, const ColumnRanges& columns) {
    const std::optional<std::string_view> pidField = slice(line, columns, "PID");
    const std::optional<std::int32_t> pid = pidField ? parsePid(*pidField) : std::nullopt;
    const std::optional<std::string_view> command = slice(line, columns, "COMMAND");
    if (!pid || !command || command->empty())
        return std::nullopt;
    return TopRow{.pid = *pid,
                  .command = std::string(*command),
                  .cpuPercent = numberIn(slice(line, columns, "%CPU")),
                  .memoryBytes = parseSize(slice(line, columns, "MEM").value_or("")),
                  .energyImpact = numberIn(slice(line, columns, "POWER")),
                  .user = std::string(slice(line, columns, "USER").value_or(""))};
}

std::optional<ProcessOrigin> parseOrigin(std::string_view line) {
    std::array<std::string_view, 7> parts;
    std::size_t count = 0;
    forEachPiece(line, '\t', [&](std::string_view part) {
        if (count < parts.size())
            parts[count] = part;
        ++count;
    });
    constexpr std::string_view shells = "0123";
    const std::size_t shell = parts[5].size() == 1 ? shells.find(parts[5]) : std::string_view::npos;
    // The job came later than the rest.
    if ((count != parts.size() && count + 1 != parts.size()) || !parts[0].empty() || shell == std::string_view::npos)
        return std::nullopt;
    return ProcessOrigin{.path = std::string(parts[1]),
                         .subject = std::string(parts[2]),
                         .controlGroup = std::string(parts[3]),
                         .container = std::string(parts[4]),
                         .shell = static_cast<ProcessOrigin::Shell>(shell),
                         .job = std::string(parts[6])};
}

std::uint64_t parseSize(std::string_view text) {
    while (!text.empty() && (text.back() == '+' || text.back() == '-'))
        text.remove_suffix(1);
    if (text.empty())
        return 0;
    constexpr std::string_view units = "KMGT";
    const std::size_t unit = units.find(text.back());
    if (unit != std::string_view::npos)
        if (const std::optional<double> count = parseDecimal(text.substr(0, text.size() - 1)))
            return truncatedToUnsigned(std::ldexp(*count, static_cast<int>(unit + 1) * 10));
    return truncatedToUnsigned(parseDecimal(text).value_or(0));
}

MemoryLoad parsePhysMem(std::string_view line, std::uint64_t physicalMemoryBytes) {
    constexpr std::string_view separators = " (),.";
    std::vector<std::string_view> pieces;
    std::string_view rest = line.substr(std::min(line.size(), std::string_view("PhysMem:").size()));
    while (!rest.empty()) {
        const std::size_t end = rest.find_first_of(separators);
        if (end != 0)
            pieces.push_back(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    MemoryLoad memory;
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        const std::string_view label = pieces[i + 1];
        const std::uint64_t size = parseSize(pieces[i]);
        if (label == "used")
            memory.usedBytes = size;
        else if (label == "wired")
            memory.wiredBytes = size;
        else if (label == "compressor")
            memory.compressedBytes = size;
        else if (label == "unused")
            memory.totalBytes = memory.usedBytes + size;
        else
            continue;
        ++i;
    }
    if (memory.totalBytes == 0)
        memory.totalBytes = physicalMemoryBytes;
    return memory;
}

std::uint64_t parseSwap(std::string_view line) {
    const std::size_t label = line.find("swapouts");
    if (label == std::string_view::npos)
        return 0;
    std::string_view count = line.substr(0, label);
    const std::size_t comma = count.rfind(',');
    if (comma != std::string_view::npos)
        count.remove_prefix(comma + 1);
    count = trimmed(count);
    return parseUnsigned(count.substr(0, count.find('('))).value_or(0);
}

TopBlock parseBlock(const std::vector<std::string>& lines, std::uint64_t physicalMemoryBytes) {
    TopBlock block;
    std::optional<ColumnRanges> columns;
    std::uint64_t swapOutEvents = 0;
    for (const std::string& line : lines) {
        const auto rest = [&line](std::string_view prefix) { return std::string_view(line).substr(prefix.size()); };
        if (columns) {
            if (trimmed(line).empty())
                continue;
            if (line.front() == '\t' && !block.rows.empty()) {
                block.rows.back().origin = parseOrigin(line);
                continue;
            }
            if (std::optional<TopRow> row = parseRow(line, *columns))
                block.rows.push_back(std::move(*row));
        } else if (line.starts_with("Load Avg:")) {
            block.system.cpu.loadAverage = parseLoadAverage(rest("Load Avg:"));
        } else if (line.starts_with("CPU usage:")) {
            parseCPUUsage(rest("CPU usage:"), block.system.cpu);
        } else if (line.starts_with("PhysMem:")) {
            block.system.memory = parsePhysMem(line, physicalMemoryBytes);
        } else if (line.starts_with("VM:")) {
            swapOutEvents = parseSwap(line);
        } else if (line.starts_with("PID") && line.find("COMMAND") != std::string::npos) {
            columns = columnRanges(line);
        }
    }
    block.system.memory.swapOutEvents = swapOutEvents;
    return block;
}

std::optional<std::vector<std::string>> lastBlock(std::string_view output) {
    const std::size_t last = output.rfind(blockStart);
    if (last == std::string_view::npos || output.find(blockStart) == last)
        return std::nullopt;
    std::vector<std::string> lines;
    forEachPiece(output.substr(last), '\n', [&lines](std::string_view line) {
        if (line.size() <= TopBlockCutter::longestLine && lines.size() < TopBlockCutter::mostLines)
            lines.emplace_back(line);
    });
    return lines;
}

std::unordered_map<std::int32_t, std::string> parsePathList(std::string_view output) {
    std::unordered_map<std::int32_t, std::string> paths;
    forEachPiece(output, '\n', [&paths](std::string_view line) {
        line = trimmed(line);
        const std::size_t space = line.find(' ');
        if (space == std::string_view::npos)
            return;
        if (const std::optional<std::int32_t> pid = parseInt32(line.substr(0, space)))
            paths.insert_or_assign(*pid, std::string(trimmed(line.substr(space))));
    });
    return paths;
}

} // namespace vantoro
