// The Timeline pane: what its charts draw, and how a moment is picked and reconstructed.
#include "Views/Timeline/TimelineView.h"

#include "Views/Shared/Words.h"
#include "Views/Stage.h"

#include <random>

namespace vantoro {
namespace {

using testing::Stage;

constexpr UnixSeconds start = 1772374980;

/// Goes on every two seconds, warm, with one process, until there are so many.
void feed(Stage& stage, int count, Cooling cooling = Cooling::fans) {
    for (auto i = static_cast<int>(stage.hub.history().snapshots().size()); i < count; ++i) {
        Snapshot snapshot{.timestamp = start + 2 * i, .cooling = cooling, .chipHeat = 70};
        snapshot.temps = {.soc = 86, .socMean = 73};
        snapshot.power.systemWatts = 44;
        snapshot.cpu.idlePercent = 35;
        if (cooling == Cooling::fans)
            snapshot.fans = {{0, 4730.0 + i, 2317, 6550, 4700}};
        snapshot.processes = {{ProcessIdentity{.pid = 7, .rawName = "clang", .displayName = "Xcode"}, 94}};
        stage.hub.accept(std::move(snapshot));
    }
}

void hover(TimelineChart& chart, double x) {
    const QPointF position(x, 60);
    QMouseEvent move(QEvent::MouseMove, position, chart.mapToGlobal(position), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&chart, &move);
}

void leave(TimelineChart& chart) {
    QEvent event(QEvent::Leave);
    QCoreApplication::sendEvent(&chart, &event);
}

void click(TimelineChart& chart, double x) {
    QTest::mouseClick(&chart, Qt::LeftButton, {}, QPoint(static_cast<int>(x), 60));
}

QString spokenValue(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Value);
}

QString spokenName(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name);
}

TEST(TimelineModelTests, DrawsOnlyWhatWasMeasuredWithRoomAboveThePeak) {
    const auto powered = [](double watts) { return powerCeiling({{0, 3}, {1, watts}, {2, 0}}); };
    EXPECT_EQ(powerCeiling({}), 20);
    EXPECT_EQ(powered(12), 20);
    EXPECT_EQ(powered(30), 40);
    EXPECT_EQ(powered(50), 60);
    const std::vector<TimePoint> gappy{{0, 0}, {1, 40}, {2, 0}, {3, -1}, {5, 80}};
    EXPECT_EQ(measured(gappy), (std::vector<TimePoint>{{1, 40}, {5, 80}}));
    EXPECT_EQ(valueAt(measured(gappy), 2), 50);
    EXPECT_FALSE(valueAt(measured(gappy), 0.5) || valueAt(measured(gappy), 5.5) || valueAt({}, 1));
    EXPECT_EQ(span(gappy), (TimeSpan{0, 5}));
    EXPECT_FALSE(span({}) || span({{4, 1}}) || span({{4, 1}, {4, 2}}));
}

TEST(TimelineModelTests, FindsTheNearestSnapshotAndOfTwoTheEarlier) {
    std::mt19937 engine(7);
    std::uniform_int_distribution<int> few(0, 5);
    for (int round = 0; round < 200; ++round) {
        History history;
        double time = 100;
        for (int i = few(engine); i > 0; --i) {
            history.append({.timestamp = time, .chipHeat = double(i)});
            time += few(engine) / 2;
        }
        for (double scrub = 98; scrub < 112; scrub += 0.5) {
            const Snapshot* nearest = nullptr;
            for (const Snapshot& snapshot : history.snapshots())
                if (nearest == nullptr || std::abs(snapshot.timestamp - scrub) < std::abs(nearest->timestamp - scrub))
                    nearest = &snapshot;
            ASSERT_EQ(snapshotNearest(history, scrub), nearest) << scrub;
        }
        EXPECT_EQ(snapshotNearest(history, std::nullopt), nullptr);
    }
}

TEST(LinePlotTests, CutsALineWhereItCrossesABorder) {
    const auto stretches = bandStretches({{0, 40}, {4, 80}, {5, 50}, {6, 30}}, {50, 65});
    const std::vector<BandStretch> expected{{0, {{0, 40}, {1, 50}}},
                                            {1, {{1, 50}, {2.5, 65}}},
                                            {2, {{2.5, 65}, {4, 80}, {4.5, 65}}},
                                            {1, {{4.5, 65}, {5, 50}, {5, 50}}},
                                            {0, {{5, 50}, {6, 30}}}};
    EXPECT_EQ(stretches, expected);
    EXPECT_EQ(bandStretches({{0, 40}, {4, 80}}, {}).size(), 1U);
    EXPECT_TRUE(bandStretches({}, {50}).empty());
}

TEST(TimelineModelTests, GathersAMinuteThenStacksTheChartsOfTheMachine) {
    using Case = std::tuple<Cooling, std::vector<int>, QString, QString>;
    for (const auto& [cooling, heights, first, ramp] :
         {Case{Cooling::fans, {190, 190, 162, 162}, "Fans", "fans began climbing "},
          Case{Cooling::passive, {300, 200, 200}, "Heat", "chip began heating up "}}) {
        Stage stage;
        feed(stage, 29, cooling);
        EXPECT_TRUE(timelineModel(stage.hub).notice.startsWith("Gathering history."));
        EXPECT_TRUE(timelineModel(stage.hub).charts.empty());
        feed(stage, 31, cooling);
        const TimelineModel model = timelineModel(stage.hub);
        EXPECT_TRUE(model.notice.isEmpty());
        ASSERT_EQ(model.charts.size(), heights.size());
        for (std::size_t i = 0; i < heights.size(); ++i)
            EXPECT_EQ(model.charts[i].height, heights[i]);
        EXPECT_EQ(model.charts.front().title, first);
        EXPECT_EQ(model.charts.back().scale.front().text, "60 W");
        EXPECT_EQ(model.charts[1].rampText, "");
        EXPECT_EQ(model.charts.front().rampText, ramp + toQString(stage.hub.format().timeOfDay(start)));
        EXPECT_EQ(model.times.back().text, "now");
    }
}

TEST(TimelineModelTests, AChartWithoutASensorIsLeftOutAndAnEmptyOneSaysWhy) {
    const auto expect = [](const char* name, const Snapshot& told, const QStringList& titles, const QString& caption,
                           const QString& emptyText, const QString& value) {
        SCOPED_TRACE(name);
        Stage stage;
        for (int i = 0; i < 40; ++i) {
            Snapshot snapshot = told;
            snapshot.timestamp = start + 2 * i;
            stage.hub.accept(std::move(snapshot));
        }
        const TimelineModel model = timelineModel(stage.hub);
        QStringList shown;
        for (const ChartModel& chart : model.charts)
            shown.append(chart.title);
        EXPECT_EQ(shown, titles);
        EXPECT_EQ(model.charts[0].caption, caption);
        EXPECT_EQ(model.charts[0].emptyText, emptyText);
        EXPECT_EQ(chartReadings(model, stage.hub.snapshot(), {}, stage.hub.format())[0].value, value);
        EXPECT_TRUE(timelineModel(stage.hub, true).charts[0].caption.endsWith("arrow keys step · Esc lets go"));
    };
    const FanReading still{.index = 0, .rpm = 0, .minRPM = 1000, .maxRPM = 3000};
    const Snapshot warm{.temps = {.soc = 50, .socMean = 45}, .cpu = {.idlePercent = 40}};
    Snapshot passive = warm;
    passive.cooling = Cooling::passive;
    const QString hint = "hover to rewind, click to keep";
    const QString temperatures = "whole chip · hottest core dashed · " + hint;
    expect("nothing known", {}, {"Processor"}, hint, "Idle all this time.", "0%");
    expect("no fan found", warm, {"Temperature", "Processor"}, temperatures, "", "45°C · 50°C");
    expect("fanless", passive, {"Heat", "Processor"}, temperatures, "", "45°C · 50°C");
    expect("fans at rest", {.fans = {still}, .power = {.systemWatts = 9}}, {"Fans", "Processor", "Power"}, hint,
           "The fans stood still, or ran at their floor, all this time.", "0%");
    expect("fans without limits", {.fans = {{.index = 0, .rpm = 900}}}, {"Fans", "Processor"}, hint,
           "How hard the fans work is not known: they report no limits.", "—");
}

TEST(TimelineModelTests, TimesStandAtMultiplesOfTheirStepAndMoveWithTheLines) {
    Stage stage;
    std::vector<UnixSeconds> marks;
    for (int i = 0; i < 600; ++i) {
        stage.hub.accept({.timestamp = start + 2 * i, .cpu = {.idlePercent = 40}});
        if (i < 450)
            continue;
        const TimelineModel model = timelineModel(stage.hub);
        for (std::size_t mark = 0; mark + 1 < model.times.size(); ++mark) {
            EXPECT_EQ(std::fmod(model.times[mark].time, 180), 0) << i;
            marks.push_back(model.times[mark].time);
        }
    }
    std::sort(marks.begin(), marks.end());
    marks.erase(std::unique(marks.begin(), marks.end()), marks.end());
    EXPECT_LE(marks.size(), 8U) << "within five minutes two labels come in at most";
}

TEST(RewindModelTests, ReconstructsWhatWasMeasuredThen) {
    Stage stage;
    const Format& format = stage.hub.format();
    EXPECT_EQ(rewindModel(nullptr, false, format).title, "Rewind");
    EXPECT_FALSE(rewindModel(nullptr, false, format).isAtMoment());
    feed(stage, 1);
    Snapshot snapshot = stage.hub.snapshot();
    snapshot.fans.push_back({1, 4604, 2317, 6550, 0});
    RewindModel model = rewindModel(&snapshot, false, format);
    EXPECT_EQ(model.readings[0], (RewindModel::Reading{"Fans", "4,730 · 4,600 rpm"}));
    EXPECT_EQ(model.readings[4], (RewindModel::Reading{"Power", "44 W"}));
    EXPECT_EQ(model.processes, (std::vector<RewindModel::Process>{{"Xcode", "clang", "94%"}}));
    snapshot.processes = {{ProcessIdentity{.rawName = "gnome-terminal-", .displayName = "gnome-terminal-server"}, 5},
                          {ProcessIdentity{.rawName = "node", .displayName = "node server.js"}, 4}};
    EXPECT_EQ(rewindModel(&snapshot, false, format).processes[0].rawName, "") << "the same name, cut off by the kernel";
    EXPECT_EQ(rewindModel(&snapshot, false, format).processes[1].rawName, "node");
    snapshot.cooling = Cooling::passive;
    snapshot.power.systemWatts = 0;
    snapshot.processes.clear();
    model = rewindModel(&snapshot, false, format);
    EXPECT_EQ(model.readings[0].label, "Whole chip");
    EXPECT_EQ(model.readings[3].value, "—");
    EXPECT_EQ(model.notice, "No process data was captured for this moment.");
}

TEST(TimelineViewTests, AHoverRewindsAndLeavingEndsIt) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    TimelineView view(stage.context);
    stage.picture(view, {1040, 778});
    const std::vector<TimelineChart*>& charts = view.charts().charts();
    ASSERT_EQ(charts.size(), 4U);
    EXPECT_EQ(spokenName(*charts[2]), "Processor, last 15 minutes");
    EXPECT_TRUE(spokenValue(*charts[2]).startsWith("Now: "));
    hover(*charts[0], 522);
    stage.picture(view, {1040, 778});
    const Snapshot* const nearest = snapshotNearest(stage.hub.history(), view.scrubDate());
    ASSERT_NE(nearest, nullptr);
    const QString title = scrubTitle(nearest, stage.hub.format());
    EXPECT_TRUE(title.startsWith("At ") && title.count(':') == 2) << title.toStdString();
    EXPECT_EQ(spokenName(view.rewind()), title);
    EXPECT_TRUE(spokenValue(view.rewind()).contains("swift-frontend") || spokenValue(view.rewind()).contains("Xcode"));
    EXPECT_TRUE(spokenValue(*charts[3]).startsWith(title)) << "every chart speaks of the same moment";
    stage.picture(view, {820, 508});
    leave(*charts[0]);
    EXPECT_FALSE(view.scrubDate());
    EXPECT_EQ(spokenName(view.rewind()), "Rewind");
}

TEST(TimelineViewTests, AClickPinsARecordUntilItIsLetGo) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    TimelineView view(stage.context);
    stage.picture(view, {1040, 778});
    const std::vector<TimelineChart*>& charts = view.charts().charts();
    click(*charts[1], 300);
    ASSERT_TRUE(view.isPinned());
    const UnixSeconds pinned = *view.scrubDate();
    EXPECT_EQ(snapshotNearest(stage.hub.history(), pinned)->timestamp, pinned) << "a record, not a place";
    const QString title = spokenName(view.rewind());
    hover(*charts[0], 500);
    leave(*charts[0]);
    charts[1]->clearFocus();
    EXPECT_EQ(view.scrubDate(), pinned) << "the pointer moves nothing";
    EXPECT_EQ(spokenName(view.rewind()), title);
    EXPECT_TRUE(spokenValue(*charts[1]).endsWith(", pinned"));
    EXPECT_TRUE(view.rewind().unpin().isVisible());
    stage.picture(view, {820, 508});

    click(*charts[0], 420);
    EXPECT_GT(*view.scrubDate(), pinned) << "another click pins another moment";
    charts[0]->setFocus();
    QTest::keyClick(charts[0], Qt::Key_Left);
    EXPECT_TRUE(view.isPinned()) << "stepped, it stays pinned";
    QTest::keyClick(charts[0], Qt::Key_Escape);
    EXPECT_FALSE(view.scrubDate());
    EXPECT_EQ(spokenName(view.rewind()), "Rewind");
    EXPECT_FALSE(view.rewind().unpin().isVisible());

    QTest::keyClick(charts[0], Qt::Key_Return);
    EXPECT_EQ(view.scrubDate(), stage.hub.series().cpu.back().time) << "without a moment the present is kept";
    QTest::mouseClick(&view.rewind().unpin(), Qt::LeftButton, {}, view.rewind().unpin().rect().center());
    EXPECT_FALSE(view.scrubDate());
}

TEST(TimelineViewTests, APinnedRecordStaysAsTimeGoesOnAndGoesWithItsHistory) {
    Stage stage;
    feed(stage, 60);
    TimelineView view(stage.context);
    stage.picture(view, {1040, 778});
    click(*view.charts().charts()[0], 300);
    ASSERT_TRUE(view.isPinned());
    const UnixSeconds pinned = *view.scrubDate();
    const QString said = spokenValue(view.rewind());
    feed(stage, 400);
    EXPECT_EQ(view.scrubDate(), pinned);
    feed(stage, 600);
    EXPECT_FALSE(timelineModel(stage.hub).span->holds(pinned)) << "beyond the charts";
    EXPECT_EQ(spokenValue(view.rewind()), said) << "but still remembered";
    view.hide();
    feed(stage, 700);
    view.show();
    EXPECT_EQ(view.scrubDate(), pinned);
    feed(stage, 1100);
    EXPECT_FALSE(view.scrubDate()) << "forgotten";
}

TEST(TimelineViewTests, TheKeyboardPicksPointByPoint) {
    Stage stage(Theme::Appearance::light);
    stage.play("design-fanless.jsonl.gz");
    TimelineView view(stage.context);
    stage.picture(view, {1040, 778});
    ASSERT_EQ(view.charts().charts().size(), 3U);
    TimelineChart& chart = *view.charts().charts().front();
    const std::vector<TimePoint>& points = stage.hub.series().cpu;
    struct Step {
        Qt::Key key;
        std::optional<UnixSeconds> moment;
        Qt::KeyboardModifiers modifiers = {};
    };
    const std::size_t tenth = points.size() / 10;
    for (const auto& [key, moment, modifiers] :
         {Step{Qt::Key_Left, points[points.size() - 1 - tenth].time, Qt::ShiftModifier},
          Step{Qt::Key_Right, points.back().time, Qt::ShiftModifier},
          Step{Qt::Key_Left, points[points.size() - 2].time}, Step{Qt::Key_Right, points.back().time},
          Step{Qt::Key_Right, points.back().time}, Step{Qt::Key_Home, points[0].time},
          Step{Qt::Key_Left, points[0].time}, Step{Qt::Key_Right, points[1].time},
          Step{Qt::Key_End, points.back().time}, Step{Qt::Key_Escape, std::nullopt}}) {
        QTest::keyClick(&chart, key, modifiers);
        EXPECT_EQ(view.scrubDate(), moment) << key;
    }
}

TEST(TimelineViewTests, AMovedRuleRepaintsOnlyWhereItWasAndIs) {
    class PaintedArea : public QObject {
    public:
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint)
                for (const QRect& piece : static_cast<QPaintEvent*>(event)->region())
                    pixels += piece.width() * piece.height();
            return false;
        }
        int pixels = 0;
    };
    Stage stage;
    feed(stage, 301);
    TimelineView view(stage.context);
    stage.picture(view, {1040, 778});
    TimelineChart& chart = *view.charts().charts()[1];
    hover(chart, 300);
    QCoreApplication::processEvents();
    PaintedArea painted;
    chart.installEventFilter(&painted);
    hover(chart, 400);
    QCoreApplication::processEvents();
    EXPECT_GT(painted.pixels, 0);
    EXPECT_LT(painted.pixels, chart.width() * chart.height() / 10);
    stage.hub.publish(true);
    painted.pixels = 0;
    QCoreApplication::processEvents();
    EXPECT_EQ(painted.pixels, 0) << "nothing new was published";
}

TEST(TimelineViewTests, ChartsAreDrawnInOnceAndNotWhereMotionIsUnwanted) {
    Stage stage;
    feed(stage, 61);
    TimelineView view(stage.context);
    view.resize(1040, 778);
    view.show();
    EXPECT_TRUE(stage.clock.isBeating());
    const QImage undrawn = view.grab().toImage();
    stage.seconds += 0.7;
    stage.clock.beat();
    EXPECT_FALSE(stage.clock.isBeating());
    const QImage drawn = view.grab().toImage();
    EXPECT_NE(undrawn, drawn);
    view.hide();
    stage.theme.setReducesMotion(true);
    view.show();
    EXPECT_FALSE(stage.clock.isBeating());
    EXPECT_EQ(view.grab().toImage(), drawn);
}

} // namespace
} // namespace vantoro
