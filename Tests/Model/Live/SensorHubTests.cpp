#include "Model/Live/SensorHub.h"

#include "Platform/System.h"

#include "Support/EventLoop.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace vantoro {
namespace {

using namespace std::chrono_literals;
using testing::waitUntil;

class FakeSensors : public SensorReader, public CoreSource, public GPUPowerSource {
public:
    bool isOpen() const override { return open; }
    Cooling cooling() const override { return cools; }
    int fanCount() const override { return 2; }
    int sensorCount() const override { return 41; }
    std::vector<FanReading> readFans() override { return fans; }
    Temperatures readTemperatures() override { return {.soc = soc}; }
    PowerReading readPower() override { return {.systemWatts = 20, .gpuWatts = 99}; }
    std::vector<double> readDieSensors() override {
        ++dieReads;
        return dies;
    }
    std::vector<double> latestDieSensors() const override { return dies; }
    std::optional<std::size_t> dieSensorCount() const override { return dieCount; }
    double maxPerformanceMHz() const override { return announcedMHz; }
    std::vector<double> readGPUSensors() override { return gpus; }
    void sample() override {}
    void setReadsClocks(bool reads) override { readsClocks = reads; }
    const std::vector<Core>& cores() const override { return coreList; }
    double sampleWatts() override { return ++gpuLooks, gpuWatts; }

    bool open = true;
    Cooling cools = Cooling::fans;
    double soc = 50;
    double gpuWatts = 3.5;
    int gpuLooks = 0;
    std::vector<FanReading> fans{{.index = 0, .rpm = 1500, .minRPM = 1000, .maxRPM = 3000}};
    std::vector<double> dies;
    std::optional<std::size_t> dieCount;
    int dieReads = 0;
    bool readsClocks = true;
    double announcedMHz = 4000;
    std::vector<double> gpus;
    std::vector<Core> coreList{{.index = 0}};
};

class FixedThermalState : public ThermalState {
public:
    int rawValue() override { return value; }
    int value = 0;
};

class FixedStrain : public Strain {
public:
    StrainReading read() override { return reading; }
    StrainReading reading{.stalls = {.memory = 18},
                          .throttle = {{ThrottleReason::temperature}},
                          .gpuPercent = 92,
                          .cpuWatts = 12.5,
                          .profile = PowerProfile::performance};
};

class SensorHubTest : public ::testing::Test {
protected:
    SensorHubTest() : settings(folder.filePath("settings.ini").toStdString()) {
        environment.now = [this] { return now += 2; };
        environment.processTiming.firstFallbackSample = 1ms;
        environment.processMode = "unprivileged";
        platform.thermalState = thermal;
    }

    SensorHub& makeHub() {
        hub = std::make_unique<SensorHub>(platform, SensorSources{sensors, sensors, sensors}, settings, environment);
        return *hub;
    }

    QTemporaryDir folder;
    Settings settings;
    HubEnvironment environment{};
    UnixSeconds now = 1000;
    std::shared_ptr<FakeSensors> sensors = std::make_shared<FakeSensors>();
    std::shared_ptr<FixedThermalState> thermal = std::make_shared<FixedThermalState>();
    Platform platform;
    std::unique_ptr<SensorHub> hub;
};

TEST_F(SensorHubTest, ATickMeasuresAndPublishes) {
    SensorHub& subject = makeHub();
    EXPECT_EQ(subject.snapshot().fans.size(), 1U) << "a first look is taken at once";
    EXPECT_TRUE(subject.history().snapshots().empty());
    EXPECT_EQ(subject.snapshot().cpu.idlePercent, 100);
    thermal->value = 2;
    subject.tick();
    const Snapshot& snapshot = subject.snapshot();
    EXPECT_EQ(snapshot.timestamp, 1004);
    EXPECT_EQ(snapshot.power, (PowerReading{.systemWatts = 20, .gpuWatts = 3.5}))
        << "the GPU's figure is its own source's";
    EXPECT_EQ(snapshot.chipHeat, 50);
    EXPECT_EQ(snapshot.thermalPressure, ThermalPressure::serious);
    EXPECT_EQ(subject.history().snapshots().back(), snapshot);
    EXPECT_EQ(subject.verdict().severity, Severity::critical);
    EXPECT_EQ(subject.cores(), sensors->coreList);
    EXPECT_TRUE(subject.isReady());
    thermal->value = 7;
    subject.tick();
    EXPECT_EQ(subject.snapshot().thermalPressure, ThermalPressure::nominal);
}

TEST_F(SensorHubTest, WhatStrainsTheMachineIsInItsSnapshots) {
    const auto strain = std::make_shared<FixedStrain>();
    platform.strain = strain;
    SensorHub& subject = makeHub();
    subject.tick();
    const Snapshot& snapshot = subject.snapshot();
    EXPECT_EQ(snapshot.stalls, strain->reading.stalls);
    EXPECT_EQ(snapshot.throttle, strain->reading.throttle);
    EXPECT_EQ(snapshot.gpuPercent, 92);
    EXPECT_EQ(snapshot.power, (PowerReading{.systemWatts = 20, .gpuWatts = 3.5, .cpuWatts = 12.5}));
    EXPECT_TRUE(snapshot.favoursSpeed);
    strain->reading = {};
    subject.tick();
    EXPECT_EQ(subject.snapshot().throttle, std::nullopt) << "what is no longer told is not known";
    EXPECT_FALSE(subject.snapshot().favoursSpeed);
}

TEST_F(SensorHubTest, GraphicsWorkIsInItsSnapshotsWhileItWorks) {
    class OneClient : public GraphicsClients {
    public:
        std::optional<GraphicsShares> read() override {
            return GraphicsShares{.programs = {{.pid = 7, .percent = 60}}, .leastBusyPercent = 60};
        }
    };
    platform.graphicsClients = std::make_shared<OneClient>();
    platform.strain = std::make_shared<FixedStrain>();
    SensorHub& subject = makeHub();
    EXPECT_EQ(subject.snapshot().gpuPercent, 92);
    static_cast<FixedStrain&>(*platform.strain).reading.gpuPercent = 5;
    subject.tick();
    EXPECT_EQ(subject.snapshot().gpuPercent, 60);
    subject.beginReplay("another");
    subject.accept({.timestamp = now + 10, .gpuPercent = 5});
    EXPECT_EQ(subject.snapshot().gpuPercent, 5) << "a recording holds what it holds";
}

TEST_F(SensorHubTest, ObserversHearOfChangesOnly) {
    SensorHub& subject = makeHub();
    const QSignalSpy vitals(&subject, &SensorHub::vitalsChanged);
    const QSignalSpy suspects(&subject, &SensorHub::suspectsChanged);
    const QSignalSpy series(&subject, &SensorHub::seriesChanged);
    const QSignalSpy verdicts(&subject, &SensorHub::verdictChanged);
    const QSignalSpy transactions(&subject, &SensorHub::transactionEnded);
    for (int i = 0; i < 4; ++i)
        subject.tick();
    EXPECT_EQ(vitals.count(), 0) << "the first look had the same figures";
    EXPECT_EQ(suspects.count(), 0);
    EXPECT_EQ(series.count(), 4) << "once each tick";
    EXPECT_EQ(verdicts.count(), 8) << "published, then concluded again";
    EXPECT_EQ(transactions.count(), 4) << "a tick is shown as one";
    sensors->soc = 50.3;
    subject.tick();
    EXPECT_EQ(vitals.count(), 0) << "less than a shown step";
    sensors->soc = 90;
    subject.tick();
    EXPECT_EQ(vitals.count(), 1);
}

TEST_F(SensorHubTest, SingleSensorsAreReadForThePaneOnlyAndAPartialReadingKeepsTheLast) {
    SensorHub& subject = makeHub();
    const auto readWith = [&](std::vector<double> dies, std::vector<double> gpus) {
        sensors->dies = std::move(dies);
        sensors->gpus = std::move(gpus);
        subject.tick();
        return std::pair(subject.dieSensors(), subject.gpuSensors());
    };
    const std::vector<double> dies(8, 60);
    const std::vector<double> gpus(4, 55);
    EXPECT_EQ(readWith(dies, gpus), (std::pair<std::vector<double>, std::vector<double>>()));
    EXPECT_FALSE(sensors->readsClocks);
    subject.setCoresPaneVisible(true);
    EXPECT_EQ(readWith(dies, gpus), std::pair(dies, gpus));
    EXPECT_TRUE(sensors->readsClocks);
    EXPECT_EQ(readWith(std::vector<double>(7, 10), std::vector<double>(3, 10)), std::pair(dies, gpus));
}

TEST_F(SensorHubTest, AFewSensorsAreShownWhereThereAreNoMore) {
    SensorHub& subject = makeHub();
    subject.setCoresPaneVisible(true);
    const auto shownOf = [&](std::size_t known, std::vector<double> dies) {
        sensors->dieCount = known;
        sensors->dies = std::move(dies);
        subject.tick();
        return subject.dieSensors();
    };
    EXPECT_EQ(shownOf(1, {50}), std::vector<double>{50});
    EXPECT_EQ(shownOf(7, {50, 51, 52, 53}).size(), 4U);
    EXPECT_EQ(shownOf(7, {50, 51, 52}).size(), 4U) << "a partial reading";
    for (int i = 0; i < 4; ++i)
        shownOf(7, {50, 51, 52});
    EXPECT_EQ(subject.dieSensors().size(), 3U) << "what is always missing is not waited for";
    EXPECT_FALSE(subject.dieSensorsAreSilent());
    for (int i = 0; i < 5; ++i)
        shownOf(7, {});
    EXPECT_TRUE(subject.dieSensorsAreSilent());
    EXPECT_TRUE(subject.hasDieSensors());
    sensors->dieCount = 0;
    EXPECT_FALSE(subject.hasDieSensors());
}

TEST_F(SensorHubTest, ABoostBeyondWhatIsAnnouncedIsTheNewCeiling) {
    SensorHub& subject = makeHub();
    sensors->coreList = {{.isPerformance = true, .megahertz = 3900}};
    subject.tick();
    EXPECT_EQ(subject.coreCeilingMHz(true), 4000);
    sensors->coreList[0].megahertz = 4250;
    subject.tick();
    sensors->coreList[0].megahertz = 1000;
    subject.tick();
    EXPECT_EQ(subject.coreCeilingMHz(true), 4250);
    sensors->announcedMHz = 0;
    EXPECT_EQ(subject.coreCeilingMHz(true), 0) << "what was seen is no limit where none is announced";
}

TEST_F(SensorHubTest, ARecordingHoldsCoresAndSingleSensorsWithoutReadingThemTwice) {
    platform.system = SystemKind::gnuLinux;
    SensorHub& subject = makeHub();
    sensors->dies = {50, 61};
    sensors->coreList = {{.isPerformance = true, .busy = 0.25, .megahertz = 3000}, {.index = 1}};
    EXPECT_EQ(subject.recordingHeader(0).processors, (RecordedProcessors{.performance = 1, .efficiency = 1}));
    EXPECT_EQ(subject.recordingHeader(0).system, SystemKind::gnuLinux);
    Snapshot first = subject.measure(1);
    subject.addSingleReadings(first);
    EXPECT_FALSE(first.cores) << "loads are known from the second look on";
    Snapshot second = subject.measure(2);
    subject.addSingleReadings(second);
    EXPECT_EQ(second.cores, (std::vector<CoreReading>{{true, 25, 3000}, {}}));
    EXPECT_EQ(second.dieSensors, sensors->dies);
    EXPECT_EQ(sensors->dieReads, 0);
}

TEST_F(SensorHubTest, AMachineWhoseSensorsCannotBeReadIsNotTakenForAFanlessOne) {
    sensors->open = false;
    sensors->cools = Cooling::passive;
    SensorHub& closed = makeHub();
    closed.start();
    EXPECT_EQ(closed.cooling(), Cooling::fans);
    EXPECT_FALSE(closed.sensorsAvailable());
    EXPECT_TRUE(closed.snapshot().fans.empty());
    EXPECT_EQ(closed.sensorSummary(), "0 fans · 0 sensors");
    platform.system = SystemKind::gnuLinux;
    EXPECT_EQ(makeHub().cooling(), Cooling::load) << "a Mac without sensors is broken, other machines may have none";
    platform.system = SystemKind::macos;

    sensors->open = true;
    sensors->soc = 0;
    EXPECT_EQ(makeHub().verdict().headline, "Waiting for the chip");
    EXPECT_EQ(makeHub().verdict().stateLabel(), "Measuring");
    sensors->soc = 40;
    EXPECT_EQ(makeHub().verdict().headline, "All cool");
    EXPECT_EQ(makeHub().sensorSummary(), "No fans · 41 sensors");
}

TEST_F(SensorHubTest, ItsCoolingIsChosenAnewWhenWhatCanBeToldChanges) {
    sensors->cools = Cooling::heat;
    SensorHub& subject = makeHub();
    subject.tick();
    EXPECT_EQ(subject.snapshot().cooling, Cooling::heat);
    sensors->cools = Cooling::fans;
    subject.tick();
    EXPECT_EQ(subject.snapshot().cooling, Cooling::fans);
    EXPECT_EQ(subject.cooling(), Cooling::fans);
    EXPECT_EQ(subject.verdict().cooling, Cooling::fans);
}

TEST_F(SensorHubTest, StartsOnceAndTicksByItself) {
    environment.interval = "0.01";
    SensorHub& subject = makeHub();
    const QSignalSpy snapshots(&subject, &SensorHub::snapshotChanged);
    subject.start();
    EXPECT_EQ(snapshots.count(), 1) << "the first tick does not wait";
    subject.start();
    EXPECT_EQ(snapshots.count(), 1);
    EXPECT_TRUE(waitUntil([&] { return snapshots.count() >= 4; }));
    EXPECT_TRUE(waitUntil([&] { return subject.processesReady(); }));
    EXPECT_EQ(subject.processSource(), (ProcessMonitor::Source{ProcessMonitor::Source::Kind::ownProcessesOnly, true}));
    settings.store(Setting::sampleInterval, 5);
    const qsizetype before = snapshots.count();
    EXPECT_TRUE(waitUntil([&] { return snapshots.count() > before; }));
}

TEST_F(SensorHubTest, GoesByASettingAsSoonAsItIsStored) {
    SensorHub& subject = makeHub();
    const QSignalSpy written(&subject, &SensorHub::formatChanged);
    settings.store(Setting::processMonitorMode, "unprivileged");
    settings.store(Setting::sampleInterval, 0.5);
    QCoreApplication::processEvents();
    EXPECT_EQ(subject.processSource().kind, ProcessMonitor::Source::Kind::starting) << "nothing runs before it starts";
    settings.store(Setting::historyMinutes, 15);
    EXPECT_EQ(subject.history().retentionSeconds(), 900);
    settings.store(Setting::historyMinutes, -1);
    EXPECT_EQ(subject.history().retentionSeconds(), 1800) << "the default";
    EXPECT_EQ(written.count(), 0);
    settings.store(Setting::temperatureUnit, "F");
    EXPECT_EQ(written.count(), 1);
    settings.forget(Setting::temperatureUnit.key);
    EXPECT_EQ(written.count(), 2);
}

class CountedActivity : public Activity {
public:
    class Token : public Held {
    public:
        explicit Token(int& count) : count_(++count) {}
        ~Token() override { --count_; }
        Token(const Token&) = delete;
        Token& operator=(const Token&) = delete;

    private:
        int& count_;
    };
    std::unique_ptr<Held> begin(const char*) override { return std::make_unique<Token>(held); }

    int held = 0;
};

TEST_F(SensorHubTest, TheSystemIsToldOfTheSamplingWhileItGoesOn) {
    const auto activity = std::make_shared<CountedActivity>();
    platform.activity = activity;
    SensorHub& subject = makeHub();
    EXPECT_EQ(activity->held, 0);
    subject.start();
    subject.start();
    settings.store(Setting::processMonitorMode, "auto");
    EXPECT_EQ(activity->held, 1);
    hub.reset();
    EXPECT_EQ(activity->held, 0);
    makeHub().beginReplay("Another Mac");
    hub->start();
    EXPECT_EQ(activity->held, 0) << "a recording is measured by nobody";
}

TEST_F(SensorHubTest, ThereIsNoVerdictBeforeTwoSamplesWithAListHoweverSlowTheTimer) {
    environment.interval = "3600";
    SensorHub& subject = makeHub();
    std::vector<bool> movesWhenDone;
    QObject::connect(&subject, &SensorHub::transactionEnded, &subject, [&] {
        if (subject.measuring() == Measuring::done)
            movesWhenDone.push_back(subject.animation().has_value());
    });
    EXPECT_EQ(subject.measuring(), Measuring::looking) << "nothing was started, nothing is overdue";
    subject.start();
    EXPECT_EQ(subject.measuring(), Measuring::looking);
    EXPECT_FALSE(subject.hasProcessFigures());
    EXPECT_TRUE(waitUntil([&] { return subject.processesReady(); }));
    EXPECT_EQ(subject.measuring(), Measuring::looking) << "a list alone is no sample";
    EXPECT_TRUE(waitUntil([&] { return subject.measuring() == Measuring::done; }));
    EXPECT_EQ(subject.history().snapshots().size(), 3U);
    EXPECT_EQ(movesWhenDone, std::vector<bool>{false}) << "the first verdict is there in one step";

    SensorHub& without = makeHub();
    for (int i = 0; i < 5; ++i)
        without.tick();
    EXPECT_EQ(without.measuring(), Measuring::looking);
    without.tick();
    EXPECT_EQ(without.measuring(), Measuring::withoutList) << "10 seconds";
    without.accept({.timestamp = now + 1});
    EXPECT_EQ(without.measuring(), Measuring::done) << "a recording's snapshot has its list";
}

TEST_F(SensorHubTest, NeverSamplesTwiceInAMomentNorTakesGraphicsPowerOverNextToNoTime) {
    environment.now = [this] { return now; };
    settings.store(Setting::sampleInterval, 1);
    SensorHub& subject = makeHub();
    const auto roundsAfter = [&](double seconds) {
        now += seconds;
        const std::size_t before = subject.history().snapshots().size();
        subject.tickUnlessJustDone();
        return subject.history().snapshots().size() - before;
    };
    EXPECT_EQ(roundsAfter(0.001), 1U) << "the look at creation was none";
    EXPECT_EQ(roundsAfter(0.0005), 0U);
    EXPECT_EQ(roundsAfter(0.25), 1U) << "after an application was ended";
    EXPECT_EQ(roundsAfter(-3600), 1U) << "a clock that stepped back";
    EXPECT_EQ(shortestGapSeconds(10s), 0.2);

    now += 1;
    subject.tick();
    sensors->gpuWatts = 0; // as over less than 50 ms
    const int looks = sensors->gpuLooks;
    now += 0.03;
    subject.tick();
    EXPECT_EQ(sensors->gpuLooks, looks) << "its counter keeps its reference";
    EXPECT_EQ(subject.snapshot().power.gpuWatts, 3.5);
    now += 0.25;
    subject.tick();
    EXPECT_EQ(subject.snapshot().power.gpuWatts, 0);
}

TEST(SensorHubIntervals, SettingAndEnvironment) {
    EXPECT_EQ(timerInterval({}, 0.4), 400ms);
    EXPECT_EQ(timerInterval("0.5", 2), 500ms);
    for (const char* const bad : {" 0.5", "fast", "", "0", "-3", "nan", "1e999"})
        EXPECT_EQ(timerInterval(bad, 2), 2000ms) << bad;
    EXPECT_EQ(timerInterval("1e300", 2), 24h);
    EXPECT_EQ(processInterval(0.4), 1);
    EXPECT_EQ(processInterval(2.5), 3);
    EXPECT_EQ(processInterval(1e300), 86400);
}

TEST(HeatSmoothing, WeighsByElapsedTime) {
    HeatSmoothing heat;
    EXPECT_EQ(heat.smoothed(0, 0), 0);
    EXPECT_EQ(heat.smoothed(10, 40), 40);
    EXPECT_EQ(heat.smoothed(12, 0), 40) << "a missing reading changes nothing";
    EXPECT_NEAR(heat.smoothed(18, 140), 40 + 63.21, 0.01);
    const double before = heat.smoothed(18, 140);
    EXPECT_EQ(heat.smoothed(5, 0.5), before) << "a clock that stepped back";
}

TEST(Settings, DefaultsAndMalformedValues) {
    const QTemporaryDir folder;
    const std::string file = folder.filePath("settings.ini").toStdString();
    const std::string broken = folder.filePath("broken.ini").toStdString();
    std::ofstream(broken) << "\xFF\xFE\n[General]\nsampleInterval=nan\nhistoryMinutes=-1e999\nsmoothUpdates=perhaps\n"
                          << std::string(1 << 20, 'x');
    for (const std::string& name : {file, broken}) {
        const Settings settings(name);
        EXPECT_EQ(settings.value(Setting::sampleInterval), 2);
        EXPECT_TRUE(settings.value(Setting::smoothUpdates) && settings.value(Setting::spinRotors));
        EXPECT_FALSE(settings.value(Setting::menuBarShowsRPM));
        EXPECT_EQ(settings.value(Setting::temperatureUnit), "C");
        EXPECT_EQ(settings.value(Setting::historyMinutes), 30);
        EXPECT_EQ(settings.value(Setting::processMonitorMode), "auto");
        EXPECT_EQ(settings.value(Setting::appearance), "system");
    }
    {
        Settings settings(file);
        settings.store(Setting::sampleInterval, 0.25);
        settings.store(Setting::smoothUpdates, false);
        settings.store(Setting::temperatureUnit, "F");
    }
    const Settings again(file);
    EXPECT_EQ(again.value(Setting::sampleInterval), 0.25);
    EXPECT_FALSE(again.value(Setting::smoothUpdates));
    EXPECT_EQ(SettingsFormatContext(again).text("temperatureUnit"), "F");
}

/// A store as "defaults" fills it: keys as they are, values of several kinds.
class KeptStore : public SettingsStore {
public:
    explicit KeptStore(std::map<std::string, Value>& values) : values_(values) {}
    std::optional<Value> value(const std::string& key) const override {
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void store(const std::string& key, const Value& value) override { values_[key] = value; }
    void forget(const std::string& key) override { values_.erase(key); }
    void sync() override {}

private:
    std::map<std::string, Value>& values_;
};

TEST(Settings, TheSystemsOwnStoreHoldsKeysAndKindsAsTheyAre) {
    std::map<std::string, SettingsStore::Value> values{{"sampleInterval", std::string("0.5")},
                                                       {"spinRotors", 0.0},
                                                       {"smoothUpdates", false},
                                                       {"historyMinutes", 15.5}};
    Settings settings(std::make_unique<KeptStore>(values));
    EXPECT_EQ(settings.value(Setting::sampleInterval), 0.5);
    EXPECT_FALSE(settings.value(Setting::spinRotors));
    EXPECT_FALSE(settings.value(Setting::smoothUpdates));
    EXPECT_EQ(settings.value(Setting::historyMinutes), 15.5);
    settings.store(Setting::menuBarShowsRPM, true);
    settings.store(Setting::sampleInterval, 2);
    settings.store(Setting::appearance, "dark");
    settings.storeText("vantoro.updates.available", "{}");
    settings.forget("spinRotors");
    const std::map<std::string, SettingsStore::Value> expected{{"sampleInterval", 2.0},
                                                               {"smoothUpdates", false},
                                                               {"historyMinutes", 15.5},
                                                               {"menuBarShowsRPM", true},
                                                               {"appearance", std::string("dark")},
                                                               {"vantoro.updates.available", std::string("{}")}};
    EXPECT_EQ(values, expected);
}

} // namespace
} // namespace vantoro
