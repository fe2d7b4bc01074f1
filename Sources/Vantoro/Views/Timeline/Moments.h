// Where a moment lies: on an axis, between the points of a line, among the snapshots.
#pragma once

#include "Model/History/History.h"

#include <optional>
#include <vector>

namespace vantoro {

/// From the first instant of an axis to the last.
struct TimeSpan {
    UnixSeconds first = 0;
    UnixSeconds last = 0;

    double seconds() const { return last - first; }
    bool holds(UnixSeconds time) const { return time >= first && time <= last; }

    bool operator==(const TimeSpan&) const = default;
};

/// The points that were measured: a missing reading is 0.
std::vector<TimePoint> measured(const std::vector<TimePoint>& points);

/// From the first point to the last; none unless time goes by between them.
std::optional<TimeSpan> span(const std::vector<TimePoint>& points);

/// The line's value at a time between its points; none before the first and after the last.
std::optional<double> valueAt(const std::vector<TimePoint>& points, UnixSeconds time);

/// The snapshot closest to the scrub, the earlier of two; null without a scrub or a history.
const Snapshot* snapshotNearest(const History& history, std::optional<UnixSeconds> scrub);

/// The time of the point `steps` before (below 0) or after the one nearest to the scrub, or to the last without a
/// scrub; held to the points there are.
std::optional<UnixSeconds> pointBeside(const std::vector<TimePoint>& points, std::optional<UnixSeconds> scrub,
                                       int steps);

/// How many points are a tenth of them; at least 1.
int tenthOf(const std::vector<TimePoint>& points);

} // namespace vantoro
