// The settings window: what it says of each choice, and that a choice is stored and applied at once.
#include "Design/Controls/SegmentedControl.h"
#include "Views/Settings/PopUpButton.h"
#include "Views/Settings/SettingsControls.h"
#include "Views/Settings/SettingsView.h"

#include "Views/Stage.h"

#include <QSignalSpy>

namespace vantoro {
namespace {

using testing::Stage;
using Source = ProcessMonitor::Source;

constexpr Source fromStream{Source::Kind::system, false};
constexpr Source refused{Source::Kind::ownProcessesOnly, false};
constexpr Source ownByChoice{Source::Kind::ownProcessesOnly, true};

/// The control of this kind that a screen reader knows by this name.
template <class Control>
Control& named(QWidget& window, const QString& name) {
    for (Control* const control : window.findChildren<Control*>())
        if (control->describe().name == name)
            return *control;
    throw std::runtime_error("no control is called " + name.toStdString());
}

SettingsRow& row(QWidget& window, const QString& title) {
    for (SettingsRow* const found : window.findChildren<SettingsRow*>())
        if (found->title() == title)
            return *found;
    throw std::runtime_error("no row is called " + title.toStdString());
}

TEST(SettingsModelTests, WhereItIsMeasuredNoNoteStatesACost) {
    QStringList notes{motionNote(true, false), motionNote(false, false), rotorNote(true, false),
                      rotorNote(false, false)};
    for (int i = 0; i < static_cast<int>(sampleRates.size()); ++i)
        notes.append(rateNote(i, false));
    for (const QString& note : notes) {
        EXPECT_FALSE(note.contains(u'%')) << note.toStdString();
        EXPECT_TRUE(note.front().isUpper() && note.endsWith(u'.') && !note.contains("  ")) << note.toStdString();
    }
    constexpr double megabyte = 1024.0 * 1024;
    EXPECT_EQ(ownCostText({.percentOfCore = 1.26, .memoryBytes = 33.4 * megabyte}), "1.3% of a core · 33 MB");
    EXPECT_EQ(ownCostText({.percentOfCore = 26.4}), "26% of a core");
    EXPECT_EQ(ownCostText({.memoryBytes = megabyte}), "measuring");
}

TEST(SettingsViewTests, NothingMovesWhenTheSliderDoesAndALongNameLeavesItsTitle) {
    Stage stage;
    stage.hub.beginReplay("ThinkStation P620 Workstation · AMD Ryzen Threadripper PRO 5995WX 64-Cores · revision B");
    SettingsView window(stage.context, SourceNames{.costsAreStated = false});
    stage.picture(window, window.size());
    const auto& motion = named<SegmentedControl>(window, "Motion of readings");
    const int before = motion.mapTo(&window, QPoint()).y();
    auto& slider = named<StepSlider>(window, "Sample rate");
    for (int i = 0; i < static_cast<int>(sampleRates.size()); ++i) {
        emit slider.chosen(i);
        stage.settle();
        EXPECT_EQ(motion.mapTo(&window, QPoint()).y(), before) << i;
    }
    for (const TextLabel* const label : row(window, "Machine").findChildren<TextLabel*>())
        if (label->text() == "Machine") {
            EXPECT_GE(label->width(), label->sizeHint().width());
        }
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST(SettingsViewTests, SaysWhatItTakesItselfWhileSomeoneLooks) {
    struct Account : OwnCost {
        std::optional<ProcessorTime> processorTime() override { return used; }
        std::optional<std::uint64_t> memoryBytes() override {
            ++memoryReadings;
            return 34603008;
        }
        ProcessorTime used{.seconds = 5};
        int memoryReadings = 0;
    };
    const auto account = std::make_shared<Account>();
    OwnCostMeter meter(account);
    Stage stage;
    ViewContext context{stage.hub, stage.hub, stage.settings, stage.look, {}, nullptr, &meter};
    meter.note(stage.seconds);
    SettingsView window(context, {});
    EXPECT_EQ(account->memoryReadings, 0);
    EXPECT_FALSE(row(window, "Vantoro itself").isVisibleTo(&window));
    window.show();
    EXPECT_EQ(row(window, "Vantoro itself").value(), "measuring");
    stage.seconds += 60;
    account->used.seconds += 0.78;
    window.refresh();
    EXPECT_EQ(row(window, "Vantoro itself").value(), "1.3% of a core · 33 MB");
    EXPECT_EQ(row(window, "Vantoro itself").note(), "Over the last minute, with the programs it runs for its lists.");
}

TEST(SettingsModelTests, SaysWhereTheProcessListComesFrom) {
    const SourceNames mac;
    EXPECT_EQ(currentlyReading(fromStream, mac), "/usr/bin/top — every process");
    EXPECT_EQ(currentlyReading(refused, mac), "Syscalls — top was blocked on this Mac");
    EXPECT_EQ(dataSources(refused, mac), "SMC · IOReport · syscalls");
    const QString everyone = processListNote(false, Cooling::fans, fromStream, mac);
    EXPECT_EQ(processListNote(false, Cooling::fans, refused, mac),
              everyone +
                  "\n\nThat has happened here: top would not run, so the list below is your own processes only.");
    EXPECT_TRUE(processListNote(true, Cooling::passive, ownByChoice, mac).contains("block. Temperatures, power, "));
}

TEST(SettingsModelTests, CountsCoresByTheirKind) {
    EXPECT_EQ(coresText({}), "—");
    EXPECT_EQ(coresText({{.isPerformance = true}, {.isPerformance = true}, {}}), "2 performance · 1 efficiency");
    EXPECT_EQ(coresText({{.isPerformance = true, .tier = "super"}, {.tier = "performance"}, {.tier = "performance"}}),
              "1 super · 2 performance");
    EXPECT_EQ(coresText({{}, {}}), "2 cores") << "all alike";
}

TEST(SettingsViewTests, TheSliderStoresARateOnlyWhenItIsMoved) {
    Stage stage;
    stage.settings.store(Setting::sampleInterval, 1.5);
    SettingsView view(stage.context, {});
    view.QWidget::show();
    StepSlider& slider = named<StepSlider>(view, "Sample rate");
    EXPECT_EQ(slider.current(), 3);
    EXPECT_EQ(stage.settings.value(Setting::sampleInterval), 1.5);
    QTest::keyClick(&slider, Qt::Key_End);
    EXPECT_EQ(stage.settings.value(Setting::sampleInterval), 0.25);
    EXPECT_EQ(row(view, "4 times a second").value(), "Maximum");
    QTest::keyClick(&slider, Qt::Key_End);
    QTest::keyClick(&slider, Qt::Key_Left);
    EXPECT_EQ(stage.settings.value(Setting::sampleInterval), 0.5);
    QTest::mouseClick(&slider, Qt::LeftButton, Qt::NoModifier, {15, 22});
    EXPECT_EQ(stage.settings.value(Setting::sampleInterval), 10);

    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&slider);
    EXPECT_EQ(spoken->role(), QAccessible::Slider);
    EXPECT_EQ(spoken->text(QAccessible::Value), "Every 10 seconds, Very relaxed");
    spoken->valueInterface()->setCurrentValue(4);
    EXPECT_EQ(stage.settings.value(Setting::sampleInterval), 1);
}

TEST(SettingsViewTests, EveryChoiceIsStoredAndSaid) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    SettingsView view(stage.context, {});
    view.QWidget::show();
    std::vector<std::string> told;
    QObject::connect(&stage.settings, &Settings::changed, &view, [&](std::string_view key) { told.emplace_back(key); });
    const QSignalSpy published(&stage.hub, &SensorHub::verdictChanged);

    QTest::keyClick(&named<SegmentedControl>(view, "Motion of readings"), Qt::Key_Right);
    EXPECT_FALSE(stage.settings.value(Setting::smoothUpdates));
    EXPECT_EQ(row(view, "Motion of readings").note(), motionNote(false, true));
    QTest::keyClick(&named<Switch>(view, "Spin the fan rotors"), Qt::Key_Space);
    EXPECT_FALSE(stage.settings.value(Setting::spinRotors));
    EXPECT_EQ(row(view, "Spin the fan rotors").note(), rotorNote(false, true));
    Switch& figure = named<Switch>(view, "Show fan speed in the menu bar at all times");
    QTest::mouseClick(&figure, Qt::LeftButton);
    EXPECT_TRUE(stage.settings.value(Setting::menuBarShowsRPM));
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(&figure)->state().checked);
    QTest::keyClick(&named<SegmentedControl>(view, "Appearance"), Qt::Key_Right);
    EXPECT_EQ(stage.settings.value(Setting::appearance), "light");
    QTest::keyClick(&named<SegmentedControl>(view, "Temperature"), Qt::Key_Right);
    EXPECT_EQ(stage.settings.value(Setting::temperatureUnit), "F");
    EXPECT_EQ(published.count(), 1) << "the words are made anew";
    EXPECT_EQ(told, (std::vector<std::string>{"smoothUpdates", "spinRotors", "menuBarShowsRPM", "appearance",
                                              "temperatureUnit"}));
}

/// Opens the list by keyboard and presses these keys in it.
void chooseByKeys(SettingsView& view, const QString& name, std::initializer_list<Qt::Key> keys) {
    QTest::keyClick(&named<PopUpButton>(view, name), Qt::Key_Space);
    for (const Qt::Key key : keys)
        if (ChoiceList* const list = view.findChild<ChoiceList*>()) {
            QTest::keyClick(list, key);
        }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(view.findChild<ChoiceList*>(), nullptr) << "closed";
}

TEST(SettingsViewTests, TheHistoryIsCutAsSoonAsLessIsToBeKept) {
    Stage stage;
    stage.play("design-fans.jsonl.gz");
    SettingsView view(stage.context, {});
    view.QWidget::show();
    const std::size_t all = stage.hub.history().snapshots().size();
    chooseByKeys(view, "Keep history for", {Qt::Key_Up, Qt::Key_Escape});
    EXPECT_EQ(stage.settings.value(Setting::historyMinutes), 30);
    chooseByKeys(view, "Keep history for", {Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(stage.settings.value(Setting::historyMinutes), 60);
    EXPECT_EQ(stage.hub.history().snapshots().size(), all);
    chooseByKeys(view, "Keep history for", {Qt::Key_Home, Qt::Key_Space});
    EXPECT_EQ(stage.settings.value(Setting::historyMinutes), 15);
    EXPECT_LT(stage.hub.history().snapshots().size(), all);
}

TEST(SettingsViewTests, TheRateAndTheProcessListAreAppliedToTheRunningHub) {
    Stage stage;
    stage.settings.store(Setting::sampleInterval, 10);
    stage.hub.start();
    SettingsView view(stage.context, {});
    view.QWidget::show();
    QSignalSpy ticks(&stage.hub, &SensorHub::snapshotChanged);
    QTest::keyClick(&named<StepSlider>(view, "Sample rate"), Qt::Key_End);
    EXPECT_TRUE(ticks.wait(3000)) << "ten seconds would still be to come";
    chooseByKeys(view, "Process list", {Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(stage.settings.value(Setting::processMonitorMode), "unprivileged");
    EXPECT_TRUE(QTest::qWaitFor([&] { return stage.hub.processSource() == ownByChoice; }, 3000));
    EXPECT_EQ(row(view, "Process list").note(), processListNote(true, Cooling::fans, ownByChoice, {}));
    EXPECT_EQ(row(view, "Currently reading").value(), "Syscalls — your processes only");
}

} // namespace
} // namespace vantoro
