// One logical processor over the last interval.
#pragma once

#include <string>

namespace vantoro {

struct Core {
    int index = 0;
    bool isPerformance = false;
    /// Share of the interval spent not idle, 0 to 1.
    double busy = 0;
    /// Mean frequency weighted by the time spent at each; 0 until measured.
    double megahertz = 0;
    /// Position among the cores of its kind.
    int clusterIndex = 0;

    /// "P0", "E3".
    std::string label() const { return (isPerformance ? "P" : "E") + std::to_string(clusterIndex); }

    bool operator==(const Core&) const = default;
};

} // namespace vantoro
