// Advice and the ending of applications: what is said, and that nothing is ended without an answer.
#include "Views/AdviceModel.h"
#include "Views/NowView.h"
#include "Views/QuitAlert.h"

#include "Support/HistoryBuilder.h"
#include "Views/Stage.h"

#include <cstdlib>
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
    const BusyPane pane;
    const AdviceModel model = adviceModel(pane.stage.hub);
    ASSERT_EQ(model.items.size(), 2U);
    EXPECT_EQ(model.items[0].text, "Xcode is doing the work. Closing the tab, document or project it's busy with is "
                                   "usually enough.");
    EXPECT_EQ(model.items[1].text, "Quit Xcode");
    EXPECT_EQ(model.items[1].note, "Ends all 3 processes at once. Unsaved changes are lost.");
    const BusyPane alone(1);
    EXPECT_EQ(adviceModel(alone.stage.hub).items[1].note, "Ends this process at once. Unsaved changes are lost.");
}

TEST(QuitTests, AsksFirstAndEndsExactlyTheGroupsProcesses) {
    BusyPane pane;
    QuitAlert* alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(alert)->text(QAccessible::Name), "Quit Xcode?");
    EXPECT_TRUE(pane.stage.killed.empty());
    pane.stage.seconds += 1;
    pane.stage.clock.beat();
    if (const char* const folder = std::getenv("VANTORO_PICTURES"); folder != nullptr)
        pane.now.grab().save(QString(folder) + "/quit-alert.png");
    EXPECT_EQ(pane.ask(), alert) << "one question at a time";

    QTest::mouseClick(alert->cancel(), Qt::LeftButton);
    EXPECT_EQ(pane.alert(), nullptr);
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        alert = pane.ask();
        ASSERT_NE(alert, nullptr);
        QTest::keyClick(alert, key);
        EXPECT_EQ(pane.alert(), nullptr);
    }
    EXPECT_TRUE(pane.stage.killed.empty());

    alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    EXPECT_EQ(pane.stage.killed, (std::vector<std::int32_t>{100, 101, 102}));
    EXPECT_EQ(pane.alert(), nullptr);
}

TEST(QuitTests, WhatIsGoneOrOnlyRecordedIsNotEnded) {
    BusyPane pane;
    QuitAlert* alert = pane.ask();
    ASSERT_NE(alert, nullptr);
    // Meanwhile it went by itself, and its number is another's.
    pane.feed({process(100, "Firefox", 200)}, 120);
    QTest::mouseClick(alert->confirm(), Qt::LeftButton);
    EXPECT_TRUE(pane.stage.killed.empty());
    EXPECT_FALSE(quitModel(pane.stage.hub, 101).has_value());
    EXPECT_FALSE(quitModel(pane.stage.hub, 0).has_value());

    BusyPane replay;
    replay.stage.hub.beginReplay("MacBook");
    alert = replay.ask();
    ASSERT_NE(alert, nullptr);
    EXPECT_FALSE(alert->confirm()->isEnabled());
}

} // namespace
} // namespace vantoro
