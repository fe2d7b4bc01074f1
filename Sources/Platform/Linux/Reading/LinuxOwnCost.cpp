#include "Platform/Linux/Reading/LinuxOwnCost.h"

#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <fcntl.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr std::size_t mostBytes = 64 * 1024;
/// More are not this program's doing.
constexpr std::size_t mostPrograms = 64;

} // namespace

std::optional<std::uint64_t> parseTotalTicks(std::string_view text) {
    const std::size_t close = text.rfind(") "); // the name may hold anything, the fields after it no parenthesis
    if (close == std::string_view::npos || close + 4 > text.size())
        return {};
    // From the fourth field on: after the state, which is one letter.
    const std::vector<std::int64_t> fields = parseWholeNumbers(text.substr(close + 3));
    constexpr std::size_t user = 14 - 4;
    std::uint64_t total = 0;
    for (std::size_t field = user; field < user + 4; ++field) {
        if (field >= fields.size() || fields[field] < 0)
            return {};
        total += static_cast<std::uint64_t>(fields[field]);
    }
    return total;
}

std::optional<std::uint64_t> parseProportionalBytes(std::string_view text) {
    constexpr std::string_view label = "\nPss:";
    constexpr std::string_view unit = " kB";
    const std::size_t at = text.find(label);
    if (at == std::string_view::npos)
        return {};
    const std::string_view rest = text.substr(at + label.size());
    const std::string_view line = rest.substr(0, rest.find('\n'));
    constexpr std::int64_t mostKiB = std::int64_t{1} << 50;
    const auto kib = line.ends_with(unit) ? parseWholeNumber(line.substr(0, line.size() - unit.size())) : std::nullopt;
    return kib && *kib >= 0 && *kib <= mostKiB ? std::optional(static_cast<std::uint64_t>(*kib) * 1024) : std::nullopt;
}

LinuxOwnCost::LinuxOwnCost(std::string root, std::string process)
    : root_(std::move(root)), process_(std::move(process)) {}

std::optional<std::string> LinuxOwnCost::read(const std::string& process, const std::string& name) const {
    return readFileAt(AT_FDCWD, (root_ + "/proc/" + process + "/" + name).c_str(), mostBytes);
}

bool LinuxOwnCost::addPrograms(const std::string& process, std::vector<std::string>& found) const {
    bool isListed = false;
    for (const std::string& thread : namesIn(root_ + "/proc/" + process + "/task")) {
        const auto children = read(process, "task/" + thread + "/children");
        if (!children)
            continue;
        isListed = true;
        for (const std::int64_t child : parseWholeNumbers(*children)) {
            if (found.size() >= mostPrograms)
                return true;
            const std::string program = std::to_string(child);
            found.push_back(program);
            addPrograms(program, found);
        }
    }
    return isListed;
}

std::optional<OwnCost::ProcessorTime> LinuxOwnCost::processorTime() {
    const auto own = read(process_, "stat");
    const auto ticks = own ? parseTotalTicks(*own) : std::nullopt;
    const long ticksPerSecond = ::sysconf(_SC_CLK_TCK);
    if (!ticks || ticksPerSecond <= 0)
        return {};
    programs_.clear();
    ProcessorTime time{.hasPrograms = addPrograms(process_, programs_)};
    std::uint64_t total = *ticks;
    for (const std::string& program : programs_)
        // One that has just ended is among those that this process has waited for.
        if (const auto stat = read(program, "stat"))
            total += parseTotalTicks(*stat).value_or(0);
    time.seconds = static_cast<double>(total) / static_cast<double>(ticksPerSecond);
    return time;
}

std::optional<std::uint64_t> LinuxOwnCost::memoryBytes() {
    const auto own = read(process_, "smaps_rollup");
    std::optional<std::uint64_t> bytes = own ? parseProportionalBytes(*own) : std::nullopt;
    if (!bytes)
        return {};
    programs_.clear();
    addPrograms(process_, programs_);
    for (const std::string& program : programs_)
        if (const auto rollup = read(program, "smaps_rollup"))
            *bytes += parseProportionalBytes(*rollup).value_or(0);
    return bytes;
}

} // namespace vantoro
