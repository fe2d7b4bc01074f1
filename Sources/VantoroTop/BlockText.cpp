#include "VantoroTop/BlockText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vantoro::top {

namespace {

// Where each column starts. A pid has up to 7 digits, a share up to 8 characters with its fraction, a size 12.
constexpr std::size_t commandColumn = 8;
constexpr std::size_t commandCharacters = 16;
constexpr std::size_t cpuColumn = commandColumn + commandCharacters + 1;
constexpr std::size_t memoryColumn = cpuColumn + 9;
constexpr std::size_t powerColumn = memoryColumn + 13;
constexpr std::size_t userColumn = powerColumn + 6;
constexpr std::size_t userCharacters = 64;

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

/// Ends a line that began at `start` and is all ASCII.
void endLine(std::string& text, std::size_t start, std::size_t columns) {
    if (text.size() - start > columns)
        text.resize(start + columns);
    text += '\n';
}

/// Length of the UTF-8 character that `raw` begins with; 0 when it begins with none (overlong forms, surrogates and
/// what lies beyond U+10FFFF are none).
std::size_t characterLength(std::string_view raw) {
    const auto byte = [raw](std::size_t at) { return at < raw.size() ? static_cast<unsigned char>(raw[at]) : 0U; };
    const auto follows = [&byte](std::size_t at) { return (byte(at) & 0xC0U) == 0x80U; };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF && follows(1))
        return 2;
    if (first >= 0xE0 && first <= 0xEF && follows(1) && follows(2))
        return (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ? 0 : 3;
    if (first >= 0xF0 && first <= 0xF4 && follows(1) && follows(2) && follows(3))
        return (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F) ? 0 : 4;
    return 0;
}

/// Control characters, among them those of U+0080 to U+009F, and the two separators that some readers take for line
/// ends.
bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1)
        return first < 0x20 || first == 0x7F;
    if (character.size() == 2)
        return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    return character == "\u2028" || character == "\u2029";
}

void padTo(std::string& text, std::size_t width, std::size_t wanted) {
    text.append(wanted > width ? wanted - width : 1, ' ');
}

} // namespace

std::size_t appendSafely(std::string& text, std::string_view raw, std::size_t most) {
    std::size_t characters = 0;
    for (; characters < most && !raw.empty(); ++characters) {
        const std::size_t length = characterLength(raw);
        if (length == 0 || isControl(raw.substr(0, length)))
            text += '?';
        else
            text.append(raw.substr(0, length));
        raw.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return characters;
}

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
    appendDecimal(text, figures.userPercent, 2);
    text += "% user, ";
    appendDecimal(text, figures.systemPercent, 2);
    text += "% sys, ";
    appendDecimal(text, figures.idlePercent, 2);
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
    std::size_t characters = appendSafely(text, row.command, commandCharacters);
    // A name of blanks alone would leave the column empty, and one that holds a block's first word would pass for the
    // beginning of a block.
    if (text.find_first_not_of(' ', command) == std::string::npos) {
        text.resize(command);
        text += '?';
        characters = 1;
    }
    constexpr std::string_view blockTitle = "Processes:";
    if (const std::size_t at = text.find(blockTitle, command); at != std::string::npos)
        text[at + blockTitle.size() - 1] = '?';
    // From here on the column is counted from the end of the command: its bytes may be more than its characters.
    padTo(text, characters, cpuColumn - commandColumn);
    const std::size_t figures = text.size();
    appendDecimal(text, row.cpuPercent, 1);
    padTo(text, text.size() - figures, memoryColumn - cpuColumn);
    appendNumber(text, row.residentKiB);
    text += 'K';
    padTo(text, text.size() - figures, powerColumn - cpuColumn);
    text += "0.0"; // the kernel keeps no account of a process's energy
    padTo(text, text.size() - figures, userColumn - cpuColumn);
    if (columns > userColumn)
        appendSafely(text, row.user, std::min(columns - userColumn, userCharacters));
    else if (columns < userColumn)
        for (std::size_t from = line, width = 0; from < text.size(); ++from)
            if ((static_cast<unsigned char>(text[from]) & 0xC0U) != 0x80U && width++ == columns) {
                text.resize(from);
                break;
            }
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
