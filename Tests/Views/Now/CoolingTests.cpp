// Machines that cannot tell how hard their fans work, or anything of heat: what is shown in place of the rotors.
#include "Views/Now/FanList.h"
#include "Views/Now/NowView.h"

#include "Design/Gauges/FanRotor.h"
#include "Design/Gauges/ThermalDial.h"
#include "Design/TextLabel.h"
#include "Support/Dice.h"
#include "Views/Now/EveryText.h"
#include "Views/Shell/MainWindow.h"

#include <QRegularExpression>
#include <QSignalSpy>

namespace vantoro {
namespace {

using namespace testing;

QStringList titles(const FactsModel& model) {
    QStringList titles;
    for (const FactModel& fact : model.facts)
        titles += fact.title;
    return titles;
}

/// A computer whose chip is warm, with fans of which only these speeds are known.
Snapshot withSpeeds(const std::vector<double>& speeds) {
    Snapshot snapshot = fanlessMachine(70);
    snapshot.cooling = Cooling::heat;
    snapshot.temps = {.soc = 72, .socMean = 68};
    for (const double rpm : speeds)
        snapshot.fans.push_back({.index = static_cast<int>(snapshot.fans.size()), .rpm = rpm});
    return snapshot;
}

TEST(BusyDialTests, AMachineThatTellsNeitherFansNorHeatShowsHowBusyItIs) {
    Stage stage;
    stage.play("design-busy.jsonl.gz");
    const ThermalDialFigures dial = dialsModel(stage.hub).dial.value();
    EXPECT_EQ(dial.figure + dial.unit + ' ' + dial.caption, "66% of 8 cores");
    EXPECT_EQ(dial.gapCaption + ' ' + dial.gapFigure, "busiest core 98%");
    EXPECT_EQ(dial.heatStop, 3);
    EXPECT_NEAR(dial.position.value(), stage.hub.history().busyShare(stage.hub.history().snapshots().size() - 1), 1e-9);
    EXPECT_EQ(dial.spokenName, "Busy share");
    EXPECT_EQ(dial.spokenValue, "Very busy, 66 percent of 8 cores, busiest core 98 percent");
    EXPECT_FALSE(dialsModel(stage.hub).fans.has_value());

    const FactsModel facts = factsModel(stage.hub);
    EXPECT_EQ(titles(facts), (QStringList{"CPU", "Memory", "Waiting"}));
    EXPECT_TRUE(facts.caption.endsWith("when the load rose")) << facts.caption.toStdString();
    EXPECT_EQ(facts.facts[0].value, "66%") << "as the dial has it";
    EXPECT_EQ(facts.facts[1].detail, "6.5 of 16 GB");
    EXPECT_EQ(facts.facts[2].detail, "Of the time, for the disk");
    EXPECT_EQ(facts.facts[2].line->most, 40);

    const MenuBarModel item = menuBarModel(stage.hub, false, false);
    EXPECT_EQ(item.symbol, "gauge.with.dots.needle.67percent");
    EXPECT_EQ(item.figure, "66%");
    EXPECT_EQ(item.tooltip, toQString(stage.hub.verdict().headline) + "\n66% busy");
    const MenuBarPanelModel panel = menuBarPanelModel(stage.hub, stage.settings);
    EXPECT_EQ(panel.dial->smallFigure, "66%");
    QStringList figures;
    for (const MenuBarPanelModel::Figure& figure : panel.figures)
        figures += figure.caption + ' ' + figure.figure;
    EXPECT_EQ(figures[0], "Busy 66%");
    EXPECT_EQ(figures[1], "Memory 40%");
    EXPECT_TRUE(figures[2].startsWith("Waiting "));

    // At rest no figure, and what the kernel does not tell is not made up.
    Stage still;
    still.hub.history().setSystem(SystemKind::gnuLinux);
    still.hub.accept(bareMachine(3));
    EXPECT_EQ(menuBarModel(still.hub, false, false).figure, std::nullopt);
    EXPECT_EQ(titles(factsModel(still.hub)), QStringList{"CPU"});
    EXPECT_EQ(menuBarPanelModel(still.hub, still.settings).figures[1].figure, "—");
    EXPECT_EQ(dialsModel(still.hub).dial->caption, "busy") << "of how many cores is not known";
    EXPECT_EQ(dialsModel(still.hub).dial->gapFigure, "");
}

TEST(BusyDialTests, ALabelThatSpeaksOfWorkHasItsPipsAndItsSuspects) {
    Stage stage;
    stage.hub.history().setSystem(SystemKind::gnuLinux);
    for (int age = 20; age >= 0; --age) {
        Snapshot snapshot = bareMachine(90, {process(7, "make", 720, ProcessKind::commandLine)});
        snapshot.cooling = Cooling::fans;
        snapshot.fans = {{.index = 0, .rpm = 1000, .minRPM = 1000, .maxRPM = 5000, .name = "CPU fan"}};
        stage.hub.accept(at(builtNow - age, snapshot));
    }
    ASSERT_TRUE(stage.hub.verdict().speaksOfWork());
    const EyebrowModel eyebrow = heroModel(stage.hub, stage.settings).eyebrow;
    EXPECT_EQ(eyebrow.spokenValue, "Flat out, 5 of 5");
    EXPECT_EQ(suspectsModel(stage.hub).title, "Suspects");
    EXPECT_EQ(dialsModel(stage.hub).rotors[0].heatStop, 1) << "the fan itself hardly works";
    EXPECT_EQ(dialsModel(stage.hub).rotors[0].spokenName, "CPU fan");
}

TEST(FanListTests, TellsSpeedsWithoutAShareAndLeavesTheManyToSensors) {
    using Case = std::tuple<std::vector<double>, QStringList, QString>;
    for (const auto& [speeds, expected, line] :
         {Case{std::vector<double>(), {}, ""}, Case{{1435}, {"Fan 1, 1,440 rpm"}, "Fans 1,440 rpm"},
          Case{{1840, 2760, 1120, 980, 0},
               {"Fan 1, 1,840 rpm", "Fan 2, 2,760 rpm", "Fan 3, 1,120 rpm", "Fan 4, 980 rpm", "Fan 5, 0 rpm"},
               "Fans 1,840 · 2,760 · 1,120 · 980 · 0 rpm"},
          Case{{10, 20, 30, 40, 50, 60, 70},
               {"Fan 1, 10 rpm", "Fan 2, 20 rpm", "Fan 3, 30 rpm", "Fan 4, 40 rpm", "3 more"},
               "Fans 10 · 20 · 30 · 40 · 50 · 60 · 70 rpm"}}) {
        Stage stage;
        stage.hub.history().setSystem(SystemKind::gnuLinux);
        stage.hub.accept(withSpeeds(speeds));
        const HeroModel model = heroModel(stage.hub, stage.settings);
        QStringList rows;
        if (model.dials.fans)
            for (const FanListModel::Row& row : model.dials.fans->rows)
                rows += row.spoken;
        EXPECT_EQ(rows, expected);
        EXPECT_EQ(model.fanLine, line);
        EXPECT_TRUE(model.dials.rotors.empty());
        EXPECT_EQ(model.dials.dial->spokenName, "Chip heat");
    }
    Stage stage;
    stage.hub.history().setSystem(SystemKind::gnuLinux);
    Snapshot snapshot = withSpeeds({1435, 900});
    stage.hub.accept(snapshot);
    EXPECT_EQ(dialsModel(stage.hub).fans->foot, "what they can reach is not known");
    snapshot.fans[1].learnsLimits = true;
    stage.hub.accept(snapshot);
    EXPECT_EQ(dialsModel(stage.hub).fans->foot, "limits are learned within a day; what another can reach is not known");
    snapshot.fans[0].learnsLimits = true;
    stage.hub.accept(snapshot);
    EXPECT_EQ(dialsModel(stage.hub).fans->foot, "limits are learned within a day");
}

TEST(FanListTests, StandsBesideTheDialAndIsALineWhereItIsNarrow) {
    Stage stage;
    stage.hub.history().setSystem(SystemKind::gnuLinux);
    Snapshot snapshot = withSpeeds({10, 20, 30, 40, 50, 60, 70});
    snapshot.fans[0].name = "A fan with a name that is longer than any list is wide";
    stage.hub.accept(snapshot);
    MainWindow window(stage.context, Simulation::none, [] {});
    stage.picture(window, MainWindow::usualSize);
    auto* const list = window.findChild<FanList*>();
    ASSERT_NE(list, nullptr);
    const auto* const dial = window.findChild<ThermalDial*>();
    const auto* const headline = window.findChild<Hero*>()->findChild<BalancedLabel*>();
    EXPECT_TRUE(list->isVisible());
    EXPECT_EQ(dial->x() + ThermalDial::ringMargin - (list->x() + list->width()), 40);
    EXPECT_LE(headline->width(), 508);
    const QList<Pressable*> lines = list->findChildren<Pressable*>();
    ASSERT_EQ(lines.size(), 5);
    EXPECT_FALSE(lines[0]->toolTip().isEmpty()) << "the whole of a name that is cut";
    EXPECT_TRUE(lines[1]->toolTip().isEmpty());
    EXPECT_EQ(lines[1]->describe().role, QAccessible::ListItem);
    EXPECT_EQ(lines[4]->describe().role, QAccessible::Button);
    for (const Pressable* const line : lines)
        EXPECT_EQ(line->focusPolicy(), Qt::NoFocus) << "one stop with the dial";

    window.resize(MainWindow::smallestSize);
    stage.settle();
    EXPECT_FALSE(list->isVisible());
    EXPECT_TRUE(window.findChild<Hero*>()->findChild<TextLabel*>()->isVisible());
    window.resize(MainWindow::usualSize);
    stage.settle();
    EXPECT_FALSE(window.findChild<Hero*>()->findChild<TextLabel*>()->isVisible());
    stage.theme.setTextScale(1.5);
    stage.settle();
    EXPECT_FALSE(list->isVisible()) << "large type needs its room";
    stage.theme.setTextScale(1);
    stage.settle();

    QTest::mouseClick(lines[1], Qt::LeftButton);
    EXPECT_TRUE(list->isVisible()) << "a speed leads nowhere";
    QTest::mouseClick(lines[4], Qt::LeftButton);
    stage.settle();
    EXPECT_FALSE(list->isVisible()) << "Sensors has them all";
}

TEST(DialsTests, FansWithoutLimitsHaveNoRotorBesideThoseThatHave) {
    Snapshot snapshot = fanMachine(0.5);
    snapshot.fans[0].name = "CPU fan";
    snapshot.fans.push_back({.index = 1, .rpm = 2760, .name = "Pump"});
    snapshot.fans.push_back({.index = 2, .rpm = 0, .name = "Graphics fan"});
    Stage stage;
    stage.hub.history().setSystem(SystemKind::gnuLinux);
    stage.hub.accept(snapshot);
    const HeroModel hero = heroModel(stage.hub, stage.settings);
    ASSERT_EQ(hero.dials.rotors.size(), 1U);
    EXPECT_EQ(hero.dials.rotors[0].caption, "CPU fan · 50%");
    EXPECT_EQ(hero.fanLine, "Pump 2,760 · Graphics fan 0 rpm");
    EXPECT_EQ(menuBarPanelModel(stage.hub, stage.settings).rotor->label, "CPU fan");

    Stage mac;
    mac.hub.accept(snapshot);
    EXPECT_EQ(heroModel(mac.hub, mac.settings).dials.rotors.size(), 3U);
    EXPECT_EQ(heroModel(mac.hub, mac.settings).fanLine, "");
}

TEST(FanRotorTests, ALongNameGivesWayToTheShare) {
    Stage stage;
    FanRotor rotor(stage.look, 148, FanRotor::Captions::full);
    const QString name = "Rear chassis fan of the second bay";
    rotor.show(FanRotorFigures{.figure = "1,250", .unit = "rpm", .caption = "CPU fan · 10%", .label = "CPU fan"});
    stage.picture(rotor, rotor.sizeHint());
    EXPECT_TRUE(rotor.toolTip().isEmpty());
    rotor.show(FanRotorFigures{.figure = "1,250", .unit = "rpm", .caption = name + " · 10%", .label = name});
    EXPECT_TRUE(rotor.toolTip().contains(name));
    const QImage tenth = stage.picture(rotor, rotor.sizeHint());
    rotor.show(FanRotorFigures{.figure = "1,250", .unit = "rpm", .caption = name + " · 98%", .label = name});
    EXPECT_NE(stage.picture(rotor, rotor.sizeHint()), tenth) << "the share is seen";
}

TEST(CoolingTexts, SayOfEachMachineOnlyWhatItCanKnowAndInItsWords) {
    const auto option = QRegularExpression::CaseInsensitiveOption;
    const QRegularExpression macs("\\b(macs?|macbooks?|macos|apple|ioreport|smc|setuid|finder)\\b", option);
    const QRegularExpression heat("\\b(heat\\w*|hot|hottest|warm\\w*|cool\\w*|fans?|rpm|air\\w*|vents?|floors?|chip|"
                                  "temperatures?|lap)\\b|°",
                                  option);
    const QRegularExpression none("\\b(no fans|without fans|fanless|percent of its range)\\b", option);
    const QRegularExpression unknown("(?<![\\d.])0(\\.0)? W\\b|\\b0 ?°|on battery|NaN|-\\d+%|\\binf\\b", option);
    Dice dice;
    for (int i = 0; i < 480; ++i) {
        const auto cooling = static_cast<Cooling>(i % 4);
        const SystemKind system = i % 8 < 4 ? SystemKind::gnuLinux : SystemKind::macos;
        Stage stage;
        stage.hub.history().setSystem(system);
        if (dice.coin())
            stage.makeCores();
        dice.plainNames = cooling == Cooling::load;
        const Snapshot now = dice.machine(cooling);
        for (int age = dice.coin() ? 90 : 0; age >= 0; age -= 10)
            stage.hub.accept(at(builtNow - age, now));
        const QStringList texts = everyText(stage);
        const auto saying = [&texts](const QRegularExpression& words) {
            return texts.filter(words).join(" | ").toStdString();
        };
        if (system == SystemKind::gnuLinux) {
            EXPECT_EQ(saying(macs), "") << i;
            EXPECT_EQ(saying(unknown), "") << i;
        }
        if (cooling == Cooling::load) {
            EXPECT_EQ(saying(heat), "") << i;
        }
        if (cooling == Cooling::heat) {
            EXPECT_EQ(saying(none), "") << i;
        }
    }
}

} // namespace
} // namespace vantoro
