// What the row of facts shows: the verdict's figures, each with its course over the last quarter of an hour.
#pragma once

#include "Design/Gauges/GaugeFigures.h"
#include "Model/Live/SensorHub.h"

#include <QString>
#include <vector>

namespace vantoro {

struct FactModel {
    /// An icon's name.
    QString symbol;
    QString title;
    QString value;
    QString detail;
    /// The figure below: a course, or the thermal pressure.
    std::optional<SparklineLine> line;
    std::optional<ThermalPressure> pressure;
    /// The value is a dash.
    bool isMissing = false;

    bool operator==(const FactModel&) const = default;
};

struct FactsModel {
    QString title;
    QString caption;
    std::vector<FactModel> facts;

    bool operator==(const FactsModel&) const = default;
};

FactsModel factsModel(const SensorHub& hub);

/// One figure of each snapshot of the last 15 minutes, thinned as the charts are: a run of 240 snapshots or more to
/// about 120 points.
template <class Figure>
std::vector<TimePoint> thinnedSeries(const History& history, Figure figure) {
    constexpr double seconds = 900;
    constexpr std::size_t mostKept = 239;
    constexpr std::size_t points = 120;
    const SnapshotRun run = history.recent(seconds);
    const std::size_t step = run.size() > mostKept ? run.size() / points : 1;
    std::vector<TimePoint> series;
    for (std::size_t i = 0; i < run.size(); i += step)
        series.push_back({run[i].timestamp, figure(run[i])});
    return series;
}

} // namespace vantoro
