// What surrounds the panes: the second launch, the badge, the desktop's wishes.
#include "Views/ControlBar.h"
#include "Views/SingleInstance.h"
#include "Views/SystemLooks.h"

#include "Support/EventLoop.h"
#include "Views/Stage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::Stage;
using testing::waitUntil;

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
    EXPECT_EQ(badge(stage.hub, false), Badge());
    EXPECT_EQ(badge(stage.hub, true).text, "Simulated");
    stage.hub.beginReplay("Another Mac");
    EXPECT_EQ(windowTitle(badge(stage.hub, false)), "Vantoro — Replay");
    ControlBar bar(stage.look);
    bar.showBadge(badge(stage.hub, false));
    std::vector<Pane> chosen;
    QObject::connect(&bar, &ControlBar::paneChosen, &bar, [&chosen](Pane pane) { chosen.push_back(pane); });
    bar.resize(1040, 52);
    bar.show();
    QTest::mouseClick(bar.childAt(564, 26), Qt::LeftButton, Qt::NoModifier,
                      bar.childAt(564, 26)->mapFrom(&bar, QPoint(564, 26)));
    EXPECT_EQ(chosen, std::vector<Pane>{Pane::timeline});
}

} // namespace
} // namespace vantoro
