#include "Model/History/Suspects.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace vantoro {

namespace {

constexpr double windowSeconds = 20;
constexpr double leastPercent = 0.6;

} // namespace

std::vector<ProcessGroup> rankedSuspects(const History& history) {
    std::vector<ProcessGroup> groups = History::group(History::aggregate(history.recent(windowSeconds)));
    // NaN counts as idle.
    std::erase_if(groups, [](const ProcessGroup& group) { return !(group.totalCPU >= leastPercent); });
    std::ranges::stable_sort(groups, std::greater{}, &ProcessGroup::totalCPU);
    for (ProcessGroup& group : groups)
        group.stressScore = std::round(group.totalCPU);
    return groups;
}

} // namespace vantoro
