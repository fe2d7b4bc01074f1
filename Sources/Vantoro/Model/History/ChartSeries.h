// The lines of the charts, taken from the history.
#pragma once

#include "Model/History/History.h"

#include <vector>

namespace vantoro {

/// One chart point.
struct TimePoint {
    UnixSeconds time = 0;
    double value = 0;

    bool operator==(const TimePoint&) const = default;
};

/// Oldest point first; all five hold the same instants.
struct ChartSeries {
    std::vector<TimePoint> fan;   ///< fan load, per cent
    std::vector<TimePoint> cpu;   ///< processor time not idle, per cent
    std::vector<TimePoint> temp;  ///< the chip's headline temperature, °C
    std::vector<TimePoint> chip;  ///< mean of the die sensors, °C
    std::vector<TimePoint> power; ///< whole-system draw, watts

    bool operator==(const ChartSeries&) const = default;
};

/// The last 15 minutes; a run of 240 snapshots or more is thinned evenly to about 120 points.
ChartSeries chartSeries(const History& history);

} // namespace vantoro
