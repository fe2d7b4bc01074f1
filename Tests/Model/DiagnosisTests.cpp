#include "Model/Diagnosis.h"

#include "Model/WholeNumber.h"
#include "Support/HistoryBuilder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace vantoro {

using namespace vantoro::testing;

namespace {

const DefaultFormatContext context;
const Format format(context);

Verdict verdictOn(const Snapshot& newest, int rampSeconds = 10) {
    return DiagnosisEngine::evaluate(historyEndingIn(newest, rampSeconds), format);
}

const Factor* factor(const Verdict& verdict, const std::string& title) {
    const auto found = std::ranges::find(verdict.factors, title, &Factor::title);
    return found != verdict.factors.end() ? &*found : nullptr;
}

} // namespace

TEST(Diagnosis, NothingIsConcludedFromNothing) {
    EXPECT_EQ(DiagnosisEngine::evaluate(History(), format), Verdict{});
    EXPECT_EQ(Verdict{}.headline, "All quiet");
}

TEST(Diagnosis, BandsTheLoad) {
    struct Case {
        double load;
        StressLevel state;
    };
    for (const auto& [load, state] :
         {Case{0, StressLevel::idle}, Case{0.0599, StressLevel::idle}, Case{0.06, StressLevel::light},
          Case{0.2199, StressLevel::light}, Case{0.22, StressLevel::moderate}, Case{0.4799, StressLevel::moderate},
          Case{0.48, StressLevel::heavy}, Case{0.7799, StressLevel::heavy}, Case{0.78, StressLevel::extreme},
          Case{1, StressLevel::extreme}})
        EXPECT_EQ(DiagnosisEngine::stressLevel(load), state) << load;

    Snapshot both = fanMachine(0.5);
    both.chipHeat = 100;
    EXPECT_EQ(verdictOn(both).state, StressLevel::heavy);
    both.cooling = Cooling::passive;
    EXPECT_EQ(verdictOn(both).state, StressLevel::extreme);
    EXPECT_EQ(verdictOn(both).cooling, Cooling::passive);
    EXPECT_EQ(verdictOn(fanlessMachine(49.9)).state, StressLevel::idle);
    EXPECT_EQ(verdictOn(fanlessMachine(50)).state, StressLevel::light);
}

TEST(Diagnosis, SeverityFollowsTheStateUnlessHeatPresses) {
    struct Case {
        double load;
        ThermalPressure pressure;
        double idlePercent;
        Severity severity;
    };
    using enum ThermalPressure;
    for (const auto& [load, pressure, idlePercent, severity] :
         {Case{0, nominal, 100, Severity::calm}, Case{0.1, nominal, 40, Severity::calm},
          Case{0.1, nominal, 39, Severity::normal}, Case{0, fair, 39, Severity::normal},
          Case{0.3, nominal, 100, Severity::normal}, Case{0.5, nominal, 0, Severity::elevated},
          Case{0.9, fair, 0, Severity::high}, Case{0, serious, 100, Severity::critical},
          Case{0.9, critical, 0, Severity::critical}, Case{0.5, serious, 0, Severity::critical}}) {
        Snapshot now = fanMachine(load);
        now.thermalPressure = pressure;
        now.cpu.idlePercent = idlePercent;
        EXPECT_EQ(verdictOn(now).severity, severity) << load << ' ' << idlePercent;
    }
}

TEST(Diagnosis, LabelsTheState) {
    EXPECT_EQ(verdictOn(fanMachine(0)).stateLabel(), "Silent");
    EXPECT_EQ(verdictOn(fanMachine(1)).stateLabel(), "Roaring");
    EXPECT_EQ(verdictOn(fanlessMachine(70)).stateLabel(), "Warm");
    const Verdict unread = verdictOn(fanlessMachine(0));
    EXPECT_TRUE(unread.awaitingReading);
    EXPECT_EQ(unread.stateLabel(), "Measuring");
    EXPECT_EQ(unread.statePhrase(), "Your Mac is cool");
    EXPECT_FALSE(verdictOn(fanMachine(0)).awaitingReading); // a machine with fans awaits no chip
}

TEST(Diagnosis, BlamesUpToFiveGroupsThatDoNoticeableWork) {
    std::vector<ProcessSample> rows;
    for (int i = 0; i < 6; ++i)
        rows.push_back(process(i, "app " + std::to_string(i), 20 - i));
    rows.push_back(process(9, "small", 3.9));
    const Verdict verdict = verdictOn(fanMachine(0.3, rows));
    ASSERT_TRUE(verdict.suspect);
    EXPECT_EQ(verdict.suspect->displayName, "app 0");
    ASSERT_EQ(verdict.runnersUp.size(), 4U);
    EXPECT_EQ(verdict.runnersUp.front().displayName, "app 1");
    EXPECT_EQ(verdict.runnersUp.back().displayName, "app 4");

    EXPECT_FALSE(verdictOn(fanMachine(0.3, {process(1, "small", 3.9)})).suspect);
    const Verdict alone = verdictOn(fanMachine(0.3, {process(1, "small", 4)}));
    EXPECT_TRUE(alone.suspect);
    EXPECT_TRUE(alone.runnersUp.empty());
}

TEST(Diagnosis, LooksForTheCauseBeforeTheRamp) {
    History history;
    for (int age = 80; age >= 0; --age)
        history.append(at(builtNow - age, fanMachine(age <= 10 ? 0.5 : 0, {age > 14 ? process(1, "cause", 90)
                                                                                    : process(2, "effect", 100)})));
    const Verdict verdict = DiagnosisEngine::evaluate(history, format);
    EXPECT_EQ(verdict.suspect->displayName, "cause");
    EXPECT_EQ(verdict.sustainedFor, 10);
    EXPECT_TRUE(verdict.runnersUp.empty());
}

TEST(Diagnosis, ListsTheFacts) {
    Snapshot now = fanMachine(0.5);
    now.cpu = {.userPercent = 61.9, .systemPercent = 11.8, .idlePercent = 26.3};
    now.power = {.systemWatts = 41.6, .gpuWatts = 8.04};
    now.temps.soc = 95.9;
    now.memory = {.totalBytes = 1000, .wiredBytes = 300, .compressedBytes = 259};
    now.thermalPressure = ThermalPressure::serious;
    const std::vector<Factor> expected{{"cpu", "CPU", "73%", "61% apps · 11% system"},
                                       {"cube.transparent", "GPU", "8.0 W", "Under real graphics load"},
                                       {"thermometer.medium", "Chip", "95 °C", "Very hot"},
                                       {"bolt.fill", "Power", "42 W", "Whole-machine draw"},
                                       {"memorychip", "Memory", "55%", "Pressure"},
                                       {"exclamationmark.triangle.fill", "Thermal", "Serious", "Throttling now"}};
    EXPECT_EQ(verdictOn(now).factors, expected);

    const Verdict bare = verdictOn(Snapshot{.timestamp = builtNow});
    const std::vector<Factor> least{{"cpu", "CPU", "0%", "0% apps · 0% system"},
                                    {"memorychip", "Memory", "0%", "Pressure"}};
    EXPECT_EQ(bare.factors, least);
}

TEST(Diagnosis, WordsEachFactByItsBounds) {
    const auto with = [](auto change) {
        Snapshot now = fanMachine(0);
        change(now);
        return verdictOn(now);
    };
    const auto gpu = [&](double watts) { return with([&](Snapshot& now) { now.power.gpuWatts = watts; }); };
    EXPECT_EQ(factor(gpu(0.2), "GPU"), nullptr);
    EXPECT_EQ(factor(gpu(0.21), "GPU")->detail, "Light graphics activity");
    EXPECT_EQ(factor(gpu(8.0), "GPU")->detail, "Light graphics activity");

    const auto chip = [&](double soc) { return with([&](Snapshot& now) { now.temps.soc = soc; }); };
    EXPECT_EQ(factor(chip(0), "Chip"), nullptr);
    EXPECT_EQ(factor(chip(80), "Chip")->detail, "Comfortable");
    EXPECT_EQ(factor(chip(95), "Chip")->detail, "Hot");
    EXPECT_EQ(factor(chip(95.1), "Chip")->detail, "Very hot");

    const auto idle = [&](double percent) { return with([&](Snapshot& now) { now.cpu.idlePercent = percent; }); };
    EXPECT_EQ(factor(idle(-20), "CPU")->value, "100%");
    EXPECT_EQ(factor(idle(120), "CPU")->value, "0%");

    const auto memory = [&](MemoryLoad load) { return with([&](Snapshot& now) { now.memory = load; }); };
    const Verdict swapped = memory({.totalBytes = 100, .wiredBytes = 40, .compressedBytes = 10, .swapOutEvents = 1});
    EXPECT_EQ(*factor(swapped, "Memory"), (Factor{"memorychip", "Memory", "65%", "Has swapped to disk"}));
    EXPECT_EQ(factor(memory({.totalBytes = 100, .wiredBytes = 90, .swapOutEvents = 1}), "Memory")->value, "100%");
    EXPECT_EQ(factor(memory({.wiredBytes = 90, .swapOutEvents = 1}), "Memory")->value, "0%");

    const Verdict fair = with([](Snapshot& now) { now.thermalPressure = ThermalPressure::fair; });
    EXPECT_EQ(factor(fair, "Thermal")->value, "Fair");
    EXPECT_EQ(factor(fair, "Thermal")->detail, "Being watched");
}

TEST(Diagnosis, WordsDurationsAndPercentages) {
    struct Case {
        double seconds;
        const char* text;
    };
    for (const auto& [seconds, text] :
         {Case{0, "0 seconds"}, Case{46.9, "46 seconds"}, Case{89.9, "89 seconds"}, Case{90, "2 minutes"},
          Case{149, "2 minutes"}, Case{150, "3 minutes"}, Case{3569, "59 minutes"}, Case{3570, "an hour"},
          Case{3600, "an hour"}, Case{7169, "an hour"}, Case{7170, "2 hours"}, Case{7200, "2 hours"},
          Case{10799, "3 hours"}, Case{10700, "2 hours"}})
        EXPECT_EQ(DiagnosisEngine::duration(seconds), text) << seconds;
    EXPECT_EQ(DiagnosisEngine::pct(36.5), "37%");
    EXPECT_EQ(DiagnosisEngine::pct(36.49), "36%");
}

TEST(Diagnosis, NoMeasurementMakesAConversionUndefined) {
    EXPECT_EQ(truncated(-1.9), -1);
    EXPECT_EQ(rounded(-0.5), -1);
    EXPECT_EQ(truncated(std::nan("")), 0);
    EXPECT_EQ(truncated(1e300), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(truncated(-1e300), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(truncated(std::ldexp(1, 63)), std::numeric_limits<std::int64_t>::max());
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    for (const double wild : {std::nan(""), 1e300, -1e300, std::numeric_limits<double>::infinity()}) {
        Snapshot now = fanMachine(0.5, {process(1, "a", wild), process(2, "b", 50)});
        now.fans[0].minRPM = wild;
        now.temps = {.soc = wild, .socMean = wild};
        now.power = {.systemWatts = wild, .adapterWatts = wild, .gpuWatts = wild};
        now.cpu = {.userPercent = wild, .systemPercent = wild, .idlePercent = wild};
        now.memory = {.totalBytes = most, .wiredBytes = most, .compressedBytes = most};
        EXPECT_FALSE(verdictOn(now).headline.empty());
        now.cooling = Cooling::passive;
        now.chipHeat = wild;
        EXPECT_FALSE(verdictOn(now).headline.empty());
    }
}

} // namespace vantoro
