// The hero of the Now pane: its words and dials, how it breaks its headline, what turns, and what is spoken.
#include "Views/Now/Hero.h"

#include "Design/Gauges/FanRotor.h"
#include "Design/Gauges/SmallGauges.h"
#include "Design/TextLabel.h"
#include "Views/Now/NowView.h"
#include "Views/Stage.h"

#include <QPaintEvent>

namespace vantoro {
namespace {

using testing::Stage;

/// What of a widget is painted anew.
class PaintedRegions : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            regions.push_back(static_cast<QPaintEvent*>(event)->region().boundingRect());
        return false;
    }
    std::vector<QRect> regions;
};

TEST(HeadlineTests, TakesTheLargestStyleThatFitsAndBreaksIntoEqualLines) {
    Stage stage;
    const std::vector<BalancedLabel::Step> steps{{Type::display40, 2}, {Type::display32, 2}, {Type::display26, 3}};
    const QString name = "The Quite Remarkably Long Name of an Application";
    struct Case {
        QString text;
        int width;
        double size;
        qsizetype lines;
        bool isWhole;
    };
    for (const Case& one :
         {Case{"All quiet", 600, 40, 1, true}, Case{"Your fans are loud because of Xcode", 600, 40, 2, true},
          Case{"Your fans are roaring — Wi-Fi Direct helper leads, but the load is spread out", 600, 32, 2, true},
          Case{"Your fans are loud because of " + name + " and its Helper", 444, 26, 3, true},
          Case{"Your fans are loud because of " + name + name + name + name, 444, 26, 3, false},
          Case{"Your fans are loud because of " + QString(300, 'w'), 444, 26, 3, false}}) {
        SCOPED_TRACE(one.text.toStdString());
        BalancedLabel label(stage.look, steps, Tone::textPrimary);
        label.setText(one.text);
        EXPECT_EQ(label.styleAt(one.width).size, one.size);
        const QStringList lines = label.linesAt(one.width);
        EXPECT_EQ(lines.size(), one.lines);
        const QFontMetricsF metrics(fontOf(label.styleAt(one.width), stage.theme));
        for (const QString& line : lines)
            EXPECT_LE(metrics.horizontalAdvance(line), one.width + 1);
        EXPECT_EQ(lines.join(' ') == one.text, one.isWhole);
        EXPECT_EQ(label.describe().name, one.text) << "the whole of it is read out";
        if (!one.isWhole) {
            EXPECT_TRUE(lines.join(' ').startsWith("Your fans are loud")) << "only its middle is left out";
        }
        label.resize(one.width, 200);
        label.grab();
        EXPECT_EQ(label.toolTip().isEmpty(), one.isWhole);
    }
    // A greedy break would leave one word on the second line.
    BalancedLabel label(stage.look, steps, Tone::textPrimary);
    label.setText("Your fans are loud because of Xcode");
    EXPECT_EQ(label.linesAt(600), (QStringList{"Your fans are loud", "because of Xcode"}));
}

TEST(HeadlineTests, IsAnnouncedOnChangeAtMostEveryTenSeconds) {
    HeadlineAnnouncer announcer;
    std::vector<bool> due;
    double now = 1000;
    for (const char* headline : {"All quiet", "Loud", "Audible", "Audible", "Audible", "Audible"}) {
        due.push_back(announcer.isDue(headline, now));
        now += 4;
    }
    EXPECT_EQ(due, (std::vector<bool>{false, true, false, false, true, false}))
        << "a change too soon is told when its time has come";
}

Snapshot machineWithFans(int count, double rpm) {
    Snapshot snapshot;
    snapshot.timestamp = 1772357000;
    for (int i = 0; i < count; ++i)
        snapshot.fans.push_back({.index = i, .rpm = rpm, .minRPM = 1000, .maxRPM = 5000, .targetRPM = rpm});
    return snapshot;
}

TEST(DialsTests, ShowWhatTheMachineHas) {
    const auto expect = [](const Snapshot& snapshot, const std::vector<QString>& spokenNames, const QString& figure,
                           const QString& caption, const QString& spoken, const QString& peak) {
        Stage stage;
        stage.hub.accept(snapshot);
        const DialsModel model = dialsModel(stage.hub);
        std::vector<QString> names;
        for (const FanRotorFigures& rotor : model.rotors)
            names.push_back(rotor.spokenName);
        EXPECT_EQ(names, spokenNames);
        EXPECT_EQ(model.rotors[0].figure, figure);
        EXPECT_EQ(model.rotors[0].caption, caption);
        EXPECT_EQ(model.rotors[0].spokenValue, spoken);
        EXPECT_EQ(model.peakFigure, peak);
        EXPECT_FALSE(model.dial.has_value());
    };
    Snapshot unknownLimits = machineWithFans(1, 0);
    unknownLimits.fans[0].minRPM = unknownLimits.fans[0].maxRPM = 0;
    expect(machineWithFans(0, 0), {"Fan"}, "—", "", "no reading", "");
    expect(unknownLimits, {"Left fan"}, "0", "Left", "0 rpm", "");
    expect(machineWithFans(2, 3360), {"Left fan", "Right fan"}, "3,360", "Left · 59%",
           "3,360 rpm, 59 percent of its range", "");
    expect(machineWithFans(3, 1480), {"Left fan", "Right fan", "Fan 3"}, "1,480", "Left · 12%",
           "1,480 rpm, 12 percent of its range", "1,480");
    Stage stage;
    stage.play("design-fanless.jsonl.gz");
    const DialsModel fanless = dialsModel(stage.hub);
    ASSERT_TRUE(fanless.dial.has_value());
    EXPECT_EQ(fanless.dial->figure + fanless.dial->unit, "71°C");
    EXPECT_EQ(fanless.dial->spokenValue, "Hot, whole chip 71°C, hottest core 85°C");
    stage.settings.store(Setting::temperatureUnit, "F");
    EXPECT_EQ(dialsModel(stage.hub).dial->smallFigure, "160°");
    Snapshot parked;
    parked.timestamp = stage.hub.snapshot().timestamp + 2000;
    parked.cooling = Cooling::passive;
    stage.hub.accept(parked);
    const DialsModel awaiting = dialsModel(stage.hub);
    EXPECT_EQ(awaiting.dial->figure, "—");
    EXPECT_EQ(awaiting.dial->unit, "");
    EXPECT_EQ(awaiting.dial->gapFigure, "");
    EXPECT_FALSE(awaiting.dial->position.has_value());
    EXPECT_EQ(eyebrowModel(stage.hub.verdict()).spokenValue, "Measuring");
}

TEST(FanRotorTests, TurnsAsTheFanDoesButOnlyWhereItMay) {
    Stage stage;
    FanRotor rotor(stage.look, 148, FanRotor::Captions::full);
    rotor.show();
    const auto turnsInASecond = [&] {
        double turned = 0;
        for (int i = 0; i < 100; ++i) {
            stage.seconds += 0.01;
            const double last = rotor.turns();
            stage.clock.beat();
            turned += rotor.turns() - last + (rotor.turns() < last ? 1 : 0);
        }
        return turned;
    };
    FanRotorFigures figures{.figure = "1,250", .unit = "rpm", .position = 0.1, .turnsPerSecond = 0.5};
    rotor.show(figures);
    turnsInASecond(); // eases up to its speed
    EXPECT_NEAR(turnsInASecond(), 0.5, 0.02);
    figures.turnsPerSecond = 2;
    rotor.show(figures);
    turnsInASecond();
    EXPECT_LT(turnsInASecond() * WheelFrames::blades / 30, 0.5) << "half a pitch a beat would look like standing still";
    rotor.setTurning(false);
    EXPECT_EQ(turnsInASecond(), 0);
    EXPECT_FALSE(stage.clock.isBeating());
    rotor.setTurning(true);
    EXPECT_TRUE(stage.clock.isBeating());
    rotor.hide();
    stage.clock.beat();
    EXPECT_FALSE(stage.clock.isBeating());
    rotor.show();
    EXPECT_TRUE(stage.clock.isBeating());
    stage.theme.setReducesMotion(true);
    EXPECT_EQ(turnsInASecond(), 0);
    stage.theme.setReducesMotion(false);
    figures.turnsPerSecond = 0;
    rotor.show(figures);
    turnsInASecond();
    EXPECT_FALSE(stage.clock.isBeating()) << "at rest nothing beats";
}

TEST(FanRotorTests, PaintsOnlyItsWheelWhileItTurns) {
    Stage stage;
    QWidget window;
    FanRotor rotor(stage.look, 148, FanRotor::Captions::full, Tone::window, &window);
    rotor.resize(rotor.sizeHint());
    rotor.show(FanRotorFigures{.figure = "1,250", .unit = "rpm", .position = 0.1, .turnsPerSecond = 1});
    stage.picture(window, {400, 300});
    PaintedRegions painted;
    PaintedRegions below;
    rotor.installEventFilter(&painted);
    window.installEventFilter(&below);
    const auto beat = [&](int beats) {
        for (int i = 0; i < beats; ++i) {
            stage.seconds += 0.033;
            stage.clock.beat();
            QCoreApplication::processEvents();
        }
    };
    beat(30);
    EXPECT_GT(painted.regions.size(), 20U);
    for (const QRect& region : painted.regions)
        EXPECT_LE(region.width() * region.height(), 106 * 106);
    EXPECT_TRUE(below.regions.empty()) << "what lies under the wheel has not changed";

    // Scrolled out of sight it stands, and goes on once it can be seen.
    rotor.move(0, 400);
    beat(2);
    EXPECT_FALSE(stage.clock.isBeating());
    rotor.move(0, 0);
    beat(1);
    EXPECT_TRUE(stage.clock.isBeating());

    // So slow that a beat mostly brings no other picture.
    rotor.show(FanRotorFigures{.figure = "1,250", .unit = "rpm", .position = 0.1, .turnsPerSecond = 0.01});
    beat(60);
    painted.regions.clear();
    beat(30);
    EXPECT_LE(painted.regions.size(), 3U);
}

TEST(NowViewTests, ARefreshWithEqualFiguresPaintsNothingAndRunsNoClock) {
    Stage stage;
    stage.settings.store(Setting::spinRotors, false);
    stage.hub.accept(machineWithFans(2, 3360));
    NowView view(stage.context);
    stage.picture(view, {1040, 1200});
    ASSERT_FALSE(stage.clock.isBeating());
    PaintedRegions painted;
    for (QWidget* widget : view.findChildren<QWidget*>())
        widget->installEventFilter(&painted);
    for (int i = 0; i < 3; ++i) {
        stage.hub.publish(true);
        view.refresh();
        QCoreApplication::processEvents();
        EXPECT_FALSE(stage.clock.isBeating());
    }
    EXPECT_TRUE(painted.regions.empty());
}

TEST(GlideTests, WhatNobodySeesIsNotAnimated) {
    AnimatedValue value(0);
    value.setResolution(0.01);
    const SpringAnimation spring{.responseSeconds = 0.42};
    value.set(0.009, 0, spring);
    EXPECT_TRUE(value.isAtRest(0));
    EXPECT_EQ(value.at(0), 0.009);
    value.set(0.1, 0, spring);
    EXPECT_FALSE(value.isAtRest(0));
    double now = 0;
    while (!value.isAtRest(now))
        now += 0.033;
    EXPECT_LT(now, 0.35) << "over once less than that is left, long before a thousandth of the way";
    EXPECT_EQ(value.at(now), 0.1);

    // The same in a widget: a share of a pixel starts no clock, a longer way does.
    Stage stage;
    CoreBar bar(stage.look);
    bar.show(100, 8, {});
    stage.picture(bar, {220, 8});
    bar.show(100.5, 8, {});
    EXPECT_FALSE(stage.clock.isBeating());
    bar.show(150, 8, {});
    EXPECT_TRUE(stage.clock.isBeating());
}

TEST(HeroTests, GrowsWithItsTextAndStaysWithinItself) {
    Stage stage;
    stage.hub.accept(machineWithFans(2, 3360));
    HeroModel model = heroModel(stage.hub, stage.settings);
    Hero hero(stage.look);
    hero.show();
    for (const double scale : {1.0, 1.5}) {
        stage.theme.setTextScale(scale);
        for (const int width : {772, 992, 1232}) {
            model.detail = "Xcode averaged 512% CPU across 11 processes over the window that heated the machine.";
            hero.show(model);
            const int before = hero.heightForWidth(width);
            model.detail = model.detail.repeated(8);
            hero.show(model);
            const int after = hero.heightForWidth(width);
            EXPECT_GE(before, 228);
            EXPECT_GT(after, before);
            hero.resize(width, after);
            for (const QWidget* child : hero.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
                EXPECT_TRUE(hero.rect().contains(child->geometry())) << child->metaObject()->className() << width;
        }
    }
}

TEST(HeroTests, NothingBelowMovesWhenAFigureOrASentenceChanges) {
    Stage stage;
    stage.hub.accept(machineWithFans(2, 3360));
    HeroModel model = heroModel(stage.hub, stage.settings);
    Hero hero(stage.look);
    const QString sentence = "It averaged %1% CPU across %2 processes over the window that heated the machine. ";
    model.detail = sentence.arg(888).arg(18).repeated(4);
    hero.show();
    hero.resize(772, 300);
    hero.show(model);
    const int height = hero.heightForWidth(772);
    hero.resize(772, height);
    const auto placeOfHeadline = [&] { return hero.findChildren<BalancedLabel*>().front()->geometry().topLeft(); };
    const QPoint place = placeOfHeadline();
    for (const QString& detail : {sentence.arg(111).arg(11).repeated(4), sentence.arg(7).arg(8), QString()}) {
        stage.seconds += 2;
        model.detail = detail;
        hero.show(model);
        EXPECT_EQ(hero.heightForWidth(772), height) << detail.toStdString();
        EXPECT_EQ(placeOfHeadline(), place);
    }
    stage.seconds += 60;
    hero.show(model);
    EXPECT_LT(hero.heightForWidth(772), height) << "a minute later it is forgotten, whether or not anything changed";

    for (int width = 120; width < 700; width += 7) {
        const QFont font = fontOf(Type::lead, stage.theme);
        EXPECT_EQ(brokenLines(sentence.arg(888).arg(18), font, width).size(),
                  brokenLines(sentence.arg(111).arg(11), font, width).size())
            << width;
    }
}

} // namespace
} // namespace vantoro
