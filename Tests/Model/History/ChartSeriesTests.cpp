#include "Model/History/History.h"

#include "Support/HistoryBuilder.h"

namespace vantoro {

using namespace vantoro::testing;

namespace {

History historyOf(int count, double interval = 1) {
    History history;
    for (int i = 0; i < count; ++i)
        history.append({.timestamp = 1000 + i * interval, .power = {.systemWatts = static_cast<double>(i)}});
    return history;
}

} // namespace

TEST(ChartSeries, ThinsLongRunsToAbout120PointsOfTheLastQuarterOfAnHour) {
    using Case = std::tuple<int, std::size_t, double>;
    for (const auto& [snapshots, points, last] :
         {Case{1, 1, 0}, Case{239, 239, 238}, Case{240, 120, 238}, Case{359, 180, 358}, Case{361, 121, 360}}) {
        const ChartSeries series = chartSeries(historyOf(snapshots));
        for (const auto* one : {&series.fan, &series.cpu, &series.temp, &series.chip, &series.power})
            EXPECT_EQ(one->size(), points) << snapshots;
        EXPECT_EQ(series.power.back().value, last) << snapshots;
    }
    EXPECT_EQ(chartSeries(historyOf(200, 10)).power.size(), 91U);
    EXPECT_EQ(chartSeries(historyOf(200, 10)).power.front(), (TimePoint{2090, 109}));
    EXPECT_EQ(chartSeries(History()), ChartSeries());
}

TEST(ChartSeries, TakesEachFigureFromItsOwnReading) {
    Snapshot snapshot = at(5, fanMachine(0.5));
    snapshot.temps = {.soc = 61, .socMean = 55};
    snapshot.power.systemWatts = 12.5;
    snapshot.cpu.idlePercent = -3;
    History history;
    history.append(snapshot);
    EXPECT_EQ(
        chartSeries(history),
        (ChartSeries{.fan = {{5, 50}}, .cpu = {{5, 100}}, .temp = {{5, 61}}, .chip = {{5, 55}}, .power = {{5, 12.5}}}));
}

TEST(Suspects, RankByProcessorUseAndLeaveOutTheIdle) {
    History history;
    // Busy for an instant, long ago: not a suspect now.
    history.append(at(100, fanMachine(0, {process(1, "past", 400)})));
    for (const double time : {130.0, 140.0, 150.0})
        history.append(at(time, fanMachine(0, {process(2, "idle", 0.59), process(3, "hardly", 0.6),
                                               process(4, "half", 12.5), process(5, "busy", 30)})));
    std::string ranked;
    for (const ProcessGroup& group : rankedSuspects(history))
        ranked += group.displayName + " " + std::to_string(static_cast<int>(group.stressScore)) + " ";
    EXPECT_EQ(ranked, "busy 30 half 13 hardly 1 ");
    EXPECT_TRUE(rankedSuspects(History()).empty());
}

} // namespace vantoro
