// Updates in the interface: what the chip, the panel's row and the settings say of each phase, and what they start.
#include "Design/Controls/Button.h"
#include "Model/Updates/Updates.h"
#include "Views/MenuBar/MenuBarPanel.h"
#include "Views/Settings/SettingsControls.h"
#include "Views/Settings/SettingsView.h"
#include "Views/Shell/MainWindow.h"
#include "Views/Shell/Shell.h"
#include "Views/Updates/UpdateParts.h"

#include "Support/EventLoop.h"
#include "Views/Updates/UpdatingStage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::Stage;
using testing::UpdatingStage;
using testing::waitUntil;
using Kind = UpdatePhase::Kind;
using Calls = std::vector<std::string>;

constexpr double noon = UpdatingStage::noon;
constexpr double day = 86400;
const UpdateError unreachable{std::string(urlErrorDomain), -1009, "offline", {}, {}};

UpdateState state(Kind kind, double progress = 0) {
    UpdateState state{.phase = {.kind = kind, .release = Release{"1.3", "130", "Quieter.\nFaster."}, .message = {}},
                      .progress = progress,
                      .isAnnounced = true,
                      .checksAutomatically = true,
                      .now = noon,
                      .currentVersion = "1.2"};
    if (kind == Kind::failed) {
        state.phase.message = "The update didn't finish.";
        state.phase.detail = "Nothing was changed. Try again in a moment.";
    }
    return state;
}

TEST(UpdatesModelTests, SaysEachPhaseInItsWords) {
    using Case = std::tuple<Kind, QString, QString, bool, bool, std::optional<UpdateCommand>>;
    constexpr auto none = std::nullopt;
    for (const auto& [kind, text, icon, hasRow, canPress, command] :
         {Case{Kind::idle, "", "", false, true, none},
          Case{Kind::checking, "Looking for a newer version…", "arrow.down.circle", true, false, none},
          Case{Kind::current, "This is the latest version.", "checkmark.seal", false, true, none},
          Case{Kind::updated, "Updated. This is the latest version.", "checkmark.seal", false, true, none},
          Case{Kind::available, "Vantoro 1.3 is available", "arrow.down.circle", true, true, UpdateCommand::install},
          Case{Kind::needsNewerSystem, "Vantoro 1.3 needs a newer macOS", "arrow.down.circle", false, true, none},
          Case{Kind::downloading, "Downloading 1.3 · 45%", "", true, false, none},
          Case{Kind::installing, "Installing 1.3…", "", true, false, none},
          Case{Kind::failed, "The update didn't finish.", "exclamationmark.triangle.fill", true, true,
               UpdateCommand::tryAgain}}) {
        const UpdateState now = state(kind, 0.45);
        const UpdateLine chip = updateChip(now);
        EXPECT_EQ(chip.text, text);
        EXPECT_EQ(chip.mark.icon, icon) << text.toStdString();
        EXPECT_EQ(chip.command, command) << text.toStdString();
        EXPECT_EQ(updateRow(now), hasRow ? chip : UpdateLine()) << text.toStdString();
        const UpdatesGroupModel group = updatesGroup(now);
        EXPECT_EQ(group.status, text.isEmpty() ? "Checks once a day." : text);
        EXPECT_EQ(group.canPress, canPress) << text.toStdString();
        EXPECT_EQ(group.command, command.value_or(UpdateCommand::check));
    }
    EXPECT_EQ(updateChip(state(Kind::downloading, 0.45)).mark.ring, 0.45);
    EXPECT_TRUE(updateChip(state(Kind::installing)).mark.turns);
    EXPECT_EQ(updateChip(state(Kind::available)).more, "Quieter.\nFaster.");
    UpdateState cancellable = state(Kind::downloading, 0.45);
    cancellable.canCancel = true;
    EXPECT_EQ(updateChip(cancellable).command, UpdateCommand::cancel);
    EXPECT_EQ(updateRow(cancellable).command, UpdateCommand::cancel);
    EXPECT_TRUE(updatesGroup(cancellable).canPress);
    UpdateState toRead = state(Kind::available);
    toRead.isToReadOnly = true;
    EXPECT_EQ(updateChip(toRead).command, std::nullopt);
    EXPECT_EQ(updateChip(state(Kind::failed)).more, "Nothing was changed. Try again in a moment.");
    UpdateState unknown = state(Kind::failed);
    unknown.phase.release.reset();
    EXPECT_EQ(updateRow(unknown), UpdateLine()) << "a check that failed is no news for the panel";
    UpdateState unannounced = state(Kind::checking);
    unannounced.isAnnounced = false;
    EXPECT_EQ(updateRow(unannounced), UpdateLine());
}

TEST(UpdatesModelTests, SaysWhenItChecksAndWhatItAsks) {
    qputenv("TZ", "UTC");
    using Case = std::tuple<bool, std::optional<double>, QString>;
    for (const auto& [automatic, lastCheck, status] :
         {Case{true, std::nullopt, "Checks once a day."}, Case{false, std::nullopt, "Checks only when you ask."},
          Case{true, noon - day / 2, "Checked today."}, Case{false, noon - day / 2 - 1, "Checked yesterday."},
          Case{true, noon - 3 * day / 2, "Checked yesterday."},
          Case{true, noon - 3 * day / 2 - 1, "Checks once a day."},
          Case{false, noon + day, "Checks only when you ask."}}) {
        UpdateState now = state(Kind::idle);
        now.checksAutomatically = automatic;
        now.lastCheck = lastCheck;
        EXPECT_EQ(updatesGroup(now).status, status) << lastCheck.value_or(0) - noon;
    }
    const QString asked =
        "Vantoro asks updates.vantoro.example whether there's a newer version. That's the only request "
        "it makes: nothing about this Mac goes with it, and nothing is downloaded until you click "
        "Install.";
    EXPECT_EQ(updatesGroup(state(Kind::idle)).note, asked);
    EXPECT_EQ(updatesGroup(state(Kind::available)).note, "Quieter.\nFaster.\n\n" + asked);
    EXPECT_EQ(updatesGroup(state(Kind::idle)).switchNote, "once a day, and whenever you click Check Now");
}

TEST(UpdatesModelTests, HoldsWhatAFeedSaysWithinBounds) {
    UpdateState now = state(Kind::available);
    now.phase.release->version = std::string(5000, '9') + "\n1";
    std::string lines;
    for (int i = 0; i < 40; ++i)
        lines += "line " + std::to_string(i) + "\n";
    now.phase.release->notes = lines;
    EXPECT_LT(updateChip(now).text.size(), 60);
    EXPECT_TRUE(updateChip(now).more.endsWith("line 11\n…"));
    now.phase.release->notes = std::string(4000, 'x');
    EXPECT_EQ(updateChip(now).more.size(), 12 * 80 + 1);
    EXPECT_EQ(plainTooltip("<img src='x'>\n&"), "<qt>&lt;img src='x'&gt;<br>&amp;</qt>");
}

TEST(UpdatesTests, TryAgainRepeatsWhatFailed) {
    UpdatingStage stage;
    stage.updates.check();
    stage.engine->driver->showUpdaterError(unreachable, {});
    stage.updates.tryAgain(UpdateOrigin::settings);
    stage.find();
    stage.runLater();
    EXPECT_EQ(stage.engine->calls, (Calls{"check", "check", "dismiss"})) << "a check, and nothing is installed";
    stage.updates.install(UpdateOrigin::settings);
    stage.engine->driver->showUpdaterError(unreachable, {});
    stage.engine->calls.clear();
    stage.updates.tryAgain(UpdateOrigin::settings);
    stage.find();
    stage.runLater();
    EXPECT_EQ(stage.engine->calls, (Calls{"check", "install"}));
    EXPECT_EQ(stage.updates.phase().kind, Kind::downloading);
}

TEST(UpdateChipTests, StandsInTheBarAndInstallsByPointerAndByKeyboard) {
    UpdatingStage stage;
    stage.play("design-fans.jsonl.gz");
    MainWindow window(stage.context, Simulation::none, [] {});
    window.show();
    stage.settle();
    UpdateChip* const chip = window.findChild<UpdateChip*>();
    ASSERT_NE(chip, nullptr);
    EXPECT_FALSE(chip->isVisible());
    stage.find();
    stage.runLater();
    stage.settle();
    ASSERT_TRUE(chip->isVisible());
    EXPECT_EQ(chip->size(), chip->sizeHint());
    EXPECT_EQ(chip->toolTip(), "<qt>• Knows machines with three fans.<br>• Starts faster.</qt>");
    const Description what = chip->describe();
    EXPECT_EQ(what.role, QAccessible::Button);
    EXPECT_EQ(what.name, "Vantoro 1.3 is available");
    ASSERT_EQ(what.actions.size(), 1U);
    EXPECT_EQ(what.actions[0].name, "Install");

    const auto focused = [&] { return window.focusWidget(); };
    chip->setFocus(Qt::TabFocusReason);
    QTest::keyClick(chip, Qt::Key_Tab);
    EXPECT_EQ(static_cast<PaintedWidget*>(focused())->describe().name, "Settings");
    QTest::keyClick(focused(), Qt::Key_Backtab);
    EXPECT_EQ(focused(), chip);
    QTest::keyClick(chip, Qt::Key_Backtab);
    EXPECT_EQ(static_cast<PaintedWidget*>(focused())->describe().role, QAccessible::PageTabList);

    stage.engine->calls.clear();
    QTest::mouseClick(chip, Qt::LeftButton, Qt::NoModifier, {40, chip->height() / 2});
    EXPECT_EQ(stage.engine->calls, Calls()) << "the text is no button";
    QTest::mouseClick(chip, Qt::LeftButton, Qt::NoModifier, {chip->width() - 20, chip->height() / 2});
    EXPECT_EQ(stage.engine->calls, Calls{"check"});
    stage.engine->driver->showUpdaterError(unreachable, {});
    stage.settle();
    EXPECT_EQ(chip->describe().actions[0].name, "Try Again");
    QTest::keyClick(chip, Qt::Key_Return);
    EXPECT_EQ(stage.engine->calls, (Calls{"check", "check"}));
    EXPECT_EQ(chip->describe().role, QAccessible::StaticText);
}

TEST(UpdateChipTests, CancelsADownloadByPointerAndByKeyboard) {
    UpdatingStage stage;
    stage.play("design-fans.jsonl.gz");
    MainWindow window(stage.context, Simulation::none, [] {});
    window.show();
    stage.updates.install(UpdateOrigin::controlBar);
    stage.find();
    stage.runLater();
    UpdateChip* const chip = window.findChild<UpdateChip*>();
    const auto download = [&](const auto& act) {
        bool isCancelled = false;
        stage.engine->driver->showDownloadInitiated([&] { isCancelled = true; });
        stage.settle();
        EXPECT_EQ(chip->describe().actions.at(0).name, "Cancel");
        act();
        return isCancelled;
    };
    EXPECT_TRUE(download([&] {
        chip->setFocus(Qt::TabFocusReason);
        QTest::keyClick(chip, Qt::Key_Space);
    }));
    EXPECT_TRUE(download([&] {
        const auto word = [&] { return QPoint(chip->width() - 20, chip->height() / 2); };
        QTest::mousePress(chip, Qt::LeftButton, Qt::NoModifier, word());
        stage.engine->driver->showDownloadDidReceiveData(1'000'000);
        stage.settle();
        QTest::mouseRelease(chip, Qt::LeftButton, Qt::NoModifier, word());
    })) << "also where the figure goes on between press and release";
}

TEST(UpdateChipTests, KeepsClearOfTheSwitcherAtEveryWidthAndScale) {
    for (const double scale : {1.0, 1.5})
        for (const int width : {820, 960, 1040}) {
            UpdatingStage stage;
            stage.theme.setTextScale(scale);
            ControlBar bar(stage.look);
            bar.showBadge({.icon = "flask", .text = "Simulated", .tooltip = {}});
            UpdateLine line = updateChip(state(Kind::failed));
            line.text = "Not installed: it couldn't be verified.";
            bar.showUpdate(line);
            stage.picture(bar, {width, bar.sizeHint().height()});
            const UpdateChip* const chip = bar.findChild<UpdateChip*>();
            EXPECT_TRUE(chip->toolTip().contains("verified")) << "whatever is cut is told";
            EXPECT_GE(chip->height(), 24 * scale);
            const int switcherEnd = bar.findChild<SegmentedControl*>()->geometry().right();
            for (const PaintedWidget* const part : bar.findChildren<PaintedWidget*>(Qt::FindDirectChildrenOnly))
                if (part->x() > width / 2) {
                    EXPECT_GT(part->x(), switcherEnd) << width << ' ' << scale;
                }
            if (scale == 1) {
                EXPECT_EQ(chip->width() < 110, width < ControlBar::narrowWidth) << width;
                EXPECT_GT(chip->width(), 80) << "the word at least";
            }
        }
}

TEST(UpdateChipTests, TurnsOnlyWhileAnInstallationIsSeen) {
    Stage stage;
    UpdateChip chip(stage.look, nullptr);
    chip.show(updateChip(state(Kind::installing)));
    EXPECT_TRUE(stage.clock.isBeating());
    chip.hide();
    stage.clock.beat();
    EXPECT_FALSE(stage.clock.isBeating());
    chip.QWidget::show();
    EXPECT_TRUE(stage.clock.isBeating());
    chip.show(updateChip(state(Kind::downloading, 0.3)));
    stage.clock.beat();
    EXPECT_FALSE(stage.clock.isBeating());
}

TEST(UpdateRowTests, StandsInThePanelBeforeItsButtons) {
    UpdatingStage stage;
    stage.play("design-fans.jsonl.gz");
    MenuBarPanel panel(stage.context);
    panel.toggle({}, QPoint(400, 30));
    stage.settle();
    UpdateRow* const row = panel.findChild<UpdateRow*>();
    EXPECT_FALSE(row->isVisible());
    const int bare = panel.height();
    stage.find();
    stage.runLater();
    stage.settle();
    ASSERT_TRUE(row->isVisible());
    EXPECT_EQ(panel.height(), bare + row->height() + 1) << "a line and the row";
    Button* const install = row->findChild<Button*>();
    EXPECT_EQ(install->describe().name, "Install");
    install->setFocus(Qt::TabFocusReason);
    QTest::keyClick(install, Qt::Key_Tab);
    EXPECT_EQ(static_cast<PaintedWidget*>(panel.focusWidget())->describe().name, "Open Vantoro");
    stage.engine->calls.clear();
    QTest::mouseClick(install, Qt::LeftButton);
    EXPECT_EQ(stage.engine->calls, Calls{"check"});
    EXPECT_TRUE(row->isVisible()) << "the feed is asked anew";
    stage.engine->driver->showReadyToInstallAndRelaunch([](UpdateChoice) {});
    EXPECT_NE(stage.settings.storedText("vantoro.updates.relaunch").value_or("").find("menuBar"), std::string::npos);
}

TEST(UpdatesGroupTests, SwitchesChecksAndTellsWhatCameOfIt) {
    UpdatingStage stage;
    SettingsView view(stage.context, {});
    view.QWidget::show();
    stage.settle();
    const auto row = [&view](const QString& title) {
        const auto rows = view.findChildren<SettingsRow*>();
        return *std::find_if(rows.begin(), rows.end(), [&](const SettingsRow* one) { return one->title() == title; });
    };
    SettingsRow* const automatic = row("Check for updates automatically");
    QTest::keyClick(automatic->findChild<Switch*>(), Qt::Key_Space);
    EXPECT_FALSE(stage.engine->isAutomatic);
    EXPECT_EQ(automatic->note(), "only when you click Check Now");
    SettingsRow* const version = row("Vantoro 1.2");
    EXPECT_EQ(version->value(), "Checks only when you ask.");
    Button* const button = version->findChild<Button*>();
    EXPECT_EQ(button->text(), "Check Now");
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(stage.engine->calls, Calls{"check"});
    EXPECT_EQ(version->value(), "Looking for a newer version…");
    EXPECT_FALSE(button->isEnabled());
    stage.engine->driver->showUpdateNotFoundWithError({}, {});
    EXPECT_EQ(version->value(), "This is the latest version.");
    EXPECT_TRUE(button->isEnabled());
    stage.runLater();
    EXPECT_EQ(version->value(), "Checks only when you ask.");
}

TEST(UpdatesGroupTests, IsLeftOutWithoutAnUpdater) {
    UpdatingStage stage(Theme::Appearance::dark, false);
    stage.settings.storeText("vantoro.updates.available", encoded(Release{"1.3", "130", {}}));
    Updates remembering(stage.engine, stage.settings);
    stage.context.updates = &remembering;
    EXPECT_EQ(remembering.phase().kind, Kind::available);
    EXPECT_EQ(updateChip(updateState(remembering)), UpdateLine()) << "nothing could install it";
    SettingsView view(stage.context, {});
    view.QWidget::show();
    stage.settle();
    QStringList texts;
    for (const TextLabel* const label : view.findChildren<TextLabel*>())
        texts.append(label->text());
    EXPECT_FALSE(texts.contains("Updates"));
    EXPECT_TRUE(texts.contains("Everything Vantoro measures stays on this Mac. It makes no network requests."));
}

TEST(UpdatesGroupTests, IsWhereTheSettingsReopenAfterAnInstallFromThere) {
    UpdatingStage stage;
    stage.settings.storeText("vantoro.updates.relaunch",
                             encoded(Relaunch{.fromBuild = "110", .at = noon - 5, .origin = UpdateOrigin::settings}));
    ASSERT_TRUE(stage.updates.consumeRelaunch());
    Shell shell(stage.hub, stage.settings, stage.motion, {.updates = &stage.updates});
    shell.open();
    EXPECT_EQ(stage.engine->calls, Calls()) << "made is not seen";
    EXPECT_TRUE(waitUntil([&] { return stage.engine->calls == Calls{"seen"}; }));
    SettingsView* found = nullptr;
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (auto* const settings = qobject_cast<SettingsView*>(window))
            found = settings;
    ASSERT_NE(found, nullptr);
    EXPECT_FALSE(stage.updates.revealsUpdatesInSettings());
    stage.settle();
    SettingsGroup* const group = found->findChildren<SettingsGroup*>().last();
    EXPECT_EQ(group->describe().name, "Updates");
    EXPECT_EQ(group->visibleRegion().boundingRect(), group->rect()) << "in sight as a whole";
}

} // namespace
} // namespace vantoro
