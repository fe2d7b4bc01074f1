#include "Model/History/ChartSeries.h"

#include <algorithm>
#include <cstddef>

namespace vantoro {

namespace {

constexpr double shownSeconds = 900;
constexpr std::size_t longestUnthinned = 239;
constexpr std::size_t wantedPoints = 120;

} // namespace

ChartSeries chartSeries(const History& history) {
    const SnapshotRun run = history.recent(shownSeconds);
    const std::size_t step = run.size() > longestUnthinned ? run.size() / wantedPoints : 1;
    ChartSeries series;
    for (auto* points : {&series.fan, &series.cpu, &series.temp, &series.chip, &series.power})
        points->reserve(run.size() / step + 1);
    for (std::size_t i = 0; i < run.size(); i += step) {
        const Snapshot& snapshot = run[i];
        const UnixSeconds time = snapshot.timestamp;
        series.fan.push_back({time, snapshot.fanLoad() * 100});
        series.cpu.push_back({time, std::clamp(100 - snapshot.cpu.idlePercent, 0.0, 100.0)});
        series.temp.push_back({time, snapshot.temps.soc});
        series.chip.push_back({time, snapshot.temps.socMean});
        series.power.push_back({time, snapshot.power.systemWatts});
    }
    return series;
}

} // namespace vantoro
