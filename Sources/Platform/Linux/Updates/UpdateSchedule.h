// When to look for an update unbidden.
#pragma once

#include <optional>

namespace vantoro {

/// Seconds since 1970 of the next automatic check, once a day and up to an hour later, so that many machines that were
/// started together do not come together. `share` of that hour, 0 to 1, is drawn by the caller. Never before: within
/// the hour. After a check that failed: an hour on instead of a day.
double nextAutomaticCheck(double now, bool hasChecked, bool failed, double share);

/// The stored time, or `nextAutomaticCheck` where none is stored or the clock was put back since, which would put the
/// check off for as long.
double plannedCheck(std::optional<double> stored, double now, double share);

} // namespace vantoro
