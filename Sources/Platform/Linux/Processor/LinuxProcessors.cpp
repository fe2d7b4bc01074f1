#include "Platform/Linux/Processor/LinuxProcessors.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <set>
#include <utility>

namespace vantoro {

namespace {

std::vector<int> onlineProcessors(const std::string& root) {
    std::vector<int> online = parseCpuList(readTrimmed(root + "/sys/devices/system/cpu/online").value_or(""));
    if (!online.empty())
        return online;
    std::map<int, HostTicks> listed;
    parseProcessorTicks(readTrimmed(root + "/proc/stat").value_or(""), listed);
    for (const auto& [processor, ticks] : listed)
        online.push_back(processor);
    return online;
}

std::vector<int> common(const std::vector<int>& left, const std::vector<int>& right) {
    std::vector<int> both;
    std::ranges::set_intersection(left, right, std::back_inserter(both));
    return both;
}

std::vector<int> either(const std::vector<int>& left, const std::vector<int>& right) {
    std::vector<int> all;
    std::ranges::set_union(left, right, std::back_inserter(all));
    return all;
}

} // namespace

CpuTopology splitByCapacity(const std::map<int, std::int64_t>& capacities) {
    constexpr double clearRatio = 1.25;
    std::set<std::int64_t> levels;
    for (const auto& [processor, capacity] : capacities)
        levels.insert(std::max<std::int64_t>(capacity, 1));
    double widest = clearRatio;
    std::int64_t firstFast = 0;
    for (auto level = levels.begin(); level != levels.end() && std::next(level) != levels.end(); ++level)
        if (const double ratio = static_cast<double>(*std::next(level)) / static_cast<double>(*level);
            ratio >= widest) {
            widest = ratio;
            firstFast = *std::next(level);
        }
    CpuTopology topology;
    for (const auto& [processor, capacity] : capacities)
        (capacity < firstFast ? topology.efficiency : topology.performance).push_back(processor);
    return topology;
}

CpuTopology readCpuTopology(const std::string& root) {
    const std::vector<int> online = onlineProcessors(root);
    const auto kind = [&](const char* name) {
        return common(online, parseCpuList(readTrimmed(root + "/sys/devices/" + name + "/cpus").value_or("")));
    };
    CpuTopology hybrid{.efficiency = either(kind("cpu_atom"), kind("cpu_lowpower")), .performance = kind("cpu_core")};
    if (!hybrid.efficiency.empty() && !hybrid.performance.empty() &&
        either(hybrid.efficiency, hybrid.performance) == online &&
        hybrid.efficiency.size() + hybrid.performance.size() == online.size())
        return hybrid;
    std::map<int, std::int64_t> capacities;
    for (const int processor : online)
        if (const auto capacity =
                readWholeNumber(root + "/sys/devices/system/cpu/cpu" + std::to_string(processor) + "/cpu_capacity"))
            capacities[processor] = *capacity;
    if (capacities.size() == online.size())
        return splitByCapacity(capacities);
    return {.efficiency = {}, .performance = online};
}

void parseProcessorTicks(std::string_view text, std::map<int, HostTicks>& ticks) {
    while (text.starts_with("cpu")) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const auto processor = parseWholeNumber(line.substr(3, line.find(' ') - 3));
        const std::vector<std::int64_t> fields = parseWholeNumbers(line.substr(std::min(line.size(), line.find(' '))));
        if (!processor || fields.size() < 4) // the first line is the sum of all and has no number
            continue;
        const auto field = [&fields](std::size_t place) {
            return place < fields.size() ? static_cast<std::uint32_t>(fields[place]) : 0;
        };
        ticks[static_cast<int>(*processor)] = {
            .user = field(0), .system = field(2) + field(5) + field(6), .idle = field(3) + field(4), .nice = field(1)};
    }
}

LinuxProcessors::LinuxProcessors(const std::string& root, std::shared_ptr<SlowLane> lane)
    : root_(root), lane_(std::move(lane)), stat_(root + "/proc/stat") {}

ProcessorCounts LinuxProcessors::counts() {
    topology_ = readCpuTopology(root_);
    order_ = topology_.efficiency;
    order_.insert(order_.end(), topology_.performance.begin(), topology_.performance.end());
    return {.performance = static_cast<int>(topology_.performance.size()),
            .efficiency = static_cast<int>(topology_.efficiency.size()),
            .all = static_cast<int>(order_.size())};
}

int LinuxProcessors::readTicks(std::vector<HostTicks>& ticks) {
    if (order_.empty())
        counts();
    const auto text = stat_.read();
    if (!text)
        return EIO;
    parseProcessorTicks(*text, last_);
    if (last_.empty())
        return EIO;
    ticks.clear();
    for (const int processor : order_)
        ticks.push_back(last_[processor]);
    return 0;
}

CpuClocks& LinuxProcessors::clocks() {
    if (order_.empty())
        counts();
    if (!clocks_)
        clocks_.emplace(root_, lane_);
    return *clocks_;
}

bool LinuxProcessors::readClocks(std::vector<double>& megahertz) {
    if (!lane_)
        return false;
    clocks().read(order_, megahertz);
    return true;
}

ClockCeilings LinuxProcessors::ceilings() {
    if (!lane_)
        return {};
    const CpuClocks& all = clocks();
    return {.performance = all.ceilingMHz(topology_.performance), .efficiency = all.ceilingMHz(topology_.efficiency)};
}

} // namespace vantoro
