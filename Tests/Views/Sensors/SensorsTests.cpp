// The sensors pane: every figure with its source and range, what is missing, and the lists of single sensors.
#include "Views/Sensors/SensorsModel.h"
#include "Views/Sensors/SensorsView.h"

#include "Design/Controls/Button.h"
#include "Design/TextLabel.h"
#include "Views/Sensors/SensorRow.h"
#include "Views/Stage.h"

#include <algorithm>
#include <cstdlib>
#include <QClipboard>

namespace vantoro {
namespace {

using testing::Stage;

Snapshot warm(double seconds) {
    Snapshot snapshot{.timestamp = 1772356000 + seconds};
    snapshot.fans = {{.index = 0, .rpm = 2317 + 10 * seconds, .minRPM = 2317, .maxRPM = 6550, .targetRPM = 4920},
                     {.index = 1, .rpm = 0, .minRPM = 0, .maxRPM = 1, .targetRPM = 0}};
    snapshot.temps = {.soc = 61 + seconds, .socMean = 55, .gpu = 0, .battery = 36, .enclosure = 0};
    snapshot.power = {.systemWatts = 20 + seconds, .adapterWatts = 0, .batteryWatts = -4.2, .gpuWatts = 0.04};
    snapshot.cpu = {.userPercent = 52, .systemPercent = 6, .idlePercent = 42, .loadAverage = 7.84};
    constexpr std::uint64_t gigabyte = 1ULL << 30;
    snapshot.memory = {.usedBytes = 27 * gigabyte,
                       .totalBytes = 36 * gigabyte,
                       .wiredBytes = 4 * gigabyte,
                       .compressedBytes = 7 * gigabyte,
                       .swapOutEvents = 12345};
    return snapshot;
}

SensorsModel modelOf(Stage& stage, const UnfoldedRows& unfolded = {}) {
    return sensorsModel(stage.hub, SourceNames(), unfolded);
}

TEST(SensorsModelTests, EveryFigureHasItsSourceItsRangeAndADashWhereItIsMissing) {
    Stage stage;
    for (const double second : {0.0, 20.0, 10.0})
        stage.hub.accept(warm(second));
    const SensorsModel model = modelOf(stage);
    EXPECT_EQ(model.machineName, "MacBook · Apple M3 Pro");
    EXPECT_EQ(model.summary, "2 fans · 148 sensors");
    EXPECT_EQ(model.dataSources, "SMC · IOReport · syscalls");
    EXPECT_EQ(model.complaint, "");

    struct Row {
        const SensorRowModel& row;
        const char* value;
        const char* range;
        bool isMissing;
    };
    const Row rows[] = {{model.temperatures[0], "71°C", "61–81°C", false},
                        {model.temperatures[1], "55°C", "", false},
                        {model.temperatures[2], "—", "", true},
                        {model.temperatures[4], "—", "", true},
                        {model.power[0], "30.0 W", "20.0–40.0 W", false},
                        {model.power[1], "—", "", true},
                        {model.power[2], "-4.2 W", "", false},
                        {model.power[3], "0.0 W", "", false}};
    for (const Row& expected : rows) {
        EXPECT_EQ(expected.row.value, expected.value) << expected.row.label.toStdString();
        EXPECT_EQ(expected.row.range, expected.range) << expected.row.label.toStdString();
        EXPECT_EQ(expected.row.isMissing, expected.isMissing) << expected.row.label.toStdString();
        EXPECT_EQ(expected.row.line.points.empty(), expected.isMissing) << expected.row.label.toStdString();
    }
    EXPECT_EQ(model.temperatures[0].spokenValue, "71°C, hottest die sensor, lowest and highest since launch: 61–81°C");
    EXPECT_EQ(model.temperatures[3].toolTip, "mean of the battery sensors");

    ASSERT_EQ(model.fans->size(), 2U);
    const FanRowModel& left = model.fans->front();
    EXPECT_EQ(left.speed, "2,420");
    EXPECT_EQ(left.range, "2,320–2,520") << "in the steps of the speed that stands beside it";
    EXPECT_EQ(left.targetText, "target 4,920");
    EXPECT_EQ(left.heatStop, 0);
    EXPECT_FALSE(model.fans->back().position.has_value()) << "no limits, no position";
    EXPECT_EQ(model.fans->back().ceilingText, "ceiling —");
    EXPECT_EQ(model.fans->back().speed, "0") << "a fan that stands still is read all the same";

    EXPECT_EQ(model.processor.figure, "58% busy");
    EXPECT_EQ(model.processor.spokenValue, "Apps 52%, System 6%, Idle 42%, Load average 7.8");
    EXPECT_EQ(model.memory.spokenValue, "Wired 4.0 GB, Compressed 7.0 GB, Other in use 16.0 GB, Unused 9.0 GB, "
                                        "Total 36.0 GB, Pages swapped out 12,345");
}

TEST(SensorsModelTests, BeforeTheFirstFigureNothingIsZero) {
    Stage stage;
    const SensorsModel model = modelOf(stage);
    EXPECT_EQ(model.complaint, "The sensors could not be read.");
    ASSERT_EQ(model.fans->size(), 1U);
    EXPECT_EQ(model.fans->front().speed, "—");
    EXPECT_EQ(model.processor.spokenValue, "Apps —, System —, Idle —, Load average —");
    EXPECT_EQ(model.memory.entries.back().value, "—");
    Snapshot passive{.timestamp = 1, .cooling = Cooling::passive};
    stage.hub.accept(passive);
    EXPECT_FALSE(modelOf(stage).fans.has_value());
}

// "Wired 0 B" was said of machines that do not tell it.
TEST(SensorsModelTests, MemoryThatIsNotToldOfHasNoPartInTheLegend) {
    constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30;
    Snapshot bare{.timestamp = 1, .memory = {.usedBytes = 2 * gigabyte, .totalBytes = 8 * gigabyte}};
    const auto saidOn = [&](SystemKind system) {
        Stage stage;
        stage.hub.beginReplay("a machine", std::nullopt, system);
        stage.hub.accept(bare);
        return modelOf(stage).memory.spokenValue;
    };
    EXPECT_EQ(saidOn(SystemKind::gnuLinux), "Other in use 2.0 GB, Unused 6.0 GB, Total 8.0 GB, Pages swapped out 0");
    EXPECT_TRUE(saidOn(SystemKind::macos).startsWith("Wired 0 B, Compressed 0 B, "));
    bare.memory.wiredBytes = gigabyte;
    EXPECT_TRUE(saidOn(SystemKind::gnuLinux).startsWith("Wired 1.0 GB, Other in use 1.0 GB, "));
}

TEST(SensorsModelTests, AMachineThatReportsNothingIsToldSo) {
    Stage stage;
    stage.sensors->dieCount = 0;
    stage.sensors->hasGPU = false;
    stage.hub.start();
    SensorsModel model = modelOf(stage);
    EXPECT_EQ(model.complaint, "This computer reports no temperatures, fans or power.");
    EXPECT_FALSE(model.fans.has_value()) << "no empty gauge";
    for (const SensorRowModel& row : model.temperatures)
        EXPECT_FALSE(row.isExpandable) << row.label.toStdString() << " would unfold into nothing, for ever";
    stage.hub.accept(warm(0));
    model = modelOf(stage);
    EXPECT_EQ(model.complaint, "");
    EXPECT_TRUE(model.fans.has_value());
}

TEST(SensorsModelTests, ThePlainTextHoldsAllThatIsShown) {
    Stage stage;
    stage.sensors->dieSensors = {61, 62, 63, 64, 65, 66, 67, 68.4};
    stage.hub.setSensorListVisible(true);
    for (const double second : {0.0, 20.0})
        stage.hub.accept(warm(second));
    const QString text = modelOf(stage, {true}).plainText();
    EXPECT_TRUE(text.startsWith("MacBook · Apple M3 Pro\n2 fans · 148 sensors\nSMC · IOReport · syscalls\n\nFans\n"))
        << text.toStdString();
    for (const char* line :
         {"\n  Left   2,520 rpm  2,320–2,520  floor 2,317  target 4,920  ceiling 6,550\n",
          "\n  Hottest core      81°C     61–81°C  hottest die sensor\n    8 sensors, coolest to hottest: 61° 62° 63°",
          "\n  GPU               —                 hottest graphics sensor\n", "\n  Thermal pressure  Nominal\n",
          "\nProcessor · 58% busy\n  Apps          52%\n"})
        EXPECT_TRUE(text.contains(line)) << line << "\nin\n" << text.toStdString();
}

TEST(SensorsViewTests, UnfoldsARowIntoItsSensorsAndReadsThemOnlyThen) {
    Stage stage(Theme::Appearance::light);
    stage.play("design-fans.jsonl.gz");
    for (int i = 0; i < 38; ++i)
        stage.sensors->dieSensors.push_back(61 + 27.0 * i / 37);
    SensorsView view(stage.context);
    const QImage folded = stage.picture(view, {1040, 778});
    EXPECT_TRUE(stage.hub.dieSensors().empty());
    const char* const folder = std::getenv("VANTORO_PICTURES");
    if (folder != nullptr) {
        folded.save(QString("%1/sensors.png").arg(folder));
    }
    SensorRow* const hottest = view.findChildren<SensorRow*>().front();
    const int height = hottest->height();
    hottest->setFocus(Qt::TabFocusReason);
    QTest::keyClick(hottest, Qt::Key_Space);
    EXPECT_EQ(stage.hub.dieSensors().size(), 38U);
    const QImage unfolded = stage.picture(view, {1040, 778});
    EXPECT_GT(hottest->height(), height);
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(hottest);
    EXPECT_TRUE(spoken->state().expanded);
    if (folder != nullptr) {
        unfolded.save(QString("%1/sensors-unfolded.png").arg(folder));
        stage.picture(view, {820, 1300}).save(QString("%1/sensors-narrow.png").arg(folder));
        stage.theme.setTextScale(1.5);
        stage.picture(view, {1040, 1200}).save(QString("%1/sensors-large.png").arg(folder));
    }
    view.hide();
    stage.sensors->dieSensors.push_back(90);
    stage.hub.publish(true);
    EXPECT_EQ(stage.hub.dieSensors().size(), 38U) << "what nobody looks at is not read";
    view.show();
    EXPECT_EQ(stage.hub.dieSensors().size(), 39U);
    QTest::mouseClick(hottest, Qt::LeftButton);
    stage.sensors->dieSensors.push_back(91);
    stage.hub.publish(true);
    EXPECT_EQ(stage.hub.dieSensors().size(), 39U) << "folded again";
}

TEST(SensorsViewTests, SaysSoWhereNoSensorCanBeRead) {
    Stage stage;
    SensorsView view(stage.context);
    const QImage picture = stage.picture(view, {1040, 778});
    if (const char* const folder = std::getenv("VANTORO_PICTURES")) {
        picture.save(QString("%1/sensors-none.png").arg(folder));
    }
    const auto labels = view.findChildren<TextLabel*>();
    ASSERT_EQ(labels.size(), 1);
    EXPECT_TRUE(labels.front()->isVisible());
    stage.hub.accept(warm(0));
    EXPECT_FALSE(labels.front()->isVisible());
}

TEST(SensorsViewTests, CopiesTheTableAndComesToRest) {
    Stage stage;
    stage.play("design-fanless.jsonl.gz");
    SensorsView view(stage.context);
    const QImage picture = stage.picture(view, {1040, 778});
    if (const char* const folder = std::getenv("VANTORO_PICTURES")) {
        picture.save(QString("%1/sensors-fanless.png").arg(folder));
    }
    view.copyAll();
    stage.hub.publish(true);
    const auto buttons = view.findChildren<Button*>();
    EXPECT_TRUE(std::ranges::any_of(buttons, [](const Button* button) { return button->text() == "Copied"; }))
        << "a refresh leaves it";
    const QString text = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(text.contains("\nTemperatures\n"));
    EXPECT_FALSE(text.contains("\nFans\n"));
    stage.hub.accept(warm(1e6));
    view.hide();
    stage.clock.beat();
    EXPECT_FALSE(stage.clock.isBeating());
}

} // namespace
} // namespace vantoro
