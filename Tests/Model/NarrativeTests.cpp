#include "Model/Diagnosis.h"
#include "Support/FixedFormatContext.h"
#include "Support/HistoryBuilder.h"

#include <gtest/gtest.h>

namespace vantoro {

using namespace vantoro::testing;

namespace {

using enum ProcessKind;
using Rows = std::vector<ProcessSample>;

Verdict verdictOn(const Snapshot& newest, int rampSeconds = 10) {
    const DefaultFormatContext context;
    return DiagnosisEngine::evaluate(historyEndingIn(newest, rampSeconds), Format(context));
}

Snapshot under(ThermalPressure pressure, Snapshot snapshot) {
    snapshot.thermalPressure = pressure;
    return snapshot;
}

Snapshot withChipAt(double socMean, double soc, Snapshot snapshot) {
    snapshot.temps.socMean = socMean;
    snapshot.temps.soc = soc;
    return snapshot;
}

Snapshot drawing(PowerReading power, Snapshot snapshot) {
    snapshot.power = power;
    return snapshot;
}

std::vector<std::string> texts(const std::vector<Advice>& advice) {
    std::vector<std::string> result;
    for (const Advice& item : advice)
        result.push_back(item.text);
    return result;
}

} // namespace

TEST(Narrative, AMachineAtRest) {
    struct Case {
        Snapshot now;
        const char* headline;
        const char* detail;
        const char* cause;
    };
    const std::string fromElsewhere = "Heat in the case, a warm battery or fast charging can raise it too.";
    const char* nothing = "Nothing is working the machine hard";
    const char* slowing = "macOS is slowing the chip to shed heat";
    using enum ThermalPressure;
    for (const auto& [now, headline, detail, cause] : {
             Case{fanMachine(0), "All quiet",
                  "Nothing is working the machine hard right now. Fans are near their floor of 2000 rpm.", nothing},
             Case{under(fair, fanMachine(0.1, {process(1, "Editor", 40)})), "Running cool",
                  "Nothing is working the machine hard right now. Fans are near their floor of 2000 rpm.", nothing},
             Case{Snapshot{.timestamp = builtNow}, "All quiet",
                  "Nothing is working the machine hard right now. Fans are near their floor of 0 rpm.", nothing},
             Case{fanMachine(0.1, {process(1, "mds_stores", 40.5)}), "Running cool",
                  "Spotlight indexing is the busiest at 41%, but the machine is handling it without needing much "
                  "airflow.",
                  "Spotlight indexing is busiest, but the machine is coping"},
             Case{fanMachine(0, application(1, "Editor", 90, 3)), "All quiet",
                  "Editor is the busiest at 90% across 3 processes, but the machine is handling it without needing "
                  "much airflow.",
                  "Editor is busiest, but the machine is coping"},
             Case{withChipAt(41.4, 0, fanlessMachine(40)), "All cool",
                  "Nothing is working the machine hard right now. The chip is at 41°C.", nothing},
             Case{fanlessMachine(60), "Running comfortably", "Nothing is working the machine hard right now.", nothing},
             Case{fanlessMachine(60, {process(1, "Editor", 50)}), "Running comfortably",
                  "Editor is the busiest at 50%, but the chip is shedding the heat without strain.",
                  "Editor is busiest, but the machine is coping"},
             Case{under(fair, fanlessMachine(0, {process(1, "Editor", 50)})), "Waiting for the chip",
                  "The chip hasn't given a usable temperature yet. An idle Apple silicon chip parks its sensors, and "
                  "they report again as soon as it does some work.",
                  "Waiting for the chip's first temperature reading"},
             Case{under(serious, fanMachine(0.1, {process(1, "Editor", 50)})), slowing,
                  "Thermal pressure is serious even though the fans are barely turning. Heat in the case, a warm "
                  "battery or fast charging can raise it too.",
                  slowing},
             Case{under(critical, fanlessMachine(60)), slowing,
                  "Thermal pressure is critical even though the chip itself isn't running hot. Heat in the case, a "
                  "warm battery or fast charging can raise it too.",
                  slowing},
             Case{under(serious, fanlessMachine(0)), slowing,
                  "Thermal pressure is serious. The chip hasn't reported a temperature yet, but heat in the case, a "
                  "warm battery or fast charging can raise it too.",
                  slowing},
         }) {
        const Verdict verdict = verdictOn(now);
        EXPECT_EQ(verdict.headline, headline);
        EXPECT_EQ(verdict.detail, detail);
        EXPECT_EQ(verdict.cause, cause);
        EXPECT_TRUE(verdict.advice.empty());
    }
}

TEST(Narrative, TemperaturesAreWordedInTheUsersUnit) {
    FixedFormatContext context;
    context.texts["temperatureUnit"] = "F";
    const History history = historyEndingIn(withChipAt(40, 0, fanlessMachine(40)));
    EXPECT_EQ(DiagnosisEngine::evaluate(history, Format(context)).detail,
              "Nothing is working the machine hard right now. The chip is at 104°F.");
}

TEST(Narrative, AHeadlineBlamesOneProcessUnlessThreeShareTheLoad) {
    struct Case {
        std::vector<double> shares;
        const char* headline;
    };
    for (const auto& [shares, headline] : {
             Case{{46, 30, 24}, "Your fans are audible because of app 0"},
             Case{{45, 30, 25}, "Your fans are audible — app 0 leads, but the load is spread out"},
             Case{{45, 44}, "Your fans are audible because of app 0"},
             Case{{45}, "Your fans are audible because of app 0"},
         }) {
        Rows rows;
        for (std::size_t i = 0; i < shares.size(); ++i)
            rows.push_back(process(static_cast<int>(i), "app " + std::to_string(i), shares[i]));
        EXPECT_EQ(verdictOn(fanMachine(0.3, rows)).headline, headline);
    }
    // The leader by score need not be the largest consumer: a steady 45 % outranks a 55 % that came in one burst.
    History history;
    for (int age = 75; age >= 0; --age)
        history.append(at(builtNow - age,
                          fanMachine(0.3, {process(1, "steady", 45), process(2, "bursts", age % 5 == 0 ? 235 : 10)})));
    const DefaultFormatContext context;
    const Verdict verdict = DiagnosisEngine::evaluate(history, Format(context));
    EXPECT_NEAR(verdict.runnersUp.at(0).totalCPU, 55, 1e-9);
    EXPECT_EQ(verdict.headline, "Your fans are audible because of steady");
}

TEST(Narrative, ADetailSaysHowMuchForHowLongAndWhatItIs) {
    struct Case {
        Snapshot now;
        int rampSeconds;
        const char* detail;
        const char* cause;
    };
    for (const auto& [now, rampSeconds, detail, cause] : {
             Case{fanMachine(0.3, {process(1, "Editor", 62.5)}), 45,
                  "Editor averaged 63% CPU over the window that heated the machine.", "because of Editor"},
             Case{fanMachine(0.3, {process(1, "make", 62.5, commandLine)}), 46,
                  "make averaged 63% CPU over the window that heated the machine, and the fans have been up for 46 "
                  "seconds. This is command-line work running under your account — a build, a script or a job you "
                  "started.",
                  "because of make, for 46 seconds"},
             Case{fanlessMachine(85, {process(1, "somed", 50, systemDaemon)}), 130,
                  "somed averaged 50% CPU over the window that heated the machine, and the chip has been running warm "
                  "for 2 minutes. This is a macOS background service rather than something you opened.",
                  "because of somed, for 2 minutes"},
             Case{fanMachine(0.3, application(1, "Editor", 90, 3)), 46,
                  "Editor averaged 90% CPU across 3 processes over the window that heated the machine, and the fans "
                  "have been up for 46 seconds. No single one of those processes stands out — it is their combined "
                  "load that is heating the machine.",
                  "because of Editor × 3, for 46 seconds"},
             Case{fanMachine(0.3, {process(1, "backupd", 50, systemDaemon)}), 10,
                  "Time Machine averaged 50% CPU over the window that heated the machine. It's a Time Machine backup "
                  "running right now.",
                  "because of Time Machine"},
         }) {
        const Verdict verdict = verdictOn(now, rampSeconds);
        EXPECT_EQ(verdict.detail, detail);
        EXPECT_EQ(verdict.cause, cause);
    }
}

TEST(Narrative, APeakIsNamedWhenItStandsOut) {
    const auto detail = [](double low, double high, int processCount) {
        History history;
        for (int age = 75; age >= 0; --age)
            history.append(
                at(builtNow - age, fanMachine(0.3, application(1, "Editor", age % 2 == 0 ? low : high, processCount))));
        const DefaultFormatContext context;
        return DiagnosisEngine::evaluate(history, Format(context)).detail;
    };
    EXPECT_EQ(detail(12, 28, 1), "Editor averaged 20% CPU over the window that heated the machine, and the fans have "
                                 "been up for 75 seconds.");
    EXPECT_EQ(detail(11, 29, 1), "Editor averaged 20% CPU, peaking at 29% over the window that heated the machine, and "
                                 "the fans have been up for 75 seconds.");
    EXPECT_EQ(detail(0, 80, 2).find("peaking"), std::string::npos);
}

TEST(Narrative, AdviceDependsOnWhoIsToBlame) {
    struct Case {
        ProcessSample row;
        std::vector<Advice> advice;
    };
    const std::string byItself = "This one ends by itself — worth waiting out before changing anything.";
    const std::string systemProcess = "This is a system process. If it stays pinned for more than a few minutes, a "
                                      "restart is the reliable fix.";
    const std::string whenFinished = "This will stop when the job finishes. If you did not expect it to be running, "
                                     "check your terminal sessions.";
    const std::string doingTheWork = "Editor is doing the work. Closing the tab, document or project it's busy with is "
                                     "usually enough.";
    const std::string toggling = "Toggling Wi-Fi off and on almost always clears it.";
    for (const auto& [row, advice] : {
             Case{process(7, "Editor", 50, userApp), {{doingTheWork, {}}, {"Quit Editor", 7}}},
             Case{process(7, "Editor", 50, helper), {{doingTheWork, {}}, {"Quit Editor", 7}}},
             Case{process(7, "make", 50, commandLine), {{whenFinished, {}}, {"Quit make", 7}}},
             Case{process(7, "somed", 50, systemDaemon), {{systemProcess, {}}}},
             Case{process(7, "other", 50, kernel), {{systemProcess, {}}}},
             Case{process(0, "kernel_task", 50, kernel),
                  {{"Look at what was running just before this climbed — that's the real cause.", {}}, {byItself, {}}}},
             Case{process(7, "wifip2pd", 50, commandLine), {{toggling, {}}, {"Quit Wi-Fi Direct helper", 7}}},
             Case{process(7, "wifip2pd", 50, systemDaemon), {{toggling, {}}}},
             Case{process(7, "coreaudiod", 50, userApp), {}},
         })
        EXPECT_EQ(verdictOn(fanMachine(0.3, {row})).advice, advice) << row.displayName();
    // The quit item ends the busiest process of a group.
    Rows rows = application(1, "Editor", 20, 2);
    rows.push_back(process(9, "Editor", 50, userApp, "Editor"));
    EXPECT_EQ(verdictOn(fanMachine(0.3, rows)).advice.at(1), (Advice{"Quit Editor", 9}));
}

TEST(Narrative, AdviceAddsHeatAndMemory) {
    const std::string throttling = "macOS is actively throttling to shed heat, so everything will feel slower until "
                                   "this clears.";
    const std::string surface = "Without fans, this Mac sheds heat through the bottom of its case. A hard, cool "
                                "surface helps; a lap or a blanket brings the slowdown sooner.";
    const std::string memory = "Memory pressure is high as well — compression and swapping are adding CPU load of "
                               "their own.";
    const MemoryLoad atBound{.totalBytes = 100, .wiredBytes = 75};
    const MemoryLoad withSwap{.totalBytes = 100, .wiredBytes = 61, .swapOutEvents = 1};
    struct Case {
        Snapshot now;
        MemoryLoad memory;
        std::vector<std::string> expected;
    };
    const Rows rows{process(1, "coreaudiod", 50)}; // known, with no advice of its own
    using enum ThermalPressure;
    for (const auto& [now, load, expected] : {
             Case{fanMachine(0.9, rows), atBound, {}},
             Case{under(serious, fanMachine(0.9, rows)), withSwap, {throttling, memory}},
             Case{under(critical, fanlessMachine(95, rows)), {}, {throttling}},
             Case{under(fair, fanlessMachine(80, rows)), withSwap, {surface, memory}},
             Case{fanlessMachine(79.9, rows), {.wiredBytes = 90, .swapOutEvents = 1}, {}},
         }) {
        Snapshot loaded = now;
        loaded.memory = load;
        EXPECT_EQ(texts(verdictOn(loaded).advice), expected);
    }
}

TEST(Narrative, HeatThatNoProcessExplains) {
    const Snapshot fans = fanMachine(0.6, {process(1, "small", 3.9)});
    const Snapshot passive = fanlessMachine(85);
    const char* gpu = "CPU load is low but the GPU is drawing 8.1 W, so something is rendering rather than computing.";
    const char* charger = "CPU load is low. The machine is pulling 60 W from the charger, and fast charging alone "
                          "produces real heat.";
    const char* residual = "The chip is still at 71°C from earlier work — the fans are clearing residual heat and "
                           "should wind down shortly.";
    struct Case {
        Snapshot now;
        const char* detail;
    };
    for (const auto& [now, detail] : {
             Case{drawing({.adapterWatts = 90, .gpuWatts = 8.1}, fans), gpu},
             Case{drawing({.adapterWatts = 60.9, .gpuWatts = 8.0}, withChipAt(0, 90, fans)), charger},
             Case{drawing({.adapterWatts = 60}, withChipAt(60, 71, fans)), residual},
             Case{withChipAt(60, 70, fans), "No process stands out. This is usually the tail of a burst that has "
                                            "already finished, or heat from charging."},
             Case{withChipAt(60, 71, passive), "The chip is still at 60°C from earlier work. Without fans it cools "
                                               "through the case, which takes a few minutes rather than seconds."},
             Case{withChipAt(0, 71, passive), residual},
             Case{passive, "No process stands out. This is usually heat left over from work that has already finished, "
                           "or from charging."},
         })
        EXPECT_EQ(verdictOn(now).detail, detail);

    const Verdict loud = verdictOn(fans, 60);
    EXPECT_EQ(loud.headline, "Your fans are loud, but nothing looks busy");
    EXPECT_EQ(loud.cause, "No process stands out");
    const std::vector<Advice> expected{
        {"If this persists with no load, check for a blocked vent, high room temperature, or heavy charging.", {}}};
    EXPECT_EQ(loud.advice, expected);
    const std::vector<Advice> expectedFanless{{"If this persists with no load, check for a warm room, something soft "
                                               "under the Mac, or heavy charging.",
                                               {}}};
    EXPECT_EQ(verdictOn(passive).advice, expectedFanless);
    EXPECT_EQ(verdictOn(passive).headline, "Your Mac is running hot, but nothing looks busy");
}

} // namespace vantoro
