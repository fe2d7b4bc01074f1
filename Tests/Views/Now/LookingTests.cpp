// What is shown before anything has been measured: nothing that could be taken for an answer.
#include "Views/Now/AdvicePanel.h"
#include "Views/Report/ReportSheet.h"
#include "Views/Shell/MainWindow.h"

#include "Views/Now/EveryText.h"

#include <QRegularExpression>

namespace vantoro {
namespace {

using testing::everyText;
using testing::Stage;

TEST(LookingTests, ClaimsNothingBeforeTheFirstListAndSaysSoWhenNoneComes) {
    const QRegularExpression zero("\\b0%");
    for (const Cooling cooling : {Cooling::fans, Cooling::passive, Cooling::heat, Cooling::load}) {
        Stage stage(Theme::Appearance::dark, cooling);
        SensorHub& hub = stage.hub;
        hub.tick();
        const QStringList texts = everyText(stage);
        for (const char* const claim : {"quiet", "cool", "idle", "0%", "0 rpm", "Nothing", "Comfortable"})
            EXPECT_TRUE(texts.filter(claim).isEmpty()) << texts.filter(claim).join('|').toStdString();
        const HeroModel hero = heroModel(hub, stage.settings);
        EXPECT_EQ(hero.headline, "Looking…");
        EXPECT_TRUE(hero.detail.endsWith("That takes about two seconds."));
        EXPECT_EQ(hero.eyebrow.label, "Measuring");
        EXPECT_EQ(hero.eyebrow.level, std::nullopt);
        EXPECT_TRUE(hero.dials.dial && hero.dials.dial->isEmpty) << "nothing was found";
        EXPECT_TRUE(suspectsModel(hub).isPending && suspectsModel(hub).rows.empty());
        EXPECT_EQ(suspectsModel(hub).caption, "first list pending");
        EXPECT_TRUE(adviceModel(hub).isPending && adviceModel(hub).items.empty());
        EXPECT_EQ(menuBarModel(hub, true, false).tooltip, "Looking…");

        stage.wallSeconds += 10;
        hub.tick();
        EXPECT_EQ(heroModel(hub, stage.settings).detail, "No list of processes has come yet. Vantoro keeps trying.");
        EXPECT_TRUE(everyText(stage).filter(zero).isEmpty()) << "the list would bring these figures";
    }
}

TEST(LookingTests, ShowsWhatTheSensorsFoundWithoutAVerdictOnIt) {
    Stage stage;
    stage.sensors->fanList = {{.index = 0, .rpm = 5200, .minRPM = 1200, .maxRPM = 6000}};
    stage.sensors->temperatures = {.soc = 97, .socMean = 91};
    stage.hub.tick();
    const FanRotorFigures rotor = dialsModel(stage.hub).rotors.at(0);
    EXPECT_EQ(rotor.figure, "5,200");
    EXPECT_EQ(rotor.position, std::nullopt) << "no colour, no share";
    const auto fact = [&](const char* title) {
        for (const FactModel& one : factsModel(stage.hub).facts)
            if (one.title == title)
                return one;
        return FactModel();
    };
    EXPECT_EQ(fact("Chip").value, "—");
    EXPECT_EQ(fact("Chip").detail, "first sample pending");
    EXPECT_FALSE(menuBarModel(stage.hub, true, false).secondsPerTurn.has_value());
    stage.wallSeconds += 10;
    stage.hub.tick();
    EXPECT_EQ(fact("Chip").value, "97 °C") << "it exists, and there is nothing more to wait for";
    EXPECT_EQ(fact("CPU").value, "—");
    EXPECT_EQ(menuBarPanelModel(stage.hub, stage.settings).figures.at(1).figure, "97°C");
}

TEST(LookingTests, TheWindowGoesFromLookingToTheVerdictInOneStep) {
    Stage stage;
    stage.makeCores();
    MainWindow window(stage.context, Simulation::none, [] {});
    window.show();
    stage.hub.tick();
    stage.picture(window, MainWindow::usualSize);
    auto* const explain = window.findChild<FooterButton*>();
    EXPECT_FALSE(explain->isEnabled());
    QTest::keyClick(explain, Qt::Key_Space);
    QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(window.findChild<ReportSheet*>(), nullptr);
    EXPECT_FALSE(stage.clock.isBeating()) << "a skeleton is at rest";

    stage.play("design-fanless.jsonl.gz");
    EXPECT_TRUE(explain->isEnabled());
    QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier);
    EXPECT_NE(window.findChild<ReportSheet*>(), nullptr);
}

} // namespace
} // namespace vantoro
