// What the Timeline pane draws: the charts of the last 15 minutes and their common time axis.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Views/Timeline/Moments.h"

#include <QString>

namespace vantoro {

struct ChartLine {
    enum class Stroke : std::uint8_t { solid, dashed };

    std::vector<TimePoint> points;
    Stroke stroke = Stroke::solid;
    /// Values at which the line goes over to the next stop of the heat ramp; empty draws it in ink.
    std::vector<double> bands;
    bool fillsArea = false;

    bool operator==(const ChartLine&) const = default;
};

/// A text beside the plot, with its grid line.
struct ScaleMark {
    double value = 0;
    QString text;

    bool operator==(const ScaleMark&) const = default;
};

/// A text under the plots.
struct TimeMark {
    UnixSeconds time = 0;
    QString text;

    bool operator==(const TimeMark&) const = default;
};

enum class ChartKind : std::uint8_t { fans, temperature, heat, busy, memory, waiting, processor, power };

/// The part of a chart that changes only as the hub publishes.
struct ChartModel {
    ChartKind kind = ChartKind::processor;
    QString title;
    QString caption;
    /// In points at the design's window height, with the title row; those of all charts fill it.
    int height = 162;
    double least = 0;
    double most = 100;
    /// Top to bottom.
    std::vector<ScaleMark> scale;
    std::vector<ChartLine> lines;
    /// Why none of them holds a point; empty where one does.
    QString emptyText;
    /// When the present climb began; none also where that was before the axis begins.
    std::optional<UnixSeconds> ramp;
    /// Only the first chart says what it is.
    QString rampText;
    QString spokenName;

    bool operator==(const ChartModel&) const = default;
};

struct TimelineModel {
    /// Set while there is too little to draw, in place of the charts.
    QString notice;
    /// The title above that.
    QString noticeTitle;
    std::optional<TimeSpan> span;
    std::vector<ChartModel> charts;
    std::vector<TimeMark> times;

    bool operator==(const TimelineModel&) const = default;
};

/// A moment that was picked.
struct Scrub {
    UnixSeconds time = 0;
    /// It stays whatever the pointer does.
    bool isPinned = false;

    bool operator==(const Scrub&) const = default;
};

/// The part of a chart that follows the pointer, or the present without one.
struct ChartReading {
    QString value;
    QString spokenValue;
    /// Per line, where it stands at the scrub; none where it was not measured then.
    std::vector<std::optional<double>> rings;
    bool isPinned = false;

    bool operator==(const ChartReading&) const = default;
};

/// Length of history, in seconds, that ends the gathering.
inline constexpr double gatheringSeconds = 60;

/// A chart whose sensor was never seen is left out. The first one says what can be done with the charts, which is
/// another thing while a moment is pinned.
TimelineModel timelineModel(const SensorHub& hub, bool isPinned = false);

/// For each chart of the model in turn: what it says of this snapshot. `scrub` is the moment under the rule, none for
/// the present.
std::vector<ChartReading> chartReadings(const TimelineModel& model, const Snapshot& snapshot,
                                        const std::optional<Scrub>& scrub, const Format& format);

/// The upper end of the power scale: a fifth above the peak, in steps of 10 watts, 20 at least.
double powerCeiling(const std::vector<TimePoint>& power);

} // namespace vantoro
