#include "Model/ChartSeries.h"
#include "Model/Suspects.h"

#include <gtest/gtest.h>
#include <string>

namespace vantoro {
namespace {

History historyOf(int count, double interval = 1) {
    History history;
    for (int i = 0; i < count; ++i) {
        Snapshot snapshot;
        snapshot.timestamp = 1000 + i * interval;
        snapshot.power.systemWatts = i;
        history.append(std::move(snapshot));
    }
    return history;
}

TEST(ChartSeries, ThinsLongRunsToAbout120Points) {
    struct Case {
        int snapshots;
        std::size_t points;
        double step;
    };
    for (const auto& [snapshots, points, step] :
         {Case{1, 1, 1}, Case{239, 239, 1}, Case{240, 120, 2}, Case{359, 180, 2}, Case{361, 121, 3}}) {
        const ChartSeries series = chartSeries(historyOf(snapshots));
        ASSERT_EQ(series.power.size(), points) << snapshots;
        EXPECT_EQ(series.power.back().value, (static_cast<double>(points) - 1) * step) << snapshots;
        for (const auto* other : {&series.fan, &series.cpu, &series.temp, &series.chip})
            EXPECT_EQ(other->size(), points) << snapshots;
    }
    EXPECT_EQ(chartSeries(History()), ChartSeries());
}

TEST(ChartSeries, ShowsTheLastQuarterOfAnHour) {
    const ChartSeries series = chartSeries(historyOf(200, 10));
    ASSERT_EQ(series.power.size(), 91U);
    EXPECT_EQ(series.power.front(), (TimePoint{2090, 109}));
}

TEST(ChartSeries, TakesEachFigureFromItsOwnReading) {
    History history;
    Snapshot snapshot;
    snapshot.timestamp = 5;
    snapshot.fans = {{.index = 0, .rpm = 1500, .minRPM = 1000, .maxRPM = 2000}};
    snapshot.temps = {.soc = 61, .socMean = 55};
    snapshot.power.systemWatts = 12.5;
    snapshot.cpu.idlePercent = -3;
    history.append(snapshot);
    const ChartSeries series = chartSeries(history);
    EXPECT_EQ(series.fan.front(), (TimePoint{5, 50}));
    EXPECT_EQ(series.cpu.front(), (TimePoint{5, 100}));
    EXPECT_EQ(series.temp.front(), (TimePoint{5, 61}));
    EXPECT_EQ(series.chip.front(), (TimePoint{5, 55}));
    EXPECT_EQ(series.power.front(), (TimePoint{5, 12.5}));
}

TEST(Suspects, RankByProcessorUseAndLeaveOutTheIdle) {
    History history;
    Snapshot snapshot;
    int pid = 0;
    const auto add = [&](std::string name, double percent) {
        snapshot.processes.push_back(
            {.identity = ProcessIdentity{.pid = ++pid, .displayName = std::move(name)}, .cpuPercent = percent});
    };
    // Busy for an instant, long ago: not a suspect now.
    add("past", 400);
    snapshot.timestamp = 100;
    history.append(snapshot);
    snapshot.processes.clear();
    add("idle", 0.59);
    add("hardly", 0.6);
    add("half", 12.5);
    add("busy", 30);
    for (const double time : {130.0, 140.0, 150.0}) {
        snapshot.timestamp = time;
        history.append(snapshot);
    }
    const std::vector<ProcessGroup> suspects = rankedSuspects(history);
    ASSERT_EQ(suspects.size(), 3U);
    EXPECT_EQ(suspects[0].displayName, "busy");
    EXPECT_EQ(suspects[0].stressScore, 30);
    EXPECT_EQ(suspects[1].stressScore, 13);
    EXPECT_EQ(suspects[2].displayName, "hardly");
    EXPECT_EQ(suspects[2].stressScore, 1);
    EXPECT_TRUE(rankedSuspects(History()).empty());
}

} // namespace
} // namespace vantoro
