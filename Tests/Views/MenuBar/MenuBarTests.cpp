// The menu bar: what its item shows and how it turns, and the panel that opens from it.
#include "Views/MenuBar/MenuBarItem.h"

#include "Design/Controls/Button.h"
#include "Views/MenuBar/MenuBarPanel.h"
#include "Views/Stage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::Stage;

constexpr double start = 1772357000;

/// A machine whose only fan works at this share of its range.
Snapshot withFan(double load) {
    return {.timestamp = start, .fans = {{.index = 0, .rpm = 1000 + 4000 * load, .minRPM = 1000, .maxRPM = 5000}}};
}

Snapshot fanless(double chipHeat, double socMean) {
    return {.timestamp = start,
            .temps = {.soc = socMean + 12, .socMean = socMean},
            .cooling = Cooling::passive,
            .chipHeat = chipHeat};
}

TEST(MenuBarModelTests, ShowsOneIconAndAFigureOnceItMatters) {
    using Case = std::tuple<Snapshot, bool, QString, std::optional<QString>>;
    const Snapshot unreadable{.timestamp = start};
    for (const auto& [snapshot, always, symbol, figure] :
         {Case{withFan(0.0), false, "fan.fill", std::nullopt}, Case{withFan(0.1), false, "fan.fill", std::nullopt},
          Case{withFan(0.1), true, "fan.fill", "1400"}, Case{withFan(0.3675), false, "fan.fill", "2470"},
          Case{withFan(0.6), false, "fan.fill", "3400"}, Case{unreadable, true, "fan.fill", "0"},
          Case{fanless(40, 37), false, "thermometer.low", std::nullopt},
          Case{fanless(60, 37), true, "thermometer.low", "37°C"},
          Case{fanless(70, 63), false, "thermometer.medium", "63°C"},
          Case{fanless(85, 71), false, "thermometer.high", "71°C"},
          Case{fanless(99, 0), false, "thermometer.high", "—"}}) {
        Stage stage;
        stage.hub.accept(snapshot);
        const MenuBarModel model = menuBarModel(stage.hub, always, false);
        EXPECT_EQ(model.symbol, symbol);
        EXPECT_EQ(model.figure, figure);
        EXPECT_TRUE(model.tooltip.startsWith(QString::fromStdString(stage.hub.verdict().headline)));
    }
    EXPECT_EQ(menuBarSpeed(1234.9), "1234");
}

TEST(MenuBarModelTests, TurnsInStepsOfTheLoadAndNotWhereMotionIsUnwanted) {
    for (const auto& [load, seconds] : std::map<double, double>{
             {0, 0}, {0.25, 0}, {0.26, 1.775}, {0.3, 1.775}, {0.375, 1.5625}, {0.5, 1.35}, {1, 0.5}}) {
        EXPECT_DOUBLE_EQ(menuBarSecondsPerTurn(load, false).value_or(0), seconds) << load;
        EXPECT_FALSE(menuBarSecondsPerTurn(load, true).has_value());
    }
}

TEST(MenuBarSpinTests, TurnsOnceWhenItAppearsAndOnWhileItHasAPeriod) {
    constexpr double rate = 8;
    MenuBarSpin spin(rate);
    double now = 100;
    spin.appear(now);
    int pictures = 0;
    for (int beat = 0; beat < 90; ++beat)
        pictures += spin.advance(now += 1.0 / 30, std::nullopt) ? 1 : 0;
    EXPECT_GE(pictures, 4);
    EXPECT_FALSE(spin.isTurning(std::nullopt)) << "one turn, then it stands";
    EXPECT_EQ(spin.frame(), 0) << "upright";
    pictures = 0;
    for (int beat = 0; beat < 300; ++beat)
        pictures += spin.advance(now += 1.0 / 30, 0.5) ? 1 : 0;
    EXPECT_LE(pictures, 10 * rate + 1);
    EXPECT_GE(pictures, 60) << "however fast, each picture differs from the one before";
    while (spin.advance(now += 1, std::nullopt)) {
    }
    EXPECT_EQ(spin.frame(), 0);
}

TEST(MenuBarImageTests, IsAsWideAsItsTextOrASquareWithBoth) {
    Stage stage;
    const MenuBarModel bare{.symbol = "fan.fill"};
    const MenuBarModel narrowDigits{.symbol = "fan.fill", .figure = "1111"};
    const MenuBarModel wideDigits{.symbol = "fan.fill", .figure = "4830"};
    MenuBarImage side(MenuBarArrangement::sideBySide, stage.icons);
    EXPECT_EQ(side.picture(bare, 0, Qt::black, 18, 2).width(), 30);
    EXPECT_EQ(side.picture(narrowDigits, 0, Qt::black, 18, 2).width(),
              side.picture(wideDigits, 0, Qt::black, 18, 2).width());
    EXPECT_TRUE(side.icon(bare, 0, Qt::black).isMask());
    MenuBarImage square(MenuBarArrangement::withinSquare, stage.icons);
    const QImage drawn = square.picture(wideDigits, 0, Qt::white, 32, 1).toImage();
    ASSERT_EQ(drawn.size(), QSize(32, 32));
    const auto inked = [&drawn](const QRect& part) {
        int count = 0;
        for (int y = part.top(); y <= part.bottom(); ++y)
            for (int x = part.left(); x <= part.right(); ++x)
                count += qAlpha(drawn.pixel(x, y)) > 128 ? 1 : 0;
        return count;
    };
    EXPECT_GT(inked({8, 0, 16, 16}), 30) << "the icon above";
    EXPECT_GT(inked({0, 20, 32, 12}), 60) << "the figure below";
    EXPECT_NE(square.picture(bare, 2, Qt::white, 22, 1).toImage(), square.picture(bare, 0, Qt::white, 22, 1).toImage());
    EXPECT_GT(trayInk(false, "ubuntu:GNOME").lightness(), 200);
    EXPECT_GT(trayInk(false, "XFCE").lightness(), 200);
    EXPECT_LT(trayInk(false, "KDE").lightness(), 60);
    EXPECT_GT(trayInk(true, "KDE").lightness(), 200);
}

TEST(MenuBarItemTests, AppearsWithoutHoldingAnythingUpAndStandsStillOutOfSight) {
    Stage stage;
    MenuBarItem item(stage.context, MenuBarArrangement::withinSquare);
    item.appear();
    item.appear();
    stage.hub.accept(withFan(0.9));
    EXPECT_TRUE(QTest::qWaitFor([&] { return item.model().figure == "4600"; }, 5000));
    if (!item.isShown()) {
        stage.clock.beat();
        EXPECT_FALSE(stage.clock.isBeating()) << "no bar, nothing to turn";
    }
}

TEST(MenuBarPanelTests, StandsAtItsItemWithinTheScreen) {
    const QSize panel(340, 344);
    const QRect screen(0, 24, 1440, 876);
    using Case = std::tuple<QRect, std::optional<QPoint>, QRect, QPoint>;
    for (const auto& [item, pointer, available, expected] :
         {Case{{1000, 0, 60, 24}, std::nullopt, screen, {860, 32}},
          Case{{1400, 0, 40, 24}, std::nullopt, screen, {1100, 32}},
          Case{{600, 860, 24, 40}, std::nullopt, {0, 0, 1440, 860}, {442, 508}},
          Case{QRect(), QPoint(20, 30), screen, {0, 39}},
          Case{QRect(), std::nullopt, {1440, 0, 1000, 800}, {1770, 228}},
          Case{{10, 0, 20, 20}, std::nullopt, {0, 20, 300, 300}, {0, 20}}}) {
        const QRect placed = placedPanel(panel, item, pointer, available);
        EXPECT_EQ(placed.topLeft(), expected) << item.x() << ' ' << available.width();
        EXPECT_EQ(placed.size(), panel);
    }
}

TEST(MenuBarPanelTests, KeepsItsEdgeAndItsScreenWhenItsHeightChanges) {
    for (const int itemTop : {0, 776}) {
        Stage stage;
        stage.play("design-fans.jsonl.gz");
        MenuBarPanel panel(stage.context);
        panel.toggle({770, itemTop, 24, 24}, std::nullopt);
        stage.settle();
        const auto edge = [&] { return itemTop == 0 ? panel.geometry().top() : panel.geometry().bottom(); };
        const int before = edge();
        const QRect geometry = panel.geometry();
        EXPECT_TRUE(panel.screen()->availableGeometry().contains(geometry)) << "or the window manager moves it";
        stage.hub.accept(withFan(0));
        stage.settle();
        EXPECT_NE(panel.height(), geometry.height());
        EXPECT_EQ(edge(), before) << itemTop;
        EXPECT_EQ(panel.x(), geometry.x());
    }
}

TEST(MenuBarPanelTests, SaysTheAnswerInShort) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    const MenuBarPanelModel fans = menuBarPanelModel(stage.hub, stage.settings);
    EXPECT_EQ(fans.title, "Your fans are loud");
    EXPECT_EQ(fans.cause, "because of Xcode × 11, for 6 minutes");
    ASSERT_EQ(fans.suspects.size(), 4U);
    EXPECT_EQ(fans.suspects[0].heatStop, 3);
    EXPECT_EQ(fans.rotor->spokenName, "Left fan") << "the one that works hardest";
    ASSERT_EQ(fans.figures.size(), 3U);
    EXPECT_EQ(fans.figures[0].unit, "rpm");

    Stage passive;
    passive.play("design-fanless.jsonl.gz");
    const MenuBarPanelModel chip = menuBarPanelModel(passive.hub, passive.settings);
    EXPECT_EQ(chip.title, "Your Mac is running hot");
    EXPECT_EQ(chip.dial->smallFigure, "71°");
    EXPECT_EQ(chip.figures[0].caption, "Whole chip");

    Stage slowed;
    Snapshot snapshot = withFan(0);
    snapshot.thermalPressure = ThermalPressure::serious;
    slowed.hub.accept(snapshot);
    const MenuBarPanelModel same = menuBarPanelModel(slowed.hub, slowed.settings);
    EXPECT_EQ(same.title, "macOS is slowing the chip to shed heat");
    EXPECT_EQ(same.cause, "") << "it would only say the title again";
    EXPECT_EQ(same.figures[2].figure, "—");
    EXPECT_FALSE(same.noSuspects.isEmpty());
}

TEST(MenuBarPanelTests, IsReachedByKeyboardAndClosesOnEscape) {
    Stage stage;
    stage.play("design-calm.jsonl.gz");
    MenuBarPanel panel(stage.context);
    const QSignalSpy opened(&panel, &MenuBarPanel::openRequested);
    const QSignalSpy settings(&panel, &MenuBarPanel::settingsRequested);
    panel.toggle({}, QPoint(300, 10));
    ASSERT_TRUE(panel.isVisible());
    QTest::keyClick(&panel, Qt::Key_Escape);
    EXPECT_FALSE(panel.isVisible());
    panel.toggle({}, QPoint(300, 10));
    EXPECT_FALSE(panel.isVisible()) << "the click that took its keyboard away does not bring it back";
    stage.seconds += 1;
    panel.toggle({}, QPoint(300, 10));
    for (Button* const button : panel.findChildren<Button*>(Qt::FindDirectChildrenOnly)) {
        EXPECT_NE(button->focusPolicy() & Qt::TabFocus, 0) << button->describe().name.toStdString();
        EXPECT_FALSE(button->describe().name.isEmpty());
    }
    QTest::keyClick(panel.findChildren<Button*>(Qt::FindDirectChildrenOnly).at(1), Qt::Key_Space);
    EXPECT_EQ(settings.count(), 1);
    EXPECT_EQ(opened.count(), 0);
    EXPECT_FALSE(panel.isVisible());
}

} // namespace
} // namespace vantoro
