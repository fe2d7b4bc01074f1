// One logical processor over the last interval.
#pragma once

#include <string>

namespace vantoro {

/// "P" of "performance".
inline std::string tierLetter(const std::string& tierName) {
    const char first = tierName.empty() ? '?' : tierName.front();
    return {first >= 'a' && first <= 'z' ? static_cast<char>(first - 'a' + 'A') : first};
}

struct Core {
    int index = 0;
    bool isPerformance = false;
    /// Share of the interval spent not idle, 0 to 1.
    double busy = 0;
    /// Mean frequency weighted by the time spent at each; 0 until measured.
    double megahertz = 0;
    /// Position among the cores of its kind.
    int clusterIndex = 0;
    /// What the system calls its kind ("super"); empty for the usual names.
    std::string tier = {};

    std::string tierName() const { return !tier.empty() ? tier : isPerformance ? "performance" : "efficiency"; }
    /// "P0", "E3": the first letter of its kind.
    std::string label() const { return tierLetter(tierName()) + std::to_string(clusterIndex); }

    bool operator==(const Core&) const = default;
};

} // namespace vantoro
