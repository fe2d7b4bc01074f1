// The window as a whole: its panes by pointer and by keyboard, the sheet over it, and what happens without it.
#include "Design/Controls/Sheet.h"
#include "Views/Report/ReportSheet.h"
#include "Views/Shell/MainWindow.h"
#include "Views/Shell/Shell.h"
#include "Views/Timeline/TimelineView.h"

#include "Support/EventLoop.h"
#include "Views/Stage.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::clickSegment;
using testing::Stage;
using testing::waitUntil;

TEST(MainWindowTests, PanesComeByPointerAndByKeyboardAndTheReportOverThem) {
    Stage stage;
    int starts = 0;
    MainWindow window(stage.context, Simulation::none, [&] {
        ++starts;
        stage.play("design-fans.jsonl.gz");
    });
    EXPECT_EQ(starts, 0);
    window.show();
    stage.settle();
    EXPECT_EQ(starts, 1) << "the first showing starts the hub";
    EXPECT_EQ(window.size(), MainWindow::usualSize);
    clickSegment(window, static_cast<qsizetype>(Pane::timeline));
    EXPECT_EQ(window.pane(), Pane::timeline);
    stage.settle();
    ASSERT_NE(window.findChild<TimelineView*>(), nullptr);
    EXPECT_TRUE(window.findChild<TimelineView*>()->isVisible());
    QTest::keyClick(&window, Qt::Key_4, Qt::ControlModifier);
    EXPECT_EQ(window.pane(), Pane::sensors);
    EXPECT_FALSE(window.findChild<TimelineView*>()->isVisible()) << "and is drawn no more";
    QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier);
    QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier);
    stage.settle();
    ASSERT_EQ(window.findChildren<ReportSheet*>().size(), 1) << "one report at a time";
    QTest::keyClick(window.findChild<ReportSheet*>(), Qt::Key_Escape);
    EXPECT_FALSE(window.findChild<ReportSheet*>()->isVisible());

    const QSignalSpy settings(&window, &MainWindow::settingsRequested);
    const QSignalSpy quit(&window, &MainWindow::quitRequested);
    QTest::keyClick(&window, Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(settings.count(), 1);
    EXPECT_EQ(quit.count(), 1);
}

TEST(MainWindowTests, NoShortcutReachesTheWindowBelowASheet) {
    Stage stage;
    MainWindow window(stage.context, Simulation::none, [&] { stage.play("design-fans.jsonl.gz"); });
    window.show();
    stage.settle();
    const QPointer<NoticeAlert> alert =
        new NoticeAlert(stage.look, window, "Quit make?", "Vantoro asks its processes to end.", "Cancel");
    alert->open(); // deletes itself once closed, on a busy machine before it is asked
    const QSignalSpy quit(&window, &MainWindow::quitRequested);
    const QSignalSpy settings(&window, &MainWindow::settingsRequested);
    const auto press = [&window] {
        for (const Qt::Key key : {Qt::Key_3, Qt::Key_E, Qt::Key_W, Qt::Key_Q, Qt::Key_Comma})
            QTest::keyClick(window.windowHandle(), key, Qt::ControlModifier);
        QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
    };
    press();
    // Not even where something took the keyboard away.
    for (QWidget* const below : window.findChildren<QWidget*>())
        if (below->focusPolicy() != Qt::NoFocus && !alert->isAncestorOf(below) && below != alert)
            below->setFocus(Qt::OtherFocusReason);
    press();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.pane(), Pane::now);
    EXPECT_EQ(window.findChild<ReportSheet*>(), nullptr);
    EXPECT_EQ(quit.count() + settings.count(), 0);
    QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(alert && alert->isVisible());
    QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(window.pane(), Pane::timeline);
}

TEST(MainWindowTests, ShowsTheBarAloneUntilSomethingIsKnownAndRemembersItsPlace) {
    Stage stage;
    {
        MainWindow window(stage.context, Simulation::sensors, [] {});
        window.show();
        stage.settle();
        EXPECT_EQ(window.findChild<TimelineView*>(), nullptr);
        window.showPane(Pane::timeline);
        stage.hub.tick();
        EXPECT_NE(window.findChild<TimelineView*>(), nullptr) << "the pane that was asked for meanwhile";
        EXPECT_EQ(static_cast<QWidget&>(window).windowTitle(), "Vantoro — Simulated");
        window.resize(900, 700);
        stage.settle();
        QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
        EXPECT_FALSE(window.isVisible());
    }
    const MainWindow again(stage.context, Simulation::sensors, [] {});
    EXPECT_EQ(again.size(), QSize(900, 700));
}

TEST(MainWindowTests, AsksNothingOfTheHubWhileNobodyCanSeeIt) {
    class CountingView : public View {
    public:
        CountingView(ViewContext& context, HubSignal shown) : View(context) { shows({shown}); }
        void refresh() override { ++refreshes; }
        int refreshes = 0;
    };
    Stage stage;
    CountingView view(stage.context, &SensorHub::verdictChanged);
    CountingView other(stage.context, &SensorHub::suspectsChanged);
    view.show();
    other.show();
    stage.hub.tick();
    EXPECT_EQ(view.refreshes, 2) << "shown, then published, twice in one transaction";
    EXPECT_EQ(other.refreshes, 1) << "nothing that it shows has changed";
    stage.settings.store(Setting::temperatureUnit, "F");
    EXPECT_EQ(std::exchange(other.refreshes, 1), 2) << "all is written anew";
    view.refreshes = 2;
    stage.clock.setPaused(true);
    stage.hub.tick();
    stage.hub.tick();
    EXPECT_EQ(view.refreshes, 2);
    stage.clock.setPaused(false);
    EXPECT_EQ(view.refreshes, 3) << "up to date when it is seen again";
}

TEST(ShellTests, TheSamplingOutlivesTheWindowAndNothingMovesWithoutOne) {
    Stage stage;
    int starts = 0;
    Shell shell(stage.hub, stage.settings, stage.motion, {.start = [&] {
                    ++starts;
                    stage.play("design-fans.jsonl.gz");
                }});
    shell.raiseWindow();
    ASSERT_NE(shell.window(), nullptr);
    EXPECT_TRUE(waitUntil([&] { return shell.window()->canBeSeen(); }));
    EXPECT_TRUE(shell.isMoving()) << "the rotors turn";
    shell.window()->close();
    EXPECT_TRUE(waitUntil([&] { return shell.window() == nullptr; }));
    EXPECT_FALSE(shell.isMoving());
    const std::size_t samples = stage.hub.history().snapshots().size();
    stage.hub.accept(stage.hub.snapshot());
    EXPECT_EQ(stage.hub.history().snapshots().size(), samples + 1);
    shell.raiseWindow();
    EXPECT_TRUE(shell.window()->isVisible());
    EXPECT_EQ(starts, 1) << "opened again, not started again";
}

TEST(ShellTests, AProgramBroughtToTheFrontWithoutAWindowOpensItWhereThereAreMenus) {
    Stage stage;
    for (const bool hasMenus : {true, false}) {
        Shell shell(stage.hub, stage.settings, stage.motion, {.hasMenus = hasMenus});
        shell.open();
        const auto comeToFront = [] {
            emit qApp->applicationStateChanged(Qt::ApplicationActive);
            QCoreApplication::processEvents();
        };
        const auto closeWindow = [&shell] {
            shell.window()->close();
            return waitUntil([&] { return shell.window() == nullptr; });
        };
        ASSERT_TRUE(closeWindow());
        comeToFront();
        EXPECT_EQ(shell.window() != nullptr, hasMenus);
        EXPECT_EQ(shell.menus() != nullptr, hasMenus);
        if (!hasMenus)
            continue;
        ASSERT_TRUE(closeWindow());
        emit qApp->applicationStateChanged(Qt::ApplicationInactive);
        QCoreApplication::processEvents();
        EXPECT_EQ(shell.window(), nullptr);
        shell.openSettings();
        comeToFront();
        EXPECT_EQ(shell.window(), nullptr) << "the settings were what was asked for";
    }
}

TEST(ShellTests, TheMenusWorkWithAndWithoutAWindow) {
    Stage stage;
    int abouts = 0;
    Shell shell(stage.hub, stage.settings, stage.motion, {.hasMenus = true, .showAbout = [&] { ++abouts; }});
    shell.open();
    QStringList titles;
    std::map<QString, QAction*> items;
    for (const QAction* menu : shell.menus()->bar().actions()) {
        titles.append(menu->text());
        for (QAction* item : menu->menu()->actions())
            items[item->text()] = item;
    }
    EXPECT_EQ(titles, (QStringList{"Vantoro", "Window", "Help"}));
    EXPECT_EQ(items.at("Settings…")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma));
    EXPECT_EQ(items.at("Settings…")->menuRole(), QAction::PreferencesRole);
    EXPECT_EQ(items.at("About Vantoro")->menuRole(), QAction::AboutRole);
    EXPECT_EQ(items.at("Quit Vantoro")->menuRole(), QAction::QuitRole);
    EXPECT_EQ(items.at("Close")->menuRole(), QAction::NoRole);
    items.at("About Vantoro")->trigger();
    EXPECT_EQ(abouts, 1);

    ASSERT_TRUE(waitUntil([] { return QApplication::activeWindow() != nullptr; }));
    EXPECT_TRUE(items.at("Minimize")->isEnabled());
    items.at("Close")->trigger();
    ASSERT_TRUE(waitUntil([&] { return shell.window() == nullptr; }));
    emit shell.menus()->bar().actions().at(1)->menu()->aboutToShow();
    EXPECT_FALSE(items.at("Close")->isEnabled()) << "there is nothing to close";
    items.at("Open Vantoro")->trigger();
    EXPECT_NE(shell.window(), nullptr);
}

} // namespace
} // namespace vantoro
