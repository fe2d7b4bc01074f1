// What the gauges show, as texts and shares ready to paint.
#pragma once

#include "Model/History/History.h"

#include <optional>
#include <QString>
#include <vector>

namespace vantoro {

struct FanRotorFigures {
    /// The speed and its unit, "4,830" and "rpm"; "—" and nothing without a fan.
    QString figure;
    QString unit;
    /// Below them: "Left · 59%", which begins with the label.
    QString caption;
    /// The fan's name alone, for rotors too small for the rest.
    QString label;
    /// Where the fan stands between its limits, 0 to 1; none where they are not known.
    std::optional<double> position;
    int heatStop = 0;
    double turnsPerSecond = 0;
    QString spokenName;
    QString spokenValue;

    bool operator==(const FanRotorFigures&) const = default;
};

/// How warm the chip is or, where that is not known, how busy the processors are.
struct ThermalDialFigures {
    /// The whole chip, "71" and "°C", or the busy share, "66" and "%"; "—" and nothing without a reading.
    QString figure;
    QString unit;
    /// "whole chip", "of 8 cores"
    QString caption;
    /// The figure as it stands in a dial too small for the rest, "71°".
    QString smallFigure;
    /// In the gap below: "hottest core" and "86°C"; empty without a reading.
    QString gapCaption;
    QString gapFigure;
    /// The heat load or the smoothed busy share, 0 to 1.
    std::optional<double> position;
    int heatStop = 0;
    /// Nothing has been found yet: the dash alone.
    bool isEmpty = false;
    QString spokenName;
    QString spokenValue;

    bool operator==(const ThermalDialFigures&) const = default;
};

/// What a sparkline draws. Points outside `least` to `most` lie at the edge; `from` and `to` are the instants of the
/// two ends (without them those of the first and the last point). `ramp` is marked by a dashed line.
struct SparklineLine {
    std::vector<TimePoint> points;
    double least = 0;
    double most = 100;
    UnixSeconds from = 0;
    UnixSeconds to = 0;
    std::optional<UnixSeconds> ramp;
    /// Points of 0 are readings, too.
    bool countsZero = false;

    bool operator==(const SparklineLine&) const = default;
};

} // namespace vantoro
