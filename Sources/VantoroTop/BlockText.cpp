#include "VantoroTop/BlockText.h"

#include "Model/Text/TerminalText.h"
#include "Model/Text/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vantoro::top {

namespace {

// Where each column starts, in bytes. A pid has up to 7 digits, a share up to 8 with its fraction, a size 12.
constexpr std::size_t commandColumn = 8;
constexpr std::size_t commandBytes = 16;
constexpr std::size_t cpuColumn = commandColumn + commandBytes + 1;
constexpr std::size_t memoryColumn = cpuColumn + 9;
constexpr std::size_t powerColumn = memoryColumn + 13;
constexpr std::size_t userColumn = powerColumn + 6;
constexpr std::size_t userBytes = 64;
/// The longest path that the kernel knows.
constexpr std::size_t mostOriginBytes = 4096;

void appendNumber(std::string& text, std::uint64_t number) {
    char digits[20];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

/// With a fixed number of decimals, halves away from zero; what is not a number of at least 0 becomes 0.
void appendDecimal(std::string& text, double value, int decimals) {
    const std::uint64_t scale = decimals == 1 ? 10 : 100;
    constexpr double most = 1e15;
    const double scaled = value > 0 ? std::min(value * static_cast<double>(scale), most) : 0;
    const auto whole = static_cast<std::uint64_t>(scaled + 0.5);
    appendNumber(text, whole / scale);
    text += '.';
    const std::uint64_t rest = whole % scale;
    if (decimals == 2)
        text += static_cast<char>('0' + rest / 10);
    text += static_cast<char>('0' + rest % 10);
}

void appendTwoDigits(std::string& text, int number) {
    text += static_cast<char>('0' + number / 10 % 10);
    text += static_cast<char>('0' + number % 10);
}

/// What holds a block's first word would pass for the beginning of a block.
void breakBlockTitles(std::string& text, std::size_t start) {
    constexpr std::string_view title = "Processes:";
    while ((start = text.find(title, start)) != std::string::npos)
        text[start + title.size() - 1] = '?';
}

/// Ends a line that began at `start` and is all ASCII.
void endLine(std::string& text, std::size_t start, std::size_t columns) {
    if (text.size() - start > columns)
        text.resize(start + columns);
    text += '\n';
}

void padTo(std::string& text, std::size_t width, std::size_t wanted) {
    text.append(wanted > width ? wanted - width : 1, ' ');
}

} // namespace

void appendHead(std::string& text, const SystemFigures& figures, std::size_t columns) {
    std::size_t line = text.size();
    text += "Processes: ";
    appendNumber(text, figures.processes.total);
    text += " total, ";
    appendNumber(text, figures.processes.running);
    text += " running, ";
    appendNumber(text, figures.processes.total - std::min(figures.processes.running, figures.processes.total));
    text += " sleeping, ";
    appendNumber(text, figures.processes.threads);
    text += " threads";
    endLine(text, line, columns);

    line = text.size();
    appendNumber(text, static_cast<std::uint64_t>(std::max(0, figures.localTime.tm_year + 1900)));
    text += '/';
    appendTwoDigits(text, figures.localTime.tm_mon + 1);
    text += '/';
    appendTwoDigits(text, figures.localTime.tm_mday);
    text += ' ';
    appendTwoDigits(text, figures.localTime.tm_hour);
    text += ':';
    appendTwoDigits(text, figures.localTime.tm_min);
    text += ':';
    appendTwoDigits(text, figures.localTime.tm_sec);
    endLine(text, line, columns);

    line = text.size();
    text += "Load Avg: ";
    appendDecimal(text, figures.load.oneMinute, 2);
    text += ", ";
    appendDecimal(text, figures.load.fiveMinutes, 2);
    text += ", ";
    appendDecimal(text, figures.load.fifteenMinutes, 2);
    text += ' ';
    endLine(text, line, columns);

    line = text.size();
    text += "CPU usage: ";
    appendDecimal(text, figures.cpu.userPercent, 2);
    text += "% user, ";
    appendDecimal(text, figures.cpu.systemPercent, 2);
    text += "% sys, ";
    appendDecimal(text, figures.cpu.idlePercent, 2);
    text += "% idle ";
    endLine(text, line, columns);

    // In K, which keeps the figures exact.
    const VirtualMemory& memory = figures.memory;
    const std::uint64_t applications = memory.internalPages - std::min(memory.internalPages, memory.purgeablePages);
    const auto kibibytes = [&memory](std::uint64_t pages) { return pages * memory.pageBytes / 1024; };
    const std::uint64_t used = kibibytes(applications + memory.wiredPages + memory.compressorPages);
    line = text.size();
    text += "PhysMem: ";
    appendNumber(text, used);
    text += "K used (";
    appendNumber(text, kibibytes(memory.wiredPages));
    text += "K wired, ";
    appendNumber(text, kibibytes(memory.compressorPages));
    text += "K compressor), ";
    appendNumber(text, figures.totalKiB - std::min(used, figures.totalKiB));
    text += "K unused.";
    endLine(text, line, columns);

    line = text.size();
    text += "VM: ";
    appendNumber(text, memory.swapIns);
    text += '(';
    appendNumber(text, figures.swapInsSince);
    text += ") swapins, ";
    appendNumber(text, memory.swapOuts);
    text += '(';
    appendNumber(text, figures.swapOutsSince);
    text += ") swapouts.";
    endLine(text, line, columns);

    text += '\n';
    line = text.size();
    text += "PID";
    padTo(text, text.size() - line, commandColumn);
    text += "COMMAND";
    padTo(text, text.size() - line, cpuColumn);
    text += "%CPU";
    padTo(text, text.size() - line, memoryColumn);
    text += "MEM";
    padTo(text, text.size() - line, powerColumn);
    text += "POWER";
    padTo(text, text.size() - line, userColumn);
    text += "USER";
    endLine(text, line, columns);
}

void appendRow(std::string& text, const Row& row, std::size_t columns) {
    const std::size_t line = text.size();
    appendNumber(text, static_cast<std::uint64_t>(std::max(row.pid, 0)));
    padTo(text, text.size() - line, commandColumn);

    const std::size_t command = text.size();
    appendTerminalText(text, row.command, commandBytes);
    // A name of blanks alone would leave the column empty.
    if (text.find_first_not_of(' ', command) == std::string::npos) {
        text.resize(command);
        text += '?';
    }
    breakBlockTitles(text, command);
    padTo(text, text.size() - line, cpuColumn);
    appendDecimal(text, row.cpuPercent, 1);
    padTo(text, text.size() - line, memoryColumn);
    appendNumber(text, row.residentKiB);
    text += 'K';
    padTo(text, text.size() - line, powerColumn);
    text += "0.0"; // the kernel keeps no account of a process's energy
    padTo(text, text.size() - line, userColumn);
    appendTerminalText(text, row.user, userBytes);
    if (text.size() - line > columns) {
        std::size_t end = line + columns;
        while (end > line && characterStart(text, end) != end)
            --end;
        text.resize(end);
    }
    text += '\n';
}

void appendOrigin(std::string& text, const ProcessOrigin& origin) {
    const std::size_t line = text.size();
    for (const std::string* part : {&origin.path, &origin.subject, &origin.controlGroup, &origin.container}) {
        text += '\t';
        appendTerminalText(text, *part, mostOriginBytes);
    }
    text += '\t';
    text += static_cast<char>('0' + static_cast<int>(origin.shell));
    text += '\t';
    appendTerminalText(text, origin.job, mostOriginBytes);
    breakBlockTitles(text, line);
    text += '\n';
}

void appendPathLine(std::string& text, std::int32_t pid, std::string_view path) {
    appendNumber(text, static_cast<std::uint64_t>(std::max(pid, 0)));
    text += ' ';
    // The bytes of a path are kept as they are, so that it still opens; only a line end must not appear.
    const std::size_t start = text.size();
    text.append(path);
    std::replace(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), '\n', '?');
    text += '\n';
}

} // namespace vantoro::top
