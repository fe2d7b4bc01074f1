// What a sparkline draws.
#pragma once

#include "Model/History/ChartSeries.h"

#include <optional>
#include <vector>

namespace vantoro {

/// Points outside `least` to `most` lie at the edge; `from` and `to` are the instants of the two ends (without them
/// those of the first and the last point). `ramp` is marked by a dashed line.
struct SparklineLine {
    std::vector<TimePoint> points;
    double least = 0;
    double most = 100;
    UnixSeconds from = 0;
    UnixSeconds to = 0;
    std::optional<UnixSeconds> ramp;

    bool operator==(const SparklineLine&) const = default;
};

} // namespace vantoro
