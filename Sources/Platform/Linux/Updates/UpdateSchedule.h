// When to look for an update unbidden.
#pragma once

#include <optional>

namespace vantoro {

/// Seconds since 1970 of the next automatic check, once a day and up to an hour later, so that many machines that were
/// started together do not come together. `share` of that hour, 0 to 1, is drawn by the caller. Never before: within
/// the hour. After a check that failed: an hour on instead of a day.
inline double nextAutomaticCheck(double now, bool hasChecked, bool failed, double share) {
    constexpr double hour = 3600;
    const double pause = !hasChecked ? 0 : failed ? hour : 24 * hour;
    return now + pause + share * hour;
}

/// The stored time, or `nextAutomaticCheck` where none is stored or the clock was put back since, which would put the
/// check off for as long.
inline double plannedCheck(std::optional<double> stored, double now, double share) {
    constexpr double longestPause = 25 * 3600;
    const bool isPlausible = stored && *stored <= now + longestPause;
    return isPlausible ? *stored : nextAutomaticCheck(now, false, false, share);
}

} // namespace vantoro
