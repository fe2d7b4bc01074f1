#include "Views/Timeline/Moments.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace vantoro {

std::vector<TimePoint> measured(const std::vector<TimePoint>& points) {
    std::vector<TimePoint> kept;
    kept.reserve(points.size());
    std::copy_if(points.begin(), points.end(), std::back_inserter(kept),
                 [](const TimePoint& point) { return point.value > 0; });
    return kept;
}

std::optional<TimeSpan> span(const std::vector<TimePoint>& points) {
    if (points.empty() || !(points.front().time < points.back().time))
        return std::nullopt;
    return TimeSpan{points.front().time, points.back().time};
}

std::optional<double> valueAt(const std::vector<TimePoint>& points, UnixSeconds time) {
    const auto after = std::lower_bound(points.begin(), points.end(), time,
                                        [](const TimePoint& point, UnixSeconds wanted) { return point.time < wanted; });
    if (after == points.end())
        return std::nullopt;
    if (after->time == time)
        return after->value;
    if (after == points.begin())
        return std::nullopt;
    const TimePoint& before = *(after - 1);
    return before.value + (after->value - before.value) * (time - before.time) / (after->time - before.time);
}

const Snapshot* snapshotNearest(const History& history, std::optional<UnixSeconds> scrub) {
    const std::deque<Snapshot>& snapshots = history.snapshots();
    if (!scrub || snapshots.empty())
        return nullptr;
    const auto isEarlier = [](const Snapshot& snapshot, UnixSeconds time) { return snapshot.timestamp < time; };
    const auto after = std::lower_bound(snapshots.begin(), snapshots.end(), *scrub, isEarlier);
    if (after == snapshots.begin())
        return &snapshots.front();
    const UnixSeconds before = (after - 1)->timestamp;
    if (after != snapshots.end() && after->timestamp - *scrub < *scrub - before)
        return &*after;
    return &*std::lower_bound(snapshots.begin(), after, before, isEarlier);
}

std::optional<UnixSeconds> pointBeside(const std::vector<TimePoint>& points, std::optional<UnixSeconds> scrub,
                                       int steps) {
    if (points.empty())
        return std::nullopt;
    std::ptrdiff_t from = std::ssize(points) - 1;
    if (scrub) {
        const auto nearest =
            std::min_element(points.begin(), points.end(), [&](const TimePoint& a, const TimePoint& b) {
                return std::abs(a.time - *scrub) < std::abs(b.time - *scrub);
            });
        from = nearest - points.begin();
    }
    const std::ptrdiff_t to = std::clamp<std::ptrdiff_t>(from + steps, 0, std::ssize(points) - 1);
    return points[static_cast<std::size_t>(to)].time;
}

int tenthOf(const std::vector<TimePoint>& points) {
    return std::max(1, static_cast<int>(points.size() / 10));
}

} // namespace vantoro
