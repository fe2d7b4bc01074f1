#include "Platform/Linux/Proc/ProcStat.h"

#include <algorithm>
#include <limits>

namespace vantoro {

namespace {

/// Walks one text from front to back. Nothing it does looks past the end.
struct Cursor {
    const char* at;
    const char* end;

    explicit Cursor(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

    bool atDigit() const { return at != end && static_cast<unsigned char>(*at - '0') < 10; }

    void skipBlanks() {
        while (at != end && (*at == ' ' || *at == '\t'))
            ++at;
    }

    /// Skips `count` fields, each with the one space that follows it.
    bool skipFields(int count) {
        for (; count > 0; --count) {
            while (at != end && *at != ' ')
                ++at;
            if (at == end)
                return false;
            ++at;
        }
        return true;
    }

    /// A decimal number without sign that fits.
    bool readNumber(std::uint64_t& number) {
        if (!atDigit())
            return false;
        constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
        std::uint64_t value = 0;
        for (; atDigit(); ++at) {
            const auto digit = static_cast<std::uint64_t>(*at - '0');
            if (value > most / 10 || value * 10 > most - digit)
                return false;
            value = value * 10 + digit;
        }
        number = value;
        return true;
    }

    /// A decimal number and the space or line end that must follow it. A negative one gives 0.
    bool readField(std::uint64_t& number) {
        const bool negative = at != end && *at == '-';
        if (negative)
            ++at;
        if (!readNumber(number))
            return false;
        if (negative)
            number = 0;
        return at == end || *at == ' ' || *at == '\n';
    }

    bool readFieldAndSpace(std::uint64_t& number) {
        if (!readField(number) || at == end || *at != ' ')
            return false;
        ++at;
        return true;
    }

    /// A decimal with an optional fraction, the nearest number to what is written. No exponent, no sign, neither "nan"
    /// nor "inf", and no more digits than a double keeps.
    bool readDecimal(double& number) {
        constexpr double mostKept = 1e15;
        if (!atDigit())
            return false;
        double digits = 0;
        double scale = 1;
        bool inFraction = false;
        for (; atDigit() || (at != end && *at == '.' && !inFraction); ++at) {
            if (*at == '.') {
                inFraction = true;
                continue;
            }
            digits = digits * 10 + (*at - '0');
            scale *= inFraction ? 10 : 1;
            if (digits > mostKept || scale > mostKept)
                return false;
        }
        number = digits / scale;
        return at == end || *at == ' ' || *at == '\n';
    }
};

/// The rest of the line that begins with `prefix`; an empty view without data when there is none.
std::string_view lineAfter(std::string_view text, std::string_view prefix) {
    for (std::size_t start = text.find(prefix); start != std::string_view::npos; start = text.find(prefix, start + 1)) {
        if (start != 0 && text[start - 1] != '\n')
            continue;
        const std::string_view rest = text.substr(start + prefix.size());
        return rest.substr(0, rest.find('\n'));
    }
    return {};
}

} // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
    const std::size_t open = text.find(" (");
    const std::size_t close = text.rfind(") "); // a name may hold anything, the fields after it no parenthesis
    if (open == std::string_view::npos || close == std::string_view::npos || close < open + 2)
        return {};
    ProcessStat stat;
    stat.name = text.substr(open + 2, close - open - 2);

    Cursor cursor(text.substr(close + 2));
    if (cursor.end - cursor.at < 2 || cursor.at[1] != ' ')
        return {};
    stat.state = cursor.at[0];
    cursor.at += 2;
    std::uint64_t parent = 0;
    std::uint64_t group = 0;
    std::uint64_t session = 0;
    std::uint64_t childUser = 0;
    std::uint64_t childSystem = 0;
    const bool complete = cursor.readFieldAndSpace(parent)              // 4 ppid
                          && cursor.readFieldAndSpace(group)            // 5 pgrp
                          && cursor.readFieldAndSpace(session)          // 6
                          && cursor.skipFields(2)                       // 7–8 tty_nr tpgid
                          && cursor.readFieldAndSpace(stat.flags)       // 9
                          && cursor.skipFields(4)                       // 10–13 minflt cminflt majflt cmajflt
                          && cursor.readFieldAndSpace(stat.userTicks)   // 14
                          && cursor.readFieldAndSpace(stat.systemTicks) // 15
                          && cursor.readFieldAndSpace(childUser)        // 16 cutime
                          && cursor.readFieldAndSpace(childSystem)      // 17 cstime
                          && cursor.skipFields(2)                       // 18–19 priority nice
                          && cursor.readFieldAndSpace(stat.threads)     // 20
                          && cursor.skipFields(1)                       // 21 itrealvalue
                          && cursor.readFieldAndSpace(stat.startTicks)  // 22
                          && cursor.skipFields(1)                       // 23 vsize
                          && cursor.readField(stat.residentPages);      // 24
    constexpr auto greatestPid = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    if (!complete || std::max({parent, group, session}) > greatestPid)
        return {};
    stat.parentPid = static_cast<std::int32_t>(parent);
    stat.groupPid = static_cast<std::int32_t>(group);
    stat.sessionPid = static_cast<std::int32_t>(session);
    stat.childTicks = childUser + childSystem;
    stat.usedBytes = static_cast<std::size_t>(cursor.at - text.data());
    return stat;
}

std::optional<std::uint32_t> parseRealUid(std::string_view text) {
    Cursor cursor(lineAfter(text, "Uid:"));
    cursor.skipBlanks();
    std::uint64_t uid = 0;
    if (!cursor.readNumber(uid) || uid > std::numeric_limits<std::uint32_t>::max())
        return {};
    return static_cast<std::uint32_t>(uid);
}

std::optional<KernelStat> parseKernelStat(std::string_view text) {
    Cursor cursor(lineAfter(text, "cpu "));
    // user, nice, system, idle, iowait, irq, softirq, steal; the last four came with later kernels
    std::uint64_t counters[8] = {};
    std::size_t found = 0;
    for (; found < 8; ++found) {
        cursor.skipBlanks();
        if (!cursor.readField(counters[found]))
            break;
    }
    if (found < 4)
        return {};
    KernelStat stat;
    // The counters are allowed to wrap at 32 bits.
    stat.ticks.user = static_cast<std::uint32_t>(counters[0]);
    stat.ticks.nice = static_cast<std::uint32_t>(counters[1]);
    stat.ticks.system = static_cast<std::uint32_t>(counters[2] + counters[5] + counters[6]);
    stat.ticks.idle = static_cast<std::uint32_t>(counters[3] + counters[4]);
    stat.busyTicks = counters[0] + counters[1] + counters[2] + counters[5] + counters[6] + counters[7];

    // The count stands among the last lines; the interrupts' line before it can be many kilobytes long.
    constexpr std::string_view title = "\nprocesses ";
    if (const std::size_t line = text.rfind(title); line != std::string_view::npos) {
        std::uint64_t forks = 0;
        if (Cursor count(text.substr(line + title.size())); count.readField(forks))
            stat.forks = forks;
    }
    return stat;
}

std::optional<LoadAverages> parseLoadAverages(std::string_view text) {
    LoadAverages load;
    Cursor cursor(text);
    for (double* figure : {&load.oneMinute, &load.fiveMinutes, &load.fifteenMinutes}) {
        cursor.skipBlanks();
        if (!cursor.readDecimal(*figure))
            return {};
    }
    return load;
}

std::optional<MemoryInfo> parseMemoryInfo(std::string_view text) {
    struct Line {
        std::string_view title;
        std::uint64_t MemoryInfo::*figure;
    };
    static constexpr Line lines[] = {
        {"MemTotal", &MemoryInfo::totalKiB},          {"Unevictable", &MemoryInfo::unevictableKiB},
        {"SwapTotal", &MemoryInfo::swapTotalKiB},     {"Zswap", &MemoryInfo::zswapKiB},
        {"AnonPages", &MemoryInfo::anonymousKiB},     {"SUnreclaim", &MemoryInfo::unreclaimableSlabKiB},
        {"KernelStack", &MemoryInfo::kernelStackKiB}, {"PageTables", &MemoryInfo::pageTablesKiB}};
    MemoryInfo info;
    bool totalFound = false;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t newline = text.find('\n', start);
        const std::string_view line = text.substr(start, newline - start);
        start = newline == std::string_view::npos ? text.size() : newline + 1;
        // A title of ours is at most 12 characters long: the colon is near or the line is another's.
        const std::size_t colon = line.substr(0, 13).find(':');
        if (colon == std::string_view::npos)
            continue;
        const std::string_view title = line.substr(0, colon);
        if (title == "MemAvailable") {
            Cursor cursor(line.substr(colon + 1));
            cursor.skipBlanks();
            if (std::uint64_t figure = 0; cursor.readField(figure))
                info.availableKiB = figure;
            continue;
        }
        for (const Line& wanted : lines) {
            if (wanted.title != title)
                continue;
            Cursor cursor(line.substr(colon + 1));
            cursor.skipBlanks();
            std::uint64_t figure = 0;
            if (cursor.readField(figure)) {
                info.*wanted.figure = figure;
                totalFound = totalFound || wanted.figure == &MemoryInfo::totalKiB;
            }
            break;
        }
    }
    if (!totalFound)
        return {};
    return info;
}

std::optional<SwapCounts> parseSwapCounts(std::string_view text) {
    SwapCounts counts;
    Cursor in(lineAfter(text, "pswpin "));
    Cursor out(lineAfter(text, "pswpout "));
    if (!in.readField(counts.pagesIn) || !out.readField(counts.pagesOut))
        return {};
    return counts;
}

std::optional<std::uint64_t> parseZramUsedBytes(std::string_view text) {
    Cursor cursor(text);
    std::uint64_t number = 0;
    for (int field = 0; field < 3; ++field) {
        cursor.skipBlanks();
        if (!cursor.readField(number))
            return {};
    }
    return number;
}

std::string_view parseControlGroup(std::string_view text) {
    std::string_view unified = lineAfter(text, "0::");
    if (unified.size() > 1)
        return unified;
    constexpr std::string_view named = ":name=systemd:";
    if (const std::size_t at = text.find(named); at != std::string_view::npos) {
        const std::string_view rest = text.substr(at + named.size());
        return rest.substr(0, rest.find('\n'));
    }
    return unified;
}

} // namespace vantoro
