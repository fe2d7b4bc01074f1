// What surrounds the panes: the second launch, the badge, the desktop's wishes.
#include "Views/Settings/SettingsView.h"
#include "Views/Shared/ScreenRoom.h"
#include "Views/Shared/Words.h"
#include "Views/Shell/ControlBar.h"
#include "Views/Shell/LooksFollower.h"
#include "Views/Shell/Shell.h"
#include "Views/Shell/SingleInstance.h"

#include "Support/EventLoop.h"
#include "Views/Stage.h"

#include <QSignalSpy>
#include <QToolTip>
#include <QTranslator>

namespace vantoro {
namespace {

using testing::clickSegment;
using testing::Stage;
using testing::waitUntil;

TEST(WordsTests, TextsComeFromTheLocalesCatalogueAndAreEnglishWithoutOne) {
    const QStringList folders{"/nowhere", QString(VANTORO_FIXTURES) + "/i18n"};
    EXPECT_FALSE(installCatalogue(QLocale("fr_FR"), folders));
    EXPECT_TRUE(installCatalogue(QLocale("de_AT"), folders));
    EXPECT_EQ(vantoro::tr("Settings"), "Einstellungen");
    EXPECT_EQ(vantoro::tr("Maximum"), "Maximum") << "not in it";
    qDeleteAll(qApp->findChildren<QTranslator*>());
    EXPECT_EQ(vantoro::tr("Settings"), "Settings");
}

TEST(SingleInstanceTests, TheSecondLaunchRaisesTheFirst) {
    const QTemporaryDir folder;
    qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8());
    auto first = std::make_unique<SingleInstance>("vantoro-test");
    const QSignalSpy raised(first.get(), &SingleInstance::raised);
    EXPECT_FALSE(first->isSecond());
    // Both live on one thread here: the first answers while the second waits.
    bool isSecond = false;
    std::unique_ptr<QThread> launch(
        QThread::create([&isSecond] { isSecond = SingleInstance("vantoro-test").isSecond(); }));
    launch->start();
    EXPECT_TRUE(waitUntil([&] { return launch->isFinished(); }));
    EXPECT_TRUE(isSecond);
    EXPECT_EQ(raised.count(), 1);
    EXPECT_FALSE(SingleInstance("vantoro-other").isSecond());
    first.reset();
    EXPECT_FALSE(SingleInstance("vantoro-test").isSecond()) << "gone is gone, and what it left behind is no obstacle";
}

TEST(ScreenRoomTests, AFrameIsMovedAndOnlyThenShrunk) {
    const QRect room(0, 27, 1366, 741);
    using Case = std::tuple<QRect, QRect>;
    for (const auto& [frame, fitted] :
         {Case{{100, 100, 800, 600}, {100, 100, 800, 600}}, Case{{163, 27, 1040, 859}, {163, 27, 1040, 741}},
          Case{{1300, 700, 820, 590}, {546, 178, 820, 590}}, Case{{-500, -10, 820, 590}, {0, 27, 820, 590}},
          Case{{2000, 1500, 1900, 1300}, {0, 27, 1366, 741}}})
        EXPECT_EQ(fittedInto(frame, room), fitted) << frame.x() << ' ' << frame.height();
}

TEST(ScreenRoomTests, NoFirstWindowReachesBeyondASmallScreen) {
    Stage stage;
    {
        MainWindow large(stage.context, Simulation::none, {});
        large.setGeometry(40, 60, 1700, 1000);
        large.show();
        large.close();
    }
    Shell shell(stage.hub, stage.settings, stage.motion, {.start = [&] { stage.play("design-fans.jsonl.gz"); }});
    shell.raiseWindow();
    shell.openSettings();
    const auto fits = [](const QWidget* window) {
        return window->screen()->availableGeometry().contains(window->frameGeometry());
    };
    QWidget* settings = nullptr;
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (auto* const found = qobject_cast<SettingsView*>(window))
            settings = found;
    ASSERT_NE(settings, nullptr);
    EXPECT_TRUE(waitUntil([&] { return fits(shell.window()) && fits(settings); }))
        << shell.window()->width() << 'x' << shell.window()->height();
    EXPECT_LE(shell.window()->minimumWidth(), 800) << "a screen that is smaller still";
}

class ScriptedLooks : public SystemLooks {
public:
    State state() const override { return now; }
    void choose(std::optional<bool> dark) override { chosen = dark; }
    void watch(std::function<void()> changed) override { onChange = std::move(changed); }

    State now;
    std::optional<bool> chosen;
    std::function<void()> onChange;
};

TEST(LooksFollowerTests, TheUsersChoiceWinsOverTheSystemsAndBothApplyLive) {
    Theme theme;
    const auto looks = std::make_shared<ScriptedLooks>();
    LooksFollower follower(theme, looks);
    const auto isDark = [&] { return theme.appearance() == Theme::Appearance::dark; };
    looks->now = {.isDark = true, .reducesMotion = true};
    looks->onChange();
    EXPECT_TRUE(isDark());
    EXPECT_TRUE(theme.reducesMotion());
    EXPECT_EQ(theme.color(Tone::accent), Theme(Theme::Appearance::dark).color(Tone::accent));
    looks->now.accent = SystemLooks::Accent{1, 0.6, 0.2};
    looks->onChange();
    EXPECT_EQ(theme.color(Tone::accent).name(), "#ff9933");
    follower.applyAppearance("light");
    EXPECT_FALSE(isDark());
    EXPECT_EQ(looks->chosen, false) << "the frame too";
    follower.applyAppearance("Dark");
    EXPECT_TRUE(isDark()) << "not a word it knows: the system's again";
    EXPECT_EQ(looks->chosen, std::nullopt);
    looks->now.isDark = false;
    looks->onChange();
    EXPECT_FALSE(isDark());
    follower.applyAppearance("dark");
    EXPECT_TRUE(isDark());
}

TEST(ControlBarTests, SwitchesPanesAndSaysWhatIsNotThisMachine) {
    Stage stage;
    EXPECT_EQ(badge(stage.hub, Simulation::none), Badge());
    EXPECT_EQ(badge(stage.hub, Simulation::sensors).text, "Simulated");
    EXPECT_EQ(badge(stage.hub, Simulation::fanlessness).text, "Simulated");
    EXPECT_FALSE(badge(stage.hub, Simulation::fanlessness).tooltip.contains("sensors are simulated"));
    stage.hub.beginReplay("Another Mac");
    EXPECT_EQ(windowTitle(badge(stage.hub, Simulation::none)), "Vantoro — Replay");
    ControlBar bar(stage.look);
    bar.showBadge(badge(stage.hub, Simulation::none));
    QWidget* const mark = bar.findChildren<QWidget*>(Qt::FindDirectChildrenOnly).at(1);
    EXPECT_TRUE(mark->focusPolicy() & Qt::TabFocus) << "between the panes and the settings";
    std::vector<Pane> chosen;
    QObject::connect(&bar, &ControlBar::paneChosen, &bar, [&chosen](Pane pane) { chosen.push_back(pane); });
    bar.resize(1040, 52);
    bar.show();
    clickSegment(bar, static_cast<qsizetype>(Pane::timeline));
    EXPECT_EQ(chosen, std::vector<Pane>{Pane::timeline});
    bar.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&bar));
    mark->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(waitUntil([] { return QToolTip::isVisible(); })) << "what hovering over it would say";
}

} // namespace
} // namespace vantoro
