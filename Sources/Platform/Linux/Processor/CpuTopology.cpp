#include "Platform/Linux/Processor/CpuTopology.h"

#include "Platform/Linux/Processor/LinuxProcessors.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace vantoro {

namespace {

std::vector<int> onlineProcessors(const std::string& root) {
    const auto list = readTrimmed(root + "/sys/devices/system/cpu/online");
    std::vector<int> online = parseCpuList(list.value_or(""));
    if (online.empty())
        for (const auto& [processor, ticks] : parseProcessorTicks(readTrimmed(root + "/proc/stat").value_or("")))
            online.push_back(processor);
    return online;
}

std::vector<int> common(const std::vector<int>& left, const std::vector<int>& right) {
    std::vector<int> both;
    std::ranges::set_intersection(left, right, std::back_inserter(both));
    return both;
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
    CpuTopology hybrid{.efficiency = kind("cpu_atom"), .performance = kind("cpu_core")};
    if (!hybrid.efficiency.empty() && hybrid.efficiency.size() + hybrid.performance.size() == online.size())
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

} // namespace vantoro
