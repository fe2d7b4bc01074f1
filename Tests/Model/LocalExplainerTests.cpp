#include "Model/LocalExplainer.h"

#include "Model/Diagnosis.h"
#include "Support/HistoryBuilder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace vantoro {

using namespace vantoro::testing;

namespace {

using enum ProcessKind;
using Rows = std::vector<ProcessSample>;
using Row = Explanation::Row;
using Section = Explanation::Section;

constexpr const char* stateTitle = "Where things stand";
constexpr const char* drivingTitle = "What's drawing the power";
constexpr const char* triggerTitle = "What changed";
constexpr const char* normalityTitle = "Is this normal?";
constexpr const char* actionTitle = "What you can do";

Explanation explain(const History& history) {
    const DefaultFormatContext context;
    const Format format(context);
    return LocalExplainer::explain(history, DiagnosisEngine::evaluate(history, format), history.snapshots().back(),
                                   format);
}

Explanation explain(const Snapshot& newest, int rampSeconds = 10) {
    return explain(historyEndingIn(newest, rampSeconds));
}

std::optional<Section> section(const Explanation& explanation, const std::string& title) {
    const auto found = std::ranges::find(explanation.sections, title, &Section::title);
    return found != explanation.sections.end() ? std::optional(*found) : std::nullopt;
}

std::string body(const Snapshot& newest, const std::string& title, int rampSeconds = 10) {
    return section(explain(newest, rampSeconds), title)->body;
}

Snapshot with(auto change, Snapshot snapshot) {
    change(snapshot);
    return snapshot;
}

Snapshot under(ThermalPressure pressure, Snapshot snapshot) {
    snapshot.thermalPressure = pressure;
    return snapshot;
}

Snapshot withSoc(double celsius, Snapshot snapshot) {
    snapshot.temps.soc = celsius;
    return snapshot;
}

Rows apps(const std::vector<double>& shares) {
    Rows rows;
    for (std::size_t i = 0; i < shares.size(); ++i)
        rows.push_back(process(static_cast<int>(i) + 1, "app " + std::to_string(i), shares[i]));
    return rows;
}

} // namespace

TEST(Explainer, SaysWhatItIsBasedOn) {
    History history;
    history.append(at(0, fanMachine(0)));
    EXPECT_EQ(explain(history).subhead, "Based on 1 sample over the last 1 minute.");
    history.append(at(89, fanMachine(0)));
    EXPECT_EQ(explain(history).subhead, "Based on 2 samples over the last 1 minute.");
    history.append(at(90, fanMachine(0)));
    EXPECT_EQ(explain(history).subhead, "Based on 3 samples over the last 2 minutes.");
}

TEST(Explainer, LeavesOutWhatHasNothingToSay) {
    const auto titles = [](const Explanation& explanation) {
        std::vector<std::string> result;
        for (const Section& one : explanation.sections)
            result.push_back(one.title);
        return result;
    };
    using Titles = std::vector<std::string>;
    EXPECT_EQ(titles(explain(fanMachine(0))), (Titles{stateTitle, normalityTitle, actionTitle}));
    History history;
    for (int age = 120; age >= 0; --age)
        history.append(at(builtNow - age, fanMachine(age <= 60 ? 0.5 : 0, {process(1, "make", age <= 60 ? 90 : 5)})));
    const Explanation explanation = explain(history);
    EXPECT_EQ(titles(explanation), (Titles{stateTitle, drivingTitle, triggerTitle, normalityTitle, actionTitle}));
    EXPECT_EQ(explanation.headline, "Your fans are loud because of make");
    EXPECT_EQ(explanation.severity, Severity::elevated);
}

TEST(Explainer, TellsWhereTheLoadIsHeading) {
    const auto trend = [](const std::vector<Snapshot>& snapshots) {
        History history;
        for (std::size_t i = 0; i < snapshots.size(); ++i)
            history.append(at(10.0 * static_cast<double>(i), snapshots[i]));
        return section(explain(history), stateTitle)->rows.at(0).detail;
    };
    const auto loads = [](const std::vector<double>& values, bool fanless = false) {
        std::vector<Snapshot> snapshots;
        for (const double value : values)
            snapshots.push_back(fanless ? fanlessMachine(value) : fanMachine(value));
        return snapshots;
    };
    EXPECT_EQ(trend(loads({0, 0, 0, 1, 1})), "not enough history yet");
    EXPECT_EQ(trend(loads({0.2, 0.2, 0.2, 0.26, 0.26, 0.26})), "climbing");
    EXPECT_EQ(trend(loads({0.26, 0.26, 0.26, 0.2, 0.2, 0.2})), "winding down");
    EXPECT_EQ(trend(loads({0.2, 0.2, 0.2, 0.24, 0.24, 0.24})), "steady");
    EXPECT_EQ(trend(loads({0.2, 0.2, 0.2, 0.44, 0.2, 0.2, 0.2})), "climbing"); // the middle counts as later
    EXPECT_EQ(trend(loads({1, 1, 1, 0, 0, 0, 0, 0, 0, 0})), "steady");         // only the last minute counts
    EXPECT_EQ(trend(loads({60, 60, 60, 90, 90, 90}, true)), "heating up");
    EXPECT_EQ(trend(loads({90, 90, 90, 60, 60, 60}, true)), "cooling down");
}

TEST(Explainer, DescribesAMachineWithFans) {
    Snapshot now = fanMachine(0.5);
    now.fans = {fanAt(0.4), fanAt(0.5678, 2), {.index = 1, .rpm = 9999, .minRPM = 5, .maxRPM = 6}};
    now.temps.soc = 85.2;
    now.power = {.systemWatts = 30.6, .adapterWatts = 61.9};
    now.cpu = {.userPercent = 50.9, .systemPercent = 9.9, .idlePercent = 39.2};
    const Section state = *section(explain(now, 31), stateTitle);
    EXPECT_EQ(state.symbol, "gauge.with.dots.needle.67percent");
    EXPECT_EQ(state.body, "Your fans are loud — the fan 3 fan is at 4,839 rpm, 56% of the way between its 2,000 rpm "
                          "floor and its 7,000 rpm ceiling. They have been elevated for 31 seconds.");
    const std::vector<Row> rows{{"Fan state", "Loud", "climbing"},
                                {"Chip temperature", "85°C", "hot"},
                                {"System power", "31 W", "61 W from the charger"},
                                {"CPU", "60% busy", "50% apps, 9% system"}};
    EXPECT_EQ(state.rows, rows);

    const Section bare = *section(explain(Snapshot{.timestamp = builtNow}, 30), stateTitle);
    EXPECT_EQ(bare.body, "Your fans are off — no fans are being reported by this Mac.");
    EXPECT_EQ(bare.rows.at(1), (Row{"Chip temperature", "—", "not reported"}));
    EXPECT_EQ(bare.rows.at(2).detail, "on battery");

    const auto tied = with([](Snapshot& both) { both.fans = {fanAt(1.5, 1), fanAt(1.5, 0)}; }, now);
    EXPECT_EQ(body(tied, stateTitle, 30), "Your fans are roaring — the right fan is at 9,500 rpm, 100% of the way "
                                          "between its 2,000 rpm floor and its 7,000 rpm ceiling.");
    const auto unlimited = with([](Snapshot& one) { one.fans = {{.index = 0, .rpm = 2100.4}}; }, now);
    EXPECT_EQ(body(unlimited, stateTitle), "Your fans are off — the left fan is at 2,100 rpm.");
}

TEST(Explainer, DescribesAFanlessMachine) {
    Snapshot now = under(ThermalPressure::fair, fanlessMachine(85));
    now.temps = {.soc = 95.4, .socMean = 84.6};
    now.power = {.systemWatts = 12, .adapterWatts = 5};
    const Section state = *section(explain(now, 40), stateTitle);
    EXPECT_EQ(state.body,
              "Your Mac is running hot — the chip as a whole is at 85°C, and its hottest core at 95°C. It has been "
              "running warm for 40 seconds. This Mac has no fans: its heat leaves through the case, and at its limit "
              "the chip slows itself down rather than getting louder.");
    const std::vector<Row> rows{
        {"Condition", "Hot", "heating up"},
        {"Chip temperature", "85°C", "whole chip · hottest core 95°C, very hot, near the limit"},
        {"Thermal pressure", "Fair", "macOS is keeping an eye on the heat"},
        {"System power", "12 W", "on battery"},
        {"CPU", "0% busy", "0% apps, 0% system"}};
    EXPECT_EQ(state.rows, rows);

    const std::string unread = "Vantoro is still waiting for the chip's first usable temperature reading. An idle "
                               "Apple silicon chip parks its sensors, and they report again as soon as it does some "
                               "work.";
    EXPECT_EQ(body(under(ThermalPressure::fair, fanlessMachine(0)), stateTitle),
              unread + " This Mac has no fans, so until then there is no condition to describe.");
    EXPECT_EQ(body(under(ThermalPressure::critical, fanlessMachine(0)), stateTitle),
              unread + " macOS has raised thermal pressure to critical in the meantime, so something is warm even if "
                       "the chip hasn't said so yet.");
    EXPECT_EQ(body(withSoc(90, fanlessMachine(70)), stateTitle).rfind("Your Mac is warm. This Mac has no fans", 0), 0U);
    struct Band {
        double soc;
        const char* detail;
    };
    for (const auto& [soc, detail] :
         {Band{0, "whole chip"}, Band{68, "whole chip · hottest core 68°C, cool"},
          Band{85, "whole chip · hottest core 85°C, warm"}, Band{95, "whole chip · hottest core 95°C, hot"}})
        EXPECT_EQ(section(explain(withSoc(soc, now)), stateTitle)->rows.at(1).detail, detail);
}

TEST(Explainer, SumsUpWhoDrawsThePower) {
    struct Case {
        Snapshot now;
        const char* body;
    };
    for (const auto& [now, expected] : {
             Case{fanMachine(0.5, apps({61, 20, 19})),
                  "app 0 accounts for roughly 61% of all the CPU work in the window that heated the machine. This is a "
                  "single-culprit situation."},
             Case{fanMachine(0.5, apps({60, 20, 20})),
                  "app 0 leads at 60% of the measured load, with a few others contributing meaningfully."},
             Case{fanMachine(0.5, apps({60.5, 20, 15.5, 5, 2.9})),
                  "No single process dominates. The load is spread across 4 workloads, which together add up to about "
                  "101% CPU — that total is what the fans are responding to, not any one entry."},
             Case{fanlessMachine(85, apps({60, 20, 15, 5})),
                  "No single process dominates. The load is spread across 4 workloads, which together add up to about "
                  "100% CPU — that total is what is heating the chip, not any one entry."},
         })
        EXPECT_EQ(body(now, drivingTitle), expected);
    EXPECT_FALSE(section(explain(fanMachine(0.5, apps({2.9}))), drivingTitle));
}

TEST(Explainer, ListsTheContributors) {
    Rows rows = application(10, "Editor", 60, 2);
    rows.push_back(process(1, "make", 28.9, commandLine));
    rows.push_back(process(2, "mds_stores", 20, systemDaemon));
    rows.push_back(process(3, "kernel_task", 10, kernel));
    rows.push_back(process(4, "Mail", 8, userApp));
    rows.push_back(process(5, "agent", 5, helper));
    rows.push_back(process(6, "seventh", 4));
    const std::vector<Row> expected{{"Editor", "60%", "a helper of an app you opened · 2 processes · sustained", true},
                                    {"make", "28%", "command-line work · sustained"},
                                    {"Spotlight indexing", "20%", "a macOS background service"},
                                    {"kernel_task", "10%", "the kernel"},
                                    {"Mail", "8%", "an app you opened"},
                                    {"agent", "5%", "a helper of an app you opened"}};
    EXPECT_EQ(section(explain(fanMachine(0.5, rows)), drivingTitle)->rows, expected);
    const auto below = section(explain(fanMachine(0.5, apps({3.5}))), drivingTitle);
    EXPECT_EQ(below->rows, std::vector({Row{"app 0", "3%", "an app you opened"}})); // listed, though not blamed
}

TEST(Explainer, NamesWhatGrewWhenTheRampBegan) {
    const auto history = [](auto machine, double restLoad, double rampLoad, const Rows& before, const Rows& after) {
        History built;
        for (int age = 300; age >= 0; --age) {
            // Only the 90 seconds on either side of the ramp count: elsewhere something larger runs.
            const bool nearRamp = age <= 210 && age > 30;
            const Rows& rows = age <= 120 ? after : before;
            built.append(at(builtNow - age, machine(age <= 120 ? rampLoad : restLoad,
                                                    nearRamp ? rows : Rows{process(99, "elsewhere", 500)})));
        }
        return built;
    };
    const Rows before{process(1, "make", 10), process(2, "Mail", 20), process(3, "bird", 5), process(4, "gone", 50)};
    const Rows after{process(1, "make", 70.9), process(2, "Mail", 15), process(3, "bird", 8),
                     process(5, "backupd", 30, systemDaemon)};
    const auto trigger = section(explain(history(fanMachine, 0, 0.5, before, after)), triggerTitle);
    ASSERT_TRUE(trigger);
    EXPECT_EQ(trigger->body,
              "The fans began climbing around 9:12 AM. Comparing the 90 seconds before that against the 90 seconds "
              "after, make grew by 60 percentage points of CPU — more than anything else. That makes it the most "
              "likely trigger, even if it isn't the largest consumer overall.");
    const std::vector<Row> rows{{"make", "+60%", "increased as the fans rose", true},
                                {"Time Machine", "+30%", "increased as the fans rose"},
                                {"Mail", "-5%", "fell back"}};
    EXPECT_EQ(trigger->rows, rows); // iCloud Drive grew by too little to show

    const auto fanless = section(explain(history(fanlessMachine, 40, 85, before, after)), triggerTitle);
    EXPECT_EQ(fanless->body.rfind("The chip began heating up around 9:12 AM.", 0), 0U);
    EXPECT_EQ(fanless->rows.at(0).detail, "increased as the chip heated");

    const auto growingBy = [&](double points) {
        return section(explain(history(fanMachine, 0, 0.5, {process(1, "a", 10)}, {process(1, "a", 10 + points)})),
                       triggerTitle);
    };
    EXPECT_FALSE(growingBy(14.9));
    EXPECT_TRUE(growingBy(15));
    EXPECT_FALSE(section(explain(history(fanMachine, 0, 0.1, before, after)), triggerTitle));
}

TEST(Explainer, SaysWhetherThisIsNormal) {
    struct Case {
        Snapshot now;
        const char* expected;
    };
    const Rows editor{process(1, "Editor", 50)};
    const Rows daemon{process(1, "somed", 50, systemDaemon)};
    using enum ThermalPressure;
    for (const auto& [now, expected] : {
             Case{under(fair, fanlessMachine(0)),
                  "Nothing looks wrong, though the chip hasn't reported a temperature yet."},
             Case{fanlessMachine(60), "Yes. The chip as a whole is only mildly warm."},
             Case{withSoc(95, fanlessMachine(40)), "Yes. The machine is idling and the chip is cool."},
             Case{withSoc(96, fanlessMachine(40)),
                  "Yes. The machine is idling and the chip is cool. One core is at 96°C, which is ordinary for a "
                  "single busy thread: on a Mac without fans it is the chip as a whole that sets the limit."},
             Case{under(fair, withSoc(96, fanMachine(0.1))),
                  "Yes. The machine is idling and the fans are at or near their floor. At 96°C the chip is close to "
                  "its limit, though Apple Silicon is designed to run here under sustained load without harm."},
             Case{under(serious, fanlessMachine(0)),
                  "The chip hasn't reported a temperature yet, so the heat may be coming from the case, the battery or "
                  "a charger. macOS has raised thermal pressure to serious, which means it is actively slowing things "
                  "down to shed heat. That part is not normal for routine work."},
             Case{under(critical, withSoc(99, fanlessMachine(60))),
                  "The chip itself isn't running hot, so the heat is coming from somewhere else — the case, the "
                  "battery or a charger. macOS has raised thermal pressure to critical, which means it is actively "
                  "slowing things down to shed heat. That part is not normal for routine work."},
             Case{under(serious, fanMachine(0)),
                  "The fans are barely turning, so the heat is coming from somewhere else — the case, the battery or a "
                  "charger. macOS has raised thermal pressure to serious, which means it is actively slowing things "
                  "down to shed heat. That part is not normal for routine work."},
             Case{fanMachine(0.3, {process(1, "backupd", 50, systemDaemon)}),
                  "Yes, and it is temporary. Time Machine is a task macOS runs on its own schedule and finishes "
                  "without help."},
             Case{fanMachine(0.3, {process(1, "wifip2pd", 50, systemDaemon)}),
                  "Not quite. Wi-Fi Direct helper is a known problem case rather than ordinary background work."},
             Case{withSoc(89.9, fanMachine(0.3)),
                  "Hard to say from load alone — no process here is a known problem case."},
             Case{withSoc(90, fanMachine(0.5, daemon)),
                  "Hard to say from load alone — no process here is a known problem case."},
             Case{withSoc(89.9, fanMachine(0.5, editor)),
                  "Yes, if you expected Editor to be working hard. Sustained load from an app or a job you started is "
                  "exactly when fans are supposed to run. Temperatures are still within a comfortable range, so the "
                  "fans are keeping ahead of the heat rather than losing to it."},
             Case{fanlessMachine(70, editor),
                  "Yes, if you expected Editor to be working hard. Sustained load from an app or a job you started is "
                  "exactly what warms a Mac without fans."},
             Case{fanlessMachine(85, daemon),
                  "Hard to say from load alone — no process here is a known problem case. Fanless MacBooks are built "
                  "to run this hot under sustained work. What changes is speed: once the chip reaches its limit it "
                  "slows itself down, which is the price of silence."},
             Case{withSoc(96, fanlessMachine(70)),
                  "Hard to say from load alone — no process here is a known problem case. Its hottest core is at 96°C, "
                  "close to its limit, though Apple silicon is designed to run there under sustained load without "
                  "harm."},
             Case{with([](Snapshot& now) { now.memory = {.totalBytes = 100, .wiredBytes = 61, .swapOutEvents = 1}; },
                       fanMachine(0)),
                  "Yes. The machine is idling and the fans are at or near their floor. Memory pressure is also high, "
                  "and compression work shows up as CPU load in its own right."},
         })
        EXPECT_EQ(body(now, normalityTitle), expected);
}

TEST(Explainer, LeavesACalmMachineAlone) {
    struct Case {
        Snapshot now;
        const char* detail;
    };
    const Rows busy{process(1, "Editor", 90)};
    for (const auto& [now, detail] :
         {Case{fanlessMachine(0), "Nothing is holding the chip back."},
          Case{fanlessMachine(60, busy), "The chip is only mildly warm and nothing is holding it back."},
          Case{under(ThermalPressure::fair, fanlessMachine(40)), "The chip is cool and nothing is holding it back."},
          Case{fanMachine(0.1, busy), "Fans are at their floor and the machine is cool."}}) {
        const Section action = *section(explain(now), actionTitle);
        EXPECT_EQ(action.body, "Nothing needs doing.");
        EXPECT_EQ(action.rows, std::vector({Row{"Leave it alone", "", detail}}));
    }
}

TEST(Explainer, OrdersWhatMayHelp) {
    struct Case {
        Snapshot now;
        std::vector<Row> rows;
    };
    const auto charging = [](double watts, double idlePercent, Snapshot now) {
        now.power.adapterWatts = watts;
        now.cpu.idlePercent = idlePercent;
        return now;
    };
    const Row quitEditor{"Quit or pause Editor", "", "pid 7"};
    const Row airflow{"Improve airflow", "", "Lift the machine off soft surfaces; macOS is throttling to shed heat."};
    const Row surface{"Give it a hard, cool surface", "",
                      "It sheds heat through the bottom of the case. A lap, a blanket or a sleeve traps it and brings "
                      "the slowdown sooner."};
    const Row coolSurface{"Give it a hard, cool surface", "",
                          "It sheds heat through the bottom of the case, and macOS is already slowing the chip to shed "
                          "more. A lap, a blanket or a sleeve traps it."};
    const Row charger{"Consider the charger", "",
                      "60 W is going in while the CPU is mostly idle — fast charging makes real heat."};
    const Row toggling{"Toggling Wi-Fi off and on almost always clears it.", "", "", true};
    const Row backup{"It will stop when the backup completes.", "", "", true};
    const Row wait{"Wait it out", "", "This finishes on its own; changing things now just adds work."};
    const Rows editor{process(7, "Editor", 50)};
    using enum ThermalPressure;
    for (const auto& [now, rows] : {
             Case{fanMachine(0.5, editor), {quitEditor}},
             Case{under(serious, fanMachine(0, editor)), {quitEditor, airflow}},
             Case{fanMachine(0.5, application(1, "Editor", 50, 4)),
                  {{"Quit or pause Editor", "", "4 processes are involved"}}},
             Case{fanMachine(0.5, {process(1, "backupd", 50, systemDaemon)}), {backup, wait}},
             Case{fanMachine(0.5, {process(7, "wifip2pd", 50, commandLine)}),
                  {toggling, {"Quit or pause wifip2pd", "", "pid 7"}}},
             Case{fanlessMachine(85, editor), {quitEditor, surface}},
             Case{under(critical, fanlessMachine(40)), {coolSurface}},
             Case{charging(60.9, 70.1, fanMachine(0.5)), {charger}},
             Case{
                 charging(60, 100, fanMachine(0.5)),
                 {{"Watch the timeline", "", "No clear single cause. The Timeline tab shows what preceded the ramp."}}},
             Case{
                 charging(90, 70, fanlessMachine(70, {process(1, "somed", 50, systemDaemon)})),
                 {{"Watch the timeline", "", "No clear single cause. The Timeline tab shows what preceded the rise."}}},
         })
        EXPECT_EQ(section(explain(now), actionTitle)->rows, rows);
    EXPECT_EQ(body(fanMachine(0.5), actionTitle), "General options, since no single process stands out.");
    EXPECT_EQ(body(fanMachine(0.5, {process(1, "backupd", 50, systemDaemon)}), actionTitle),
              "Ordered by what is most likely to help, given Time Machine is leading.");
}

TEST(Explainer, NoMeasurementMakesAConversionUndefined) {
    for (const double wild : {std::nan(""), 1e300, -1e300, std::numeric_limits<double>::infinity()}) {
        Snapshot now = fanMachine(0.5, {process(1, "a", wild), process(2, "b", 50)});
        now.fans.push_back({.index = std::numeric_limits<int>::max(), .rpm = wild, .minRPM = 0, .maxRPM = wild});
        now.temps = {.soc = wild, .socMean = wild};
        now.power = {.systemWatts = wild, .adapterWatts = wild, .gpuWatts = wild};
        now.cpu = {.userPercent = wild, .systemPercent = wild, .idlePercent = wild};
        EXPECT_GE(explain(now).sections.size(), 3U);
        now.cooling = Cooling::passive;
        EXPECT_GE(explain(now).sections.size(), 3U);
    }
}

} // namespace vantoro
