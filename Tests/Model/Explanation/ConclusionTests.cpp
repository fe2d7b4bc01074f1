// What is concluded and said about one machine after another, compared whole with the texts in Fixtures/conclusions.
#include "Model/Explanation/Explanation.h"

#include "Model/Records/Verdict.h"
#include "Model/Text/Numbers.h"
#include "Support/FixedFormatContext.h"
#include "Support/Golden.h"
#include "Support/HistoryBuilder.h"

#include <fmt/format.h>

namespace vantoro {
namespace {

using namespace vantoro::testing;
using enum ProcessKind;
using enum ThermalPressure;
using Rows = std::vector<ProcessSample>;

Snapshot under(ThermalPressure pressure, Snapshot snapshot) {
    snapshot.thermalPressure = pressure;
    return snapshot;
}

/// With its hottest core, and the chip as a whole, this warm.
Snapshot chipAt(double soc, double socMean, Snapshot snapshot) {
    snapshot.temps = {.soc = soc, .socMean = socMean};
    return snapshot;
}

Snapshot drawing(PowerReading power, Snapshot snapshot) {
    snapshot.power = power;
    return snapshot;
}

Snapshot holding(MemoryLoad memory, Snapshot snapshot) {
    snapshot.memory = memory;
    return snapshot;
}

Snapshot computing(CPULoad cpu, Snapshot snapshot) {
    snapshot.cpu = cpu;
    return snapshot;
}

Snapshot turning(std::vector<FanReading> fans) {
    return {.timestamp = builtNow, .fans = std::move(fans)};
}

Rows apps(const std::vector<double>& shares) {
    Rows rows;
    for (std::size_t i = 0; i < shares.size(); ++i)
        rows.push_back(process(static_cast<int>(i) + 1, "app " + std::to_string(i), shares[i]));
    return rows;
}

Rows one(const std::string& name, double percent = 50, ProcessKind kind = userApp) {
    return {process(7, name, percent, kind)};
}

/// One snapshot a second for `seconds`, each as it was that many seconds ago.
History history(int seconds, auto snapshotAt) {
    History built;
    for (int age = seconds; age >= 0; --age)
        built.append(at(builtNow - age, snapshotAt(age)));
    return built;
}

std::string lines(const Conclusion& conclusion) {
    const Verdict& verdict = conclusion.verdict;
    std::string text =
        fmt::format("{}, {}, {}{}, for {} s\n{}\n{}\n{}\n", caseName(verdict.severity), caseName(verdict.state),
                    verdict.stateLabel(), verdict.awaitingReading ? ", awaiting a reading" : "", verdict.sustainedFor,
                    verdict.headline, verdict.detail, verdict.cause);
    if (verdict.suspect)
        text += "suspects: " + verdict.suspect->displayName;
    for (const ProcessGroup& group : verdict.runnersUp)
        text += ", " + group.displayName;
    text += verdict.suspect ? "\n" : "";
    for (const auto& [symbol, title, value, detail] : verdict.factors)
        text += fmt::format("  {} | {} | {} | {}\n", symbol, title, value, detail);
    for (const Advice& advice : verdict.advice)
        text += fmt::format("- {}{}\n", advice.text, advice.quitPID ? fmt::format(" [{}]", *advice.quitPID) : "");
    const Explanation& explanation = conclusion.explanation;
    EXPECT_EQ(explanation.headline, verdict.headline);
    EXPECT_EQ(explanation.severity, verdict.severity);
    text += explanation.subhead + "\n";
    for (const auto& [symbol, title, body, rows] : explanation.sections) {
        text += fmt::format("[{}] {}: {}\n", symbol, title, body);
        for (const auto& [label, value, detail, emphasised] : rows)
            text += fmt::format("  {}{} | {} | {}\n", emphasised ? "*" : "", label, value, detail);
    }
    return text;
}

class Scenarios {
public:
    void add(const std::string& name, const History& history, const FormatContext& context = DefaultFormatContext()) {
        text_ += "## " + name + "\n" + lines(conclude(history, Format(context))) + "\n";
    }
    void add(const std::string& name, const Snapshot& newest, int rampSeconds = 10) {
        add(name, historyEndingIn(newest, rampSeconds));
    }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

TEST(Conclusions, OnAMachineAtRest) {
    Scenarios all;
    all.add("nothing measured", History());
    all.add("no figure at all", Snapshot{.timestamp = builtNow});
    all.add("fans at their floor", fanMachine(0));
    all.add("someone at 40 %", under(fair, fanMachine(0.1, one("Editor", 40))));
    all.add("someone above 40 %", fanMachine(0.1, one("mds_stores", 40.5, systemDaemon)));
    all.add("an application of three", fanMachine(0, application(1, "Editor", 90, 3)));
    all.add("fans, hot core", under(fair, chipAt(96, 0, fanMachine(0.1))));
    all.add("fanless, cool", chipAt(95, 41.4, fanlessMachine(40)));
    all.add("fanless, cool, hot core", chipAt(96, 0, fanlessMachine(40)));
    all.add("fanless, busy", fanlessMachine(60, one("Editor")));
    all.add("fanless, no reading", under(fair, fanlessMachine(0, one("Editor"))));
    all.add("throttling, fans", under(serious, fanMachine(0.1, one("Editor"))));
    all.add("throttling, fanless", under(critical, chipAt(99, 0, fanlessMachine(60))));
    all.add("throttling, no reading", under(serious, fanlessMachine(0)));
    all.add("short of memory", holding({.totalBytes = 100, .wiredBytes = 61, .swapOutEvents = 1},
                                       drawing({.gpuWatts = 0.2}, fanMachine(0))));
    FixedFormatContext fahrenheit;
    fahrenheit.texts["temperatureUnit"] = "F";
    all.add("in Fahrenheit", historyEndingIn(chipAt(96, 40, fanlessMachine(40))), fahrenheit);
    expectGolden("conclusions/at-rest.txt", all.text());
}

TEST(Conclusions, OnWhoIsToBlame) {
    Scenarios all;
    for (const std::vector<double>& shares :
         std::vector<std::vector<double>>{{46, 30, 24}, {45, 30, 25}, {45, 44}, {61, 20, 19}, {60, 20, 20}})
        all.add(fmt::format("shares of {}", fmt::join(shares, ", ")), fanMachine(0.3, apps(shares)));
    all.add("spread wide", fanMachine(0.5, apps({60.5, 20, 15.5, 5, 4, 3.9, 3.5, 2.9})));
    all.add("spread wide, fanless", fanlessMachine(80, apps({60, 20, 15, 5, 4.5, 4})));
    all.add("too little to blame, enough to list", fanMachine(0.3, apps({3.5})));
    all.add("too little to list", fanMachine(0.3, apps({2.9})));
    Rows editor = application(1, "Editor", 20, 2);
    editor.push_back(process(9, "Editor", 50, userApp, "Editor"));
    editor.push_back(process(3, "zip", 28.9, commandLine));
    editor.push_back(process(0, "kernel_task", 10, kernel));
    all.add("one application's processes, the busiest last", fanMachine(0.5, editor));
    all.add("helpers only", fanMachine(0.3, application(1, "Editor", 90, 3)), 46);
    all.add("one helper", fanMachine(0.3, one("agent", 62.5, helper)), 45);
    all.add("command line", fanMachine(0.3, one("make", 62.5, commandLine)), 46);
    all.add("a service, fanless", fanlessMachine(85, one("somed", 50, systemDaemon)), 130);
    all.add("a service, 90 °C", chipAt(90, 0, fanMachine(0.5, one("somed", 50, systemDaemon))));
    all.add("part of the kernel", fanMachine(0.3, one("other", 50, kernel)));
    for (const auto& [name, kind] : {std::pair{"kernel_task", kernel},
                                     {"backupd", systemDaemon},
                                     {"wifip2pd", commandLine},
                                     {"wifip2pd", systemDaemon},
                                     {"coreaudiod", userApp}})
        all.add(fmt::format("{}, {}", name, caseName(kind)), fanMachine(0.3, one(name, 50, kind)));
    // A steady 45 % outranks a 55 % that came in one burst; the burst is the larger consumer all the same.
    all.add("steady against bursts", history(75, [](int age) {
                return fanMachine(0.3, {process(1, "steady", 45), process(2, "bursts", age % 5 == 0 ? 235 : 10)});
            }));
    const auto wavering = [](double low, double high, int count) {
        return history(
            75, [=](int age) { return fanMachine(0.3, application(1, "Editor", age % 2 == 0 ? low : high, count)); });
    };
    all.add("between 12 and 28, 1 of it", wavering(12, 28, 1));
    all.add("between 11 and 29, 1 of it", wavering(11, 29, 1));
    all.add("between 0 and 80, 2 of it", wavering(0, 80, 2));
    all.add("the cause before the ramp", history(80, [](int age) {
                return fanMachine(age <= 10 ? 0.5 : 0, age > 14 ? one("cause", 90) : one("effect", 100));
            }));
    expectGolden("conclusions/on-blame.txt", all.text());
}

TEST(Conclusions, OnHeatAndWhatMayHelp) {
    Scenarios all;
    const Rows editor = one("Editor");
    const Rows known = one("coreaudiod"); // has no advice of its own
    const MemoryLoad swapped{.totalBytes = 100, .wiredBytes = 90, .swapOutEvents = 1};
    all.add("memory at its bound",
            holding({.totalBytes = 100, .wiredBytes = 70, .compressedBytes = 5}, fanMachine(0.9, known)));
    all.add("throttling and swapping", holding(swapped, under(serious, fanMachine(0.9, editor))));
    all.add("throttling, fanless", under(critical, fanlessMachine(95, known)));
    all.add("fanless, hot enough", holding(swapped, under(fair, fanlessMachine(80, known))));
    all.add("fanless, not hot enough", holding({.wiredBytes = 90, .swapOutEvents = 1}, fanlessMachine(79.9, editor)));
    all.add("within comfort", chipAt(89.9, 0, fanMachine(0.5, editor)));
    all.add("fanless, hot core", chipAt(96, 0, fanlessMachine(70)));
    const Snapshot fans = fanMachine(0.6, one("small", 3.9));
    all.add("graphics", drawing({.adapterWatts = 90, .gpuWatts = 8.1}, fans), 60);
    all.add("charger",
            computing({.idlePercent = 70.1}, drawing({.adapterWatts = 60.9, .gpuWatts = 8.0}, chipAt(90, 0, fans))));
    all.add("charger while computing", computing({.idlePercent = 70}, drawing({.adapterWatts = 60.9}, fans)));
    all.add("charger at its bound", drawing({.adapterWatts = 60, .gpuWatts = 0.21}, chipAt(71, 60, fans)));
    all.add("no heat left", chipAt(70, 60, fans));
    all.add("heat left, fanless", chipAt(71, 60, fanlessMachine(85)));
    all.add("heat left in a core, fanless", chipAt(71, 0, fanlessMachine(85)));
    all.add("no heat left, fanless", computing({.idlePercent = -20}, fanlessMachine(85)));

    Snapshot now = drawing({.systemWatts = 30.6, .adapterWatts = 61.9}, chipAt(85.2, 0, fanMachine(0)));
    now.fans = {fanAt(0.4), fanAt(0.5678, 2), {.index = 1, .rpm = 9999, .minRPM = 5, .maxRPM = 6}};
    now.cpu = {.userPercent = 50.9, .systemPercent = 9.9, .idlePercent = 39.2};
    all.add("three fans", now, 31);
    all.add("tied fans", turning({fanAt(1.5, 1), fanAt(1.5, 0)}), 30);
    all.add("fans without limits", turning({{.index = 0, .rpm = 2100.4}}));
    all.add("fanless in full",
            drawing({.systemWatts = 12, .adapterWatts = 5}, under(fair, chipAt(95.4, 84.6, fanlessMachine(85)))), 40);
    for (const double soc : {68.0, 80.0, 85.0, 95.0})
        all.add(fmt::format("core at {}", soc), under(serious, chipAt(soc, 60, fanlessMachine(85))));
    expectGolden("conclusions/on-heat.txt", all.text());
}

TEST(Conclusions, OnWhatGrewWhenTheRampBegan) {
    Scenarios all;
    const Rows before{process(1, "make", 10), process(2, "Mail", 20), process(3, "bird", 5), process(4, "gone", 50)};
    const Rows after{process(1, "make", 70.9), process(2, "Mail", 15), process(3, "bird", 8),
                     process(5, "backupd", 30, systemDaemon)};
    // Only the 90 seconds on either side of the ramp count: elsewhere something larger runs.
    const auto ramp = [](auto machine, double restLoad, double rampLoad, const Rows& earlier, const Rows& later) {
        return history(300, [&](int age) {
            const Rows& rows = age <= 120 ? later : earlier;
            return machine(age <= 120 ? rampLoad : restLoad, age <= 210 && age > 30 ? rows : one("elsewhere", 500));
        });
    };
    all.add("fans", ramp(fanMachine, 0, 0.5, before, after));
    all.add("fanless", ramp(fanlessMachine, 40, 85, before, after));
    all.add("no ramp", ramp(fanMachine, 0, 0.1, before, after));
    all.add("grew by 14.9", ramp(fanMachine, 0, 0.5, one("a", 10), one("a", 24.9)));
    all.add("grew by 15", ramp(fanMachine, 0, 0.5, one("a", 10), one("a", 25)));
    expectGolden("conclusions/on-ramps.txt", all.text());
}

/// The same, in a computer's words.
History ofLinux(History history) {
    history.setSystem(SystemKind::gnuLinux);
    return history;
}

TEST(Conclusions, InAComputersWords) {
    constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30U;
    const MemoryLoad memory{.totalBytes = 16 * gigabyte, .swapOutEvents = 7, .availableBytes = 19 * gigabyte / 2};
    const Rows make = application(1, "make", 489, 12, commandLine);
    Scenarios all;
    const auto add = [&all](const std::string& name, Snapshot newest, int rampSeconds = 10) {
        all.add(name, ofLinux(historyEndingIn(newest, rampSeconds)));
    };
    Snapshot bare = holding(memory, bareMachine(66, make));
    bare.stalls = {.cpu = 3, .memory = 0, .io = 6};
    add("nothing known but work", bare, 360);
    Snapshot stalled = bareMachine(99.7, {process(1, "gzip", 3), process(2, "somed", 8, systemDaemon)});
    stalled.stalls = {.cpu = 71, .memory = 18, .io = 2};
    stalled.throttle = {{ThrottleReason::power, ThrottleReason::profile}};
    add("flat out, waiting, slowed down", stalled, 20);
    add("busy with nobody to blame", bareMachine(30));
    add("bare, little to do", holding(memory, bareMachine(10, one("Editor", 80))));
    add("bare, idle", bareMachine(0));
    add("bare, under pressure that says nothing", under(serious, bareMachine(0)));

    Snapshot blender = chipAt(88, 81, holding(memory, speedOnlyMachine(81, one("Blender", 1347))));
    blender.power = {.gpuWatts = 11, .cpuWatts = 142};
    blender.favoursSpeed = true;
    add("fans by their speed", blender, 540);
    blender.fans = {{.index = 0, .rpm = 1840, .name = "CPU fan"},
                    {.index = 1, .rpm = 2760, .name = "Pump"},
                    {.index = 2, .rpm = 0, .name = "PSU"},
                    {.index = 3, .rpm = 980, .name = "Fan 4"},
                    {.index = 4, .rpm = 700, .name = "Rear"}};
    blender.throttle = {{ThrottleReason::temperature}};
    add("five fans, throttling", under(critical, blender));
    add("hot with nobody to blame", chipAt(75, 70, speedOnlyMachine(70)));
    add("heat, cool", chipAt(45, 40, speedOnlyMachine(40)));
    add("heat, no reading", speedOnlyMachine(0, one("Editor")));
    add("a board without fans", chipAt(97, 84, fanlessMachine(84, one("somed", 90, systemDaemon))));
    add("a board, under pressure", under(serious, chipAt(60, 45, fanlessMachine(45))));

    Snapshot unfelt = chipAt(92, 85, fanMachine(0.1, make));
    unfelt.cpu = {.userPercent = 95, .systemPercent = 5, .idlePercent = 0};
    add("at work, fans near their floor", unfelt);
    unfelt.processes.clear();
    add("at work with nobody to blame", unfelt);
    Snapshot idle = chipAt(45, 40, fanMachine(0));
    idle.power = {.systemWatts = 11.2, .batteryWatts = 11.2};
    idle.throttle.emplace();
    add("on battery, free", idle);
    idle.power = {.systemWatts = 40, .adapterWatts = 65, .batteryWatts = 24};
    add("charging", drawing(idle.power, chipAt(60, 50, fanMachine(0.4))));
    Snapshot card = chipAt(85, 80, fanMachine(0.02));
    card.power.gpuWatts = 35;
    add("a card that draws power at rest", card);
    card = fanMachine(0.5);
    card.power.gpuWatts = 58;
    card.gpuPercent = 92;
    add("a card at work", card);
    expectGolden("conclusions/of-computers.txt", all.text());
}

TEST(Conclusions, TellWhereTheLoadIsHeading) {
    const auto trend = [](auto machine, const std::vector<double>& loads) {
        History built;
        for (std::size_t i = 0; i < loads.size(); ++i)
            built.append(at(10.0 * static_cast<double>(i), machine(loads[i], Rows())));
        const DefaultFormatContext context;
        return conclude(built, Format(context)).explanation.sections.at(0).rows.at(0).detail;
    };
    EXPECT_EQ(trend(fanMachine, {0, 0, 0, 1, 1}), "not enough history yet");
    EXPECT_EQ(trend(fanMachine, {0.2, 0.2, 0.2, 0.26, 0.26, 0.26}), "climbing");
    EXPECT_EQ(trend(fanMachine, {0.26, 0.26, 0.26, 0.2, 0.2, 0.2}), "winding down");
    EXPECT_EQ(trend(fanMachine, {0.2, 0.2, 0.2, 0.24, 0.24, 0.24}), "steady");
    EXPECT_EQ(trend(fanMachine, {0.2, 0.2, 0.2, 0.44, 0.2, 0.2, 0.2}), "climbing"); // the middle counts as later
    EXPECT_EQ(trend(fanMachine, {1, 1, 1, 0, 0, 0, 0, 0, 0, 0}), "steady");         // only the last minute counts
    EXPECT_EQ(trend(fanlessMachine, {60, 60, 60, 90, 90, 90}), "heating up");
    EXPECT_EQ(trend(fanlessMachine, {90, 90, 90, 60, 60, 60}), "cooling down");
    EXPECT_EQ(trend(speedOnlyMachine, {60, 60, 60, 90, 90, 90}), "heating up");
    EXPECT_EQ(trend(bareMachine, {10, 10, 10, 60, 60, 60}), "getting busier");
    EXPECT_EQ(trend(bareMachine, {60, 60, 60, 10, 10, 10}), "easing off");
}

TEST(Conclusions, SayWhatTheyAreBasedOn) {
    History history;
    for (const auto& [time, text] : {std::pair{0, "Based on 1 sample over the last 1 minute."},
                                     {89, "Based on 2 samples over the last 1 minute."},
                                     {90, "Based on 3 samples over the last 2 minutes."}}) {
        history.append(at(time, fanMachine(0)));
        EXPECT_EQ(conclude(history, Format(DefaultFormatContext())).explanation.subhead, text);
    }
}

TEST(Conclusions, NoMeasurementMakesAConversionUndefined) {
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
        now.fans.push_back({.index = std::numeric_limits<int>::max(), .rpm = wild, .minRPM = 0, .maxRPM = wild});
        now.temps = {.soc = wild, .socMean = wild};
        now.power = {.systemWatts = wild, .adapterWatts = wild, .gpuWatts = wild};
        now.cpu = {.userPercent = wild, .systemPercent = wild, .idlePercent = wild};
        now.memory = {.totalBytes = most, .wiredBytes = most, .compressedBytes = most};
        for (const Cooling cooling : {Cooling::fans, Cooling::passive, Cooling::heat, Cooling::load}) {
            now.cooling = cooling;
            now.chipHeat = wild;
            EXPECT_GE(conclude(historyEndingIn(now), Format(DefaultFormatContext())).explanation.sections.size(), 3U);
        }
    }
}

} // namespace
} // namespace vantoro
