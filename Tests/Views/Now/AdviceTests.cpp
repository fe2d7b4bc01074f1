// Advice and the ending of applications: what is said, and that nothing is ended without an answer.
#include "Views/Now/NowModel.h"
#include "Views/Now/NowView.h"
#include "Views/Suspects/QuitAlert.h"
#include "Views/Suspects/SuspectsModel.h"

#include "Support/HistoryBuilder.h"
#include "Views/Stage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using namespace testing;

/// A fan machine that Xcode's processes work hard, and its Now pane.
struct BusyPane {
    explicit BusyPane(int processes = 3) {
        feed(application(100, "Xcode", 300, processes, ProcessKind::userApp), 90);
        stage.picture(now, {1040, 778});
    }

    void feed(const std::vector<ProcessSample>& rows, int seconds) {
        for (int i = 0; i < seconds; i += 2) {
            stage.hub.accept(at(time, fanMachine(0.6, rows)));
            time += 2;
        }
    }

    Button* button(const QString& text) {
        for (Button* const found : now.findChildren<Button*>())
            if (found->text() == text && found->isVisible())
                return found;
        return nullptr;
    }

    /// The question, once the button in the advice was pressed.
    QuitAlert* ask() {
        if (Button* const quit = button("Quit Xcode"); quit != nullptr)
            QTest::mouseClick(quit, Qt::LeftButton);
        return alert();
    }

    /// One look at the processes, so many seconds later.
    void look(double seconds) {
        stage.seconds += seconds;
        stage.clock.beat();
        stage.hub.quits().look();
    }

    QuitAlert* alert() {
        for (QuitAlert* const found : now.findChildren<QuitAlert*>())
            if (found->isVisible())
                return found;
        return nullptr;
    }

    Stage stage;
    UnixSeconds time = builtNow;
    NowView now{stage.context};
};

TEST(AdviceModelTests, ItemsComeInOrderWithWhatAQuitWouldEnd) {
    BusyPane pane;
    const AdviceModel model = adviceModel(pane.stage.hub);
    ASSERT_EQ(model.items.size(), 2U);
    EXPECT_EQ(model.items[0].text, "Xcode is doing the work. Closing the tab, document or project it's busy with is "
                                   "usually enough.");
    EXPECT_EQ(model.items[1].text, "Quit Xcode");
    EXPECT_EQ(model.items[1].note, "Asks all 3 processes to end. What they have not saved is lost.");
    const BusyPane alone(1);
    EXPECT_EQ(adviceModel(alone.stage.hub).items[1].note, "Asks this process to end. What it has not saved is lost.");
}

TEST(QuitTests, CountsWhatIsAliveAndTheSameEverywhere) {
    // Many short-lived processes of one name: the list knows the last of them, the verdict those of a minute too.
    BusyPane pane;
    for (int round = 0; round < 8; ++round)
        pane.feed(application(200 + 3 * round, "Xcode", 300, 3, ProcessKind::userApp), 4);
    for (const std::int32_t pid : {219, 221, 222})
        pane.stage.processes->start(pid);
    const AdviceModel advice = adviceModel(pane.stage.hub);
    ASSERT_EQ(advice.items.size(), 2U);
    EXPECT_EQ(advice.items[1].note, "Asks all 3 processes to end. What they have not saved is lost.");
    EXPECT_TRUE(suspectsModel(pane.stage.hub).rows[0].about.endsWith("3 processes"));
    pane.now.refresh();
    ASSERT_NE(pane.ask(), nullptr);
    EXPECT_EQ(pane.alert()->model().text, "Vantoro asks its 3 processes to end, and the ones they have started since. "
                                          "What they have not saved is lost.");
    pane.alert()->close();

    // Without a living process nothing is offered; with this program among them neither.
    pane.stage.processes->alive.clear();
    EXPECT_EQ(adviceModel(pane.stage.hub).items.size(), 1U);
    EXPECT_FALSE(suspectsModel(pane.stage.hub).rows[0].offersQuit);
    BusyPane own;
    own.feed(application(pane.stage.processes->ownPid(), "Xcode", 300, 3, ProcessKind::userApp), 20);
    EXPECT_FALSE(suspectsModel(own.stage.hub).rows[0].offersQuit);
}

TEST(QuitTests, AsksBeforeAnythingIsAskedOfAProcess) {
    BusyPane pane;
    QuitAlert* alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(alert)->text(QAccessible::Name), "Quit Xcode?");
    EXPECT_EQ(pane.ask(), alert) << "one question at a time";
    QTest::mouseClick(alert->cancel(), Qt::LeftButton);
    EXPECT_EQ(pane.alert(), nullptr);
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        alert = pane.ask();
        ASSERT_NE(alert, nullptr);
        QTest::keyClick(alert, key);
        EXPECT_EQ(pane.alert(), nullptr);
    }
    EXPECT_TRUE(pane.stage.processes->sent.empty());
}

TEST(QuitTests, WhatEndsWhenAskedIsToldAndLeavesTheList) {
    BusyPane pane;
    for (const std::int32_t pid : {100, 101, 102})
        pane.stage.processes->start(pid);
    QuitAlert* const alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    EXPECT_EQ(pane.stage.processes->sent.size(), 3U);
    pane.look(0.2);
    EXPECT_EQ(pane.alert(), nullptr) << "closes by itself";
    const AdviceModel advice = adviceModel(pane.stage.hub);
    ASSERT_TRUE(advice.result.has_value());
    EXPECT_EQ(advice.result->text, "Xcode has ended");
    EXPECT_TRUE(advice.result->detail.startsWith("3 processes, at ")) << advice.result->detail.toStdString();
    EXPECT_EQ(advice.items.size(), 1U) << "in place of the button";
    EXPECT_TRUE(suspectsModel(pane.stage.hub).rows.empty());
    pane.look(8);
    EXPECT_FALSE(adviceModel(pane.stage.hub).result.has_value());
    EXPECT_EQ(pane.button("Quit Xcode"), nullptr) << "it is not offered again";

    pane.feed({process(900, "Xcode", 200)}, 10);
    pane.stage.processes->start(900);
    EXPECT_EQ(suspectsModel(pane.stage.hub).rows.size(), 1U) << "opened again";
}

TEST(QuitTests, WhatIgnoresBeingAskedIsForcedOnceThatIsAskedFor) {
    BusyPane pane;
    for (const std::int32_t pid : {100, 101, 102})
        pane.stage.processes->start(pid).ignoresAsking = pid != 100;
    QuitAlert* alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    pane.look(3);
    ASSERT_EQ(pane.alert(), alert);
    EXPECT_EQ(alert->model().title, "Quitting Xcode");
    EXPECT_EQ(alert->model().text, "1 of 3 processes have ended.");
    EXPECT_EQ(alert->model().wait, "2 more seconds before Force Quit");
    EXPECT_FALSE(alert->confirm()->isEnabled());
    EXPECT_EQ(suspectsModel(pane.stage.hub).rows[0].quitting, "quitting…");
    pane.look(2);
    EXPECT_EQ(alert->model().title, "Xcode is still running");
    EXPECT_EQ(alert->model().text, "2 of its 3 processes did not end within 5 seconds. Force Quit ends them at once; "
                                   "they cannot save anything.");
    EXPECT_TRUE(alert->confirm()->isEnabled());
    EXPECT_FALSE(adviceModel(pane.stage.hub).result.has_value()) << "the alert says it";

    QTest::mouseClick(alert->cancel(), Qt::LeftButton);
    EXPECT_EQ(pane.alert(), nullptr);
    EXPECT_EQ(adviceModel(pane.stage.hub).result->detail, "2 processes ignore being asked");
    EXPECT_TRUE(suspectsModel(pane.stage.hub).rows[0].offersForce);
    QTest::mouseClick(pane.button("Force Quit…"), Qt::LeftButton);
    alert = pane.alert();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->model().title, "Xcode is still running");
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    pane.look(0.2);
    EXPECT_EQ(pane.alert(), nullptr);
    EXPECT_TRUE(pane.stage.processes->alive.empty());
    EXPECT_EQ(adviceModel(pane.stage.hub).result->text, "Xcode has ended");
}

TEST(QuitTests, WhatIsGoneRefusedOrOnlyRecordedIsNotEnded) {
    BusyPane pane;
    QuitAlert* alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    // Meanwhile it went by itself, and its number is another's.
    pane.stage.processes->start(100, 1, 99);
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    EXPECT_EQ(pane.stage.processes->alive.size(), 1U);
    EXPECT_EQ(pane.alert(), nullptr);
    EXPECT_EQ(adviceModel(pane.stage.hub).result->text, "Xcode had already ended");

    BusyPane refused;
    for (const std::int32_t pid : {100, 101, 102})
        refused.stage.processes->start(pid).isRefused = pid != 100;
    alert = refused.ask();
    ASSERT_NE(alert, nullptr);
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    refused.look(0.2);
    EXPECT_EQ(refused.alert(), nullptr);
    EXPECT_EQ(adviceModel(refused.stage.hub).result->text, "2 processes may not be ended");
    EXPECT_EQ(adviceModel(refused.stage.hub).result->detail, "they belong to another user");

    BusyPane replay;
    replay.stage.hub.beginReplay("MacBook");
    replay.now.refresh();
    alert = replay.ask();
    ASSERT_NE(alert, nullptr);
    EXPECT_FALSE(alert->confirm()->isEnabled());
    EXPECT_TRUE(replay.stage.processes->sent.empty());
}

} // namespace
} // namespace vantoro
