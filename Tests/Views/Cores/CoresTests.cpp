// The cores pane: columns, figures and spreads, and when the single sensors are read.
#include "Views/Cores/CoresModel.h"
#include "Views/Cores/CoresView.h"

#include "Design/Panel.h"
#include "Views/Cores/CoreTiles.h"
#include "Views/Stage.h"

namespace vantoro {
namespace {

using testing::Stage;

const Format& plainFormat() {
    static const DefaultFormatContext context;
    static const Format format(context);
    return format;
}

std::vector<double> sensorsBetween(double coolest, double hottest, int count) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i)
        values.push_back(coolest + (hottest - coolest) * i / (count - 1));
    return values;
}

TEST(CoresModelTests, TilesStandInColumnsThatDivideTheCount) {
    const std::vector<std::pair<int, int>> wide{{0, 8},  {1, 1},  {7, 7},  {8, 8},   {10, 10}, {11, 8},
                                                {12, 6}, {14, 7}, {16, 8}, {20, 10}, {24, 8},  {36, 9}};
    for (const auto& [cores, columns] : wide)
        EXPECT_EQ(columnCount(cores), columns) << cores;
    // 740 points hold six tiles of 112.
    const std::vector<std::pair<int, int>> narrow{{0, 1}, {4, 4}, {8, 4}, {10, 5}, {11, 6}, {12, 6}, {16, 4}};
    for (const auto& [cores, columns] : narrow)
        EXPECT_EQ(narrowColumnCount(cores, 740), columns) << cores;
}

TEST(CoresModelTests, ATileSaysLoadAndFrequencyAndWhatIsNotKnown) {
    const Core core{.index = 7, .isPerformance = true, .busy = 0.5599, .megahertz = 2030, .clusterIndex = 1};
    const CoreFigures known = coreFigures(core, 4060);
    EXPECT_EQ(known.label, "P1");
    EXPECT_EQ(known.busyText, "55%") << "toward zero";
    EXPECT_TRUE(known.isHighlighted);
    EXPECT_DOUBLE_EQ(*known.frequencyFill, 0.5);
    EXPECT_EQ(known.spokenValue, "55 percent busy at 2.03 GHz");
    const CoreFigures unmeasured = coreFigures({.busy = 0.55}, 4060);
    EXPECT_EQ(unmeasured.frequencyText, "—");
    EXPECT_DOUBLE_EQ(*unmeasured.frequencyFill, 0.001);
    EXPECT_FALSE(unmeasured.isHighlighted);
    EXPECT_FALSE(coreFigures(core, 0).frequencyFill.has_value());

    const CoreCluster cluster = clusterSummary({core, {.busy = 0.25}}, 999);
    EXPECT_EQ(cluster.busyText, "40% busy");
    EXPECT_EQ(cluster.ceilingText, "· up to 999 MHz");
    EXPECT_EQ(clusterSummary({}, 0).busyText, "0% busy");
    EXPECT_EQ(clusterSummary({}, 0).ceilingText, "");
}

TEST(CoresModelTests, ASpreadIsFourFiguresAndATickPerSensor) {
    const Spread spread = spreadOf({19, 60, 70, 91}, false, "caption", plainFormat());
    EXPECT_EQ(spread.subtitle, "4 sensors");
    EXPECT_EQ(spread.spokenValue, "coolest 19°C, median 70°C, average 60°C, hottest 91°C");
    ASSERT_EQ(spread.ticks.size(), 4U);
    EXPECT_EQ(spread.ticks[0], (RulerTick{.position = 0, .heatStop = 0, .isExtreme = true}));
    EXPECT_EQ(spread.ticks[1].heatStop, 1);
    EXPECT_EQ(spread.ticks[3].heatStop, 4);
    EXPECT_TRUE(spread.ticks[3].isExtreme);
    ASSERT_EQ(spread.marks.size(), 4U);
    EXPECT_EQ(spread.marks[1].text, "65°");
    EXPECT_DOUBLE_EQ(spread.marks[1].position, 0.5);
    EXPECT_EQ(spreadOf({60, 70}, false, "", plainFormat()).figures[1].value, "70°C");
    EXPECT_EQ(spreadOf({60}, false, "", plainFormat()).subtitle, "1 sensor");
    EXPECT_EQ(spreadOf({}, false, "", plainFormat()).placeholder, "Measuring…");
    EXPECT_EQ(spreadOf({}, true, "", plainFormat()).placeholder, "None of its sensors measures at the moment.");
}

TEST(CoresModelTests, WhatIsNotThereIsSaidAndNothingIsMeasuredForEver) {
    Stage few;
    few.sensors->dieSensors = {50, 52};
    few.sensors->dieCount = 2;
    few.sensors->hasGPU = false;
    few.makeCores();
    few.hub.setCoresPaneVisible(true);
    few.hub.start();
    CoresModel model = coresModel(few.hub);
    EXPECT_EQ(model.clusters[0].busyText, "Measuring…") << "the first look tells no load";
    EXPECT_EQ(model.clusters[0].cores[0].busyText, "—");
    EXPECT_EQ(model.die->subtitle, "2 sensors");
    EXPECT_FALSE(model.gpu);
    few.hub.tick();
    EXPECT_EQ(coresModel(few.hub).clusters[0].cores[0].busyText, "93%");
    few.sensors->dieCount = 0;
    model = coresModel(few.hub);
    EXPECT_FALSE(model.die);
    EXPECT_EQ(model.sensorsNote, "No temperatures of the die are reported here.");
}

TEST(CoresModelTests, AReplayShowsWhatItsRecordingHolds) {
    Stage stage;
    stage.sensors->openable = false;
    stage.hub.beginReplay("Another", RecordedProcessors{.performance = 1, .efficiency = 4});
    stage.hub.accept({.timestamp = 1});
    CoresModel model = coresModel(stage.hub);
    EXPECT_EQ(model.subtitle, "1 performance · 4 efficiency");
    stage.hub.beginReplay("Another", RecordedProcessors{.performance = 2});
    EXPECT_EQ(coresModel(stage.hub).subtitle, "2 cores") << "all alike";
    EXPECT_EQ(coreCounts({{.isPerformance = true}, {.isPerformance = true}}), "2 cores");
    EXPECT_EQ(model.coresNote, "This recording does not hold what each core did.");
    EXPECT_EQ(model.sensorsNote, "This recording does not hold the die's single sensors.");
    EXPECT_FALSE(model.die || model.gpu);
    Snapshot snapshot{.timestamp = 2};
    snapshot.cores = {{{true, 62, 3000}}};
    snapshot.dieSensors = {{50, 60}};
    stage.hub.accept(snapshot);
    model = coresModel(stage.hub);
    EXPECT_EQ(model.coresNote + model.sensorsNote, "");
    EXPECT_EQ(model.clusters[0].cores[0].spokenValue, "62 percent busy at 3.00 GHz");
    EXPECT_EQ(model.clusters[0].ceilingText, "") << "nobody recorded it";
    EXPECT_EQ(model.die->subtitle, "2 sensors");
    EXPECT_FALSE(model.gpu);
}

TEST(CoresViewTests, ReadsSingleSensorsOnlyWhileItIsSeen) {
    Stage stage;
    stage.makeCores();
    stage.sensors->dieSensors = sensorsBetween(61, 88, 38);
    stage.sensors->gpuSensors = sensorsBetween(57, 66, 14);
    stage.play("design-fans.jsonl.gz");
    EXPECT_TRUE(stage.hub.dieSensors().empty());
    CoresView view(stage.context);
    stage.picture(view, {1040, 778});
    EXPECT_EQ(stage.hub.dieSensors().size(), 38U) << "at once, not with the next tick";
    view.hide();
    stage.sensors->dieSensors = sensorsBetween(61, 90, 40);
    stage.hub.publish(true);
    EXPECT_EQ(stage.hub.dieSensors().size(), 38U) << "what nobody looks at is not read";
}

TEST(CoresViewTests, LeavesPanelsOutOnlyWhereThereAreNoSuchSensors) {
    Stage stage;
    stage.play("calm.jsonl");
    CoresView view(stage.context);
    const auto shownPanels = [&] {
        stage.picture(view, {1040, 778});
        int shown = 0;
        for (const Panel* panel : view.findChildren<Panel*>())
            shown += panel->isVisible() ? 1 : 0;
        return shown;
    };
    EXPECT_EQ(shownPanels(), 3);
    stage.sensors->hasGPU = false;
    stage.hub.publish(true);
    EXPECT_EQ(shownPanels(), 2);
    stage.sensors->dieCount = 0;
    stage.hub.publish(true);
    EXPECT_EQ(shownPanels(), 1);
}

TEST(CoresViewTests, MetersGlideOnTheSameTilesAndStepWhenSampledFast) {
    Stage stage;
    stage.makeCores();
    stage.play("calm.jsonl");
    CoresView view(stage.context);
    stage.picture(view, {1040, 778});
    EXPECT_FALSE(stage.clock.isBeating());
    const auto tiles = view.findChildren<QWidget*>();
    stage.sensors->coreList[0].busy = 0.1;
    stage.hub.publish(true);
    EXPECT_TRUE(stage.clock.isBeating());
    EXPECT_EQ(view.findChildren<QWidget*>(), tiles);
    view.hide();
    stage.clock.beat();
    EXPECT_FALSE(stage.clock.isBeating()) << "nothing moves unseen";
    view.show();
    stage.settings.store(Setting::sampleInterval, 0.5);
    stage.sensors->coreList[0].busy = 0.9;
    stage.hub.publish(true);
    EXPECT_FALSE(stage.clock.isBeating());
}

} // namespace
} // namespace vantoro
