// Who is blamed on what ground, and how that is told.
#include "Model/Explanation/Reports.h"
#include "Support/HistoryBuilder.h"

#include <functional>
#include <gtest/gtest.h>

namespace vantoro {
namespace {

using namespace vantoro::testing;
using enum ProcessKind;
using Rows = std::vector<ProcessSample>;

constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30U;

ProcessSample rendering(ProcessSample row, double gpuPercent) {
    row.gpuPercent = gpuPercent;
    return row;
}

ProcessSample holding(ProcessSample row, double gigabytes) {
    row.memoryBytes = static_cast<std::uint64_t>(gigabytes * static_cast<double>(gigabyte));
    return row;
}

ProcessSample at(const char* path, ProcessSample row) {
    ProcessIdentity identity = *row.identity;
    identity.executablePath = path;
    row.identity = identity;
    return row;
}

Conclusion told(History history, SystemKind system = SystemKind::gnuLinux) {
    history.setSystem(system);
    return conclude(history, Format(DefaultFormatContext()));
}

Conclusion told(const Snapshot& newest, int rampSeconds = 60) {
    return told(historyEndingIn(newest, rampSeconds));
}

/// "What's drawing the power"; empty where the report goes without.
Explanation::Section driving(const Conclusion& all) {
    for (const Explanation::Section& each : all.explanation.sections)
        if (each.title == "What's drawing the power")
            return each;
    return {};
}

/// A game beside a busy indexer: loud fans, 58 W of graphics and 16 W of processors.
Snapshot gaming() {
    Snapshot now = fanMachine(0.6, {process(1, "indexer", 310, systemDaemon),
                                    rendering(at("/usr/games/supertuxkart", process(2, "SuperTuxKart", 112)), 92),
                                    rendering(process(3, "Firefox", 64), 5)});
    now.power = {.systemWatts = 96, .gpuWatts = 58, .cpuWatts = 16};
    now.gpuPercent = 97;
    now.cpu = {.userPercent = 40, .idlePercent = 60};
    return now;
}

TEST(Blame, GraphicsThatLeadAreToldAsSuch) {
    const Conclusion all = told(gaming());
    const Verdict& verdict = all.verdict;
    EXPECT_TRUE(verdict.isOfGraphics);
    EXPECT_EQ(verdict.headline, "Your fans are loud because of SuperTuxKart");
    EXPECT_EQ(verdict.detail, "SuperTuxKart kept the graphics processor 92% busy over the window that heated the "
                              "machine, and the fans have been up for 60 seconds. The graphics processor draws 58 of "
                              "the 74 W that both processors use.");
    ASSERT_EQ(verdict.advice.size(), 2U);
    EXPECT_EQ(verdict.advice[0].text, "The graphics processor makes the heat, not the processor. Closing the game's "
                                      "window or lowering its frame rate, resolution or effects lets it rest.");
    EXPECT_EQ(verdict.advice[1], (Advice{"Quit SuperTuxKart", 2}));
    EXPECT_EQ(verdict.cause, "because of SuperTuxKart, for 60 seconds");
    EXPECT_EQ(all.suspects.front().key, "SuperTuxKart");
    const auto section = driving(all);
    EXPECT_EQ(section.rows[0].label + section.rows[0].detail,
              "SuperTuxKartan app you opened · sustained · 92% of the graphics processor");
    EXPECT_EQ(section.body.substr(0, 70), "SuperTuxKart accounts for roughly 94% of the programs' graphics work i");
}

TEST(Blame, GraphicsLeadByTheirPower) {
    struct Case {
        const char* what;
        std::function<void(Snapshot&)> change;
        const char* headline;
    };
    const char* const game = "Your fans are loud because of SuperTuxKart";
    const char* const indexer = "Your fans are loud because of indexer";
    const auto told = [](Snapshot now) { return vantoro::told(now).verdict; };
    for (const auto& [what, change, headline] :
         {Case{"half of both", [](Snapshot& now) { now.power.cpuWatts = 58; }, game},
          Case{"less than half of both", [](Snapshot& now) { now.power.cpuWatts = 58.5; }, indexer},
          Case{"less than 8 W", [](Snapshot& now) { now.power = {.gpuWatts = 7.9, .cpuWatts = 1}; }, indexer},
          Case{"half of the system's less 5 W", [](Snapshot& now) { now.power = {.systemWatts = 45, .gpuWatts = 20}; },
               game},
          Case{"less than that", [](Snapshot& now) { now.power = {.systemWatts = 46, .gpuWatts = 20}; }, indexer},
          Case{"no other power, busy processors", [](Snapshot& now) { now.power = {.gpuWatts = 20}; }, indexer},
          Case{"no other power, idle processors",
               [](Snapshot& now) {
                   now.power = {.gpuWatts = 20};
                   now.cpu.idlePercent = 71;
               },
               game},
          Case{"no other power, processors that are busy with the game",
               [](Snapshot& now) {
                   now.power = {.gpuWatts = 20};
                   now.cores.emplace(8);
                   now.processes[0].cpuPercent = 115;
               },
               game},
          Case{"no power at all, idle processors",
               [](Snapshot& now) {
                   now.power = {};
                   now.cpu.idlePercent = 71;
               },
               game},
          Case{"nobody is known to render", [](Snapshot& now) { now.processes[1].gpuPercent = 24; },
               "Your fans are loud, but no program stands out"},
          Case{"a quarter is enough", [](Snapshot& now) { now.processes[1].gpuPercent = 24.5; }, game},
          Case{"of what is known", [](Snapshot& now) { now.gpuPercent.reset(); }, game},
          Case{"graphics of which no program tells",
               [](Snapshot& now) {
                   for (ProcessSample& row : now.processes)
                       row.gpuPercent.reset();
               },
               "Your fans are loud, but no program stands out"},
          Case{"a recording that tells nothing of graphics work",
               [](Snapshot& now) {
                   for (ProcessSample& row : now.processes)
                       row.gpuPercent.reset();
                   now.gpuPercent.reset();
                   now.power.cpuWatts.reset();
               },
               indexer}}) {
        Snapshot now = gaming();
        change(now);
        EXPECT_EQ(told(now).headline, headline) << what;
    }
    Snapshot unknown = gaming();
    unknown.processes = {process(1, "Editor", 9)};
    unknown.cpu.idlePercent = 95;
    EXPECT_EQ(told(unknown).headline, "Your fans are loud, but nothing looks busy");
    EXPECT_EQ(told(unknown).detail,
              "CPU load is low but the GPU is drawing 58.0 W, so something is rendering rather than computing.");
    Snapshot atEase = gaming();
    atEase.fans = {fanAt(0.1)};
    EXPECT_EQ(told(atEase).detail, "SuperTuxKart keeps the graphics processor 92% busy, but the machine is handling it "
                                   "without needing much airflow.");
}

TEST(Blame, OneThatOnlyRendersIsACauseToo) {
    Snapshot now = fanMachine(0.5, {rendering(process(1, "Video", 1), 10), process(2, "other", 3.9)});
    now.cpu.idlePercent = 95;
    EXPECT_EQ(told(now).verdict.detail.substr(0, 50), "Video kept the graphics processor 10% busy over th");
    now.processes[0].gpuPercent = 9.9;
    EXPECT_EQ(told(now).verdict.headline, "Your fans are loud, but nothing looks busy");
}

TEST(Blame, TheBusierOfBothDecidesWhereOnlyWorkIsKnown) {
    Snapshot now = bareMachine(20, {process(1, "Editor", 90), rendering(process(2, "Game", 30), 85)});
    now.gpuPercent = 88;
    const Conclusion all = told(now);
    EXPECT_EQ(all.verdict.headline, "This computer is flat out because of Game");
    EXPECT_EQ(all.verdict.advice[0].text,
              "The graphics processor does the work, not the processor. Closing its window or showing fewer effects "
              "lets it rest.");
    EXPECT_EQ(all.explanation.sections[0].body.substr(0, 87),
              "This computer is flat out — its graphics processor was 88% busy over the last 10 seco");
    now.gpuPercent = 15;
    EXPECT_EQ(told(now).verdict.headline, "This computer has little to do");
}

/// Quiet for `quietSeconds`, then loud for two minutes; the machine works as it is told.
History sinceQuiet(int quietSeconds, const std::function<void(Snapshot&, bool isQuiet)>& change) {
    History history;
    for (int age = quietSeconds + 120; age >= 0; --age) {
        const bool isQuiet = age > 120;
        Snapshot now = fanMachine(isQuiet ? 0.1 : 0.6, {process(1, "daemon", 45, systemDaemon), process(2, "b", 12)});
        now.cpu = {.userPercent = 12, .idlePercent = 88};
        now.power = {.systemWatts = 20, .gpuWatts = 3};
        change(now, isQuiet);
        history.append(testing::at(builtNow - age, now));
    }
    return history;
}

TEST(Blame, NobodyForWhatRanJustTheSameWhileItWasQuiet) {
    const char* const nobody = "Your fans are loud, but nothing looks busy";
    const char* const daemon = "Your fans are loud because of daemon";
    struct Case {
        const char* what;
        int quietSeconds;
        std::function<void(Snapshot&, bool)> change;
        const char* headline;
    };
    for (const auto& [what, quietSeconds,
                      change, headline] : {Case{"a blocked vent", 200, [](Snapshot&, bool) {}, nobody},
                                           Case{"quiet for too short", 60, [](Snapshot&, bool) {}, daemon},
                                           Case{"quiet for long enough", 61, [](Snapshot&, bool) {}, nobody},
                                           Case{"never quiet", 200,
                                                [](Snapshot&now, bool isQuiet) {
                                                    now.fans = {fanAt(isQuiet ? 0.23 : 0.6)};
                                                },
                                                daemon},
                                           Case{"5 points busier", 200,
                                                [](Snapshot&now, bool isQuiet) {
                                                    now.cpu.idlePercent = isQuiet ? 88 : 83;
                                                },
                                                nobody},
                                           Case{"more than that", 200,
                                                [](Snapshot&now, bool isQuiet) {
                                                    now.cpu.idlePercent = isQuiet ? 88 : 82.9;
                                                },
                                                daemon},
                                           Case{"busy all the time", 200,
                                                [](Snapshot&now, bool) { now.cpu.idlePercent = 74.9; }, daemon},
                                           Case{"24 W for 20", 200,
                                                [](Snapshot&now, bool isQuiet) {
                                                    now.power.systemWatts = isQuiet ? 20 : 24;
                                                },
                                                nobody},
                                           Case{"24.1 W for 20", 200,
                                                [](Snapshot&now, bool isQuiet) {
                                                    now.power.systemWatts = isQuiet ? 20 : 24.1;
                                                },
                                                daemon},
                                           Case{"power that was not known", 200,
                                                [](
                                                    Snapshot&now,
                                                    bool isQuiet) { now.power.systemWatts = isQuiet ? 0 : 90; },
                                                nobody},
                                           Case{"2 W of graphics more", 200,
                                                [](
                                                    Snapshot&now,
                                                    bool isQuiet) { now.power.gpuWatts = isQuiet ? 3 : 5; },
                                                nobody},
                                           Case{"more than that", 200,
                                                [](Snapshot&now, bool
                                                                     isQuiet) { now.power.gpuWatts = isQuiet ? 3 : 5.1; },
                                                daemon},
                                           Case{"graphics busy whose power is not told", 200,
                                                [](Snapshot&now, bool isQuiet) {
                                                    now.power.gpuWatts = 0;
                                                    now.gpuPercent = isQuiet ? 5 : 30;
                                                },
                                                daemon},
                                           Case{"half a core", 200,
                                                [](Snapshot&now, bool) { now.processes[0].cpuPercent = 50; }, daemon}})
        for (const SystemKind system : {SystemKind::macos, SystemKind::gnuLinux})
            EXPECT_EQ(told(sinceQuiet(quietSeconds, change), system).verdict.headline, headline) << what;
    const Conclusion all = told(sinceQuiet(200, [](Snapshot&, bool) {}));
    EXPECT_EQ(all.verdict.suspect, std::nullopt);
    const auto section = driving(all);
    EXPECT_EQ(section.body, "Nothing here explains it: all of this ran just the same while the machine was quiet.");
    EXPECT_FALSE(section.rows.at(0).emphasised);
}

TEST(Blame, WhatCameOnTopOfAQuietLoadIsTheCause) {
    const auto blamedFor = [](double before, double now, double newcomer) {
        return told(sinceQuiet(
                        200,
                        [=](Snapshot& snapshot, bool isQuiet) {
                            snapshot.cpu = {.userPercent = isQuiet ? 20.0 : 45.0, .idlePercent = isQuiet ? 80.0 : 55.0};
                            snapshot.processes = {process(1, "backup", isQuiet ? before : now, commandLine),
                                                  process(2, "Editor", 12), process(3, "other", 10, commandLine)};
                            if (!isQuiet)
                                snapshot.processes.push_back(process(4, "render", newcomer, commandLine));
                        }))
            .verdict.headline;
    };
    const char* const render = "Your fans are loud because of render";
    const char* const backup = "Your fans are loud because of backup";
    EXPECT_EQ(blamedFor(200, 200, 100), render);
    EXPECT_EQ(blamedFor(200, 230, 150), render) << "a little more is the same";
    EXPECT_EQ(blamedFor(200, 290, 150), backup) << "it grew as well";
    EXPECT_EQ(blamedFor(200, 200, 99), backup) << "too little to be the cause";
    EXPECT_EQ(blamedFor(40, 40, 24), backup);
}

TEST(Blame, NobodyStandsOutBesideMuchMoreThatNoRowAccountsFor) {
    Snapshot now = bareMachine(80, {process(1, "borg", 34, commandLine), process(2, "b", 5)});
    now.cores.emplace(8);
    EXPECT_EQ(told(now, 90).verdict.headline, "This computer is flat out, but no program stands out");
    EXPECT_EQ(told(historyEndingIn(now, 90), SystemKind::macos).verdict.suspect->key, "borg");
    now.processes[0].cpuPercent = 212;
    EXPECT_EQ(told(now, 90).verdict.suspect->key, "borg");
}

TEST(Blame, AShareOfTheTimeIsAShareOfTheWork) {
    History history;
    for (int age = 80; age >= 0; --age) {
        const bool isFirst = age % 20 < 13;
        history.append(testing::at(builtNow - age, fanMachine(0.5, {process(isFirst ? 1 : 2, isFirst ? "long" : "short",
                                                                            isFirst ? 300 : 340)})));
    }
    EXPECT_EQ(told(history).verdict.suspect->key, "long");
}

TEST(Blame, ShortMemoryIsWhoHoldsMostOfIt) {
    Snapshot now = fanMachine(0.5, {process(9, "kswapd0", 90, kernel), process(8, "kcompactd0", 30, kernel),
                                    process(1, "indexer", 60, systemDaemon), holding(process(2, "Editor", 2), 11.2),
                                    holding(process(3, "browser", 3, userApp, "Browser"), 1)});
    now.memory = {.totalBytes = 16 * gigabyte, .availableBytes = gigabyte};
    Conclusion all = told(now);
    EXPECT_EQ(all.verdict.headline, "Your fans are loud because of Editor, which holds 11.2 of 16 GB");
    EXPECT_EQ(all.verdict.cause, "because of Editor, which holds 11.2 of 16 GB, for 60 seconds");
    EXPECT_EQ(all.verdict.detail,
              "Editor holds 11.2 of 16 GB. Memory is short: the kernel keeps making room in it, and "
              "the fans have been up for 60 seconds.");
    EXPECT_EQ(all.verdict.runnersUp.at(0).key, "kswapd0");
    now.stalls.memory = 34;
    now.processes[0].cpuPercent = 40;
    EXPECT_EQ(told(now).verdict.detail.substr(0, 76),
              "Editor holds 11.2 of 16 GB. Memory is short: work waits for it 34% of the ti");
    now.stalls.memory = 9.9;
    EXPECT_EQ(told(now).verdict.headline, "Your fans are loud because of indexer");
    now.stalls.memory = 10;
    EXPECT_TRUE(told(now).verdict.isOfMemory);
    now.processes[4].memoryBytes = 18 * gigabyte;
    EXPECT_EQ(told(now).verdict.headline, "Your fans are loud because of Browser, which holds the most memory")
        << "more than there is cannot be held: its processes share";
    // Nobody holds a noticeable part: then the others are still more of a cause than the echo.
    now.stalls.memory.reset();
    now.processes = {process(9, "kswapd0", 90, kernel), process(1, "indexer", 80, systemDaemon)};
    EXPECT_EQ(told(now).verdict.headline, "Your fans are loud because of indexer");
}

TEST(Blame, TheSlowingItselfIsToldAndNotRanked) {
    Snapshot mac = fanMachine(0.9, {process(0, "kernel_task", 310, kernel), process(2, "Editor", 60)});
    for (const auto& [pressure, headline] :
         {std::pair{ThermalPressure::fair, "Your fans are roaring because of kernel_task"},
          std::pair{ThermalPressure::serious, "Your fans are roaring because of Editor"}}) {
        mac.thermalPressure = pressure;
        EXPECT_EQ(told(historyEndingIn(mac), SystemKind::macos).verdict.headline, headline);
    }
    EXPECT_NE(told(historyEndingIn(mac), SystemKind::macos)
                  .verdict.detail.find(" kernel_task is at 310%: that is macOS slowing the chip to shed heat, not the "
                                       "cause of it."),
              std::string::npos);
    // The pressure rose after the window.
    History history;
    for (int age = 80; age >= 0; --age) {
        mac.thermalPressure = age > 10 ? ThermalPressure::nominal : ThermalPressure::critical;
        history.append(testing::at(builtNow - age, mac));
    }
    EXPECT_EQ(told(history, SystemKind::macos).verdict.suspect->key, "Editor");
    Snapshot paused = fanMachine(0.9, {process(5, "idle_inject/2", 50, kernel), process(2, "Editor", 60)});
    EXPECT_EQ(told(paused).verdict.suspect->key, "Editor");
    EXPECT_NE(
        told(paused).verdict.detail.find(
            " The system makes its processors pause 50% of the time so that they cool down; no program does that."),
        std::string::npos);
}

TEST(Blame, TheRestIsTheReportsLastRow) {
    Snapshot now = bareMachine(80, {process(1, "Editor", 100), process(2, "b", 20)});
    now.cores.emplace(8);
    const auto section = driving(told(now, 90));
    EXPECT_EQ(section.rows.size(), 3U);
    EXPECT_EQ(section.rows.back(),
              (Explanation::Row{.label = "Not accounted for",
                                .value = "520%",
                                .detail = "Interrupts, programs of other users that may not be read, or work of the "
                                          "machine that hosts this one."}));
    now.processes.resize(1);
    now.processes[0].cpuPercent = 1;
    EXPECT_EQ(driving(told(now, 90)).rows.size(), 1U) << "though nobody does noticeable work";
}

} // namespace
} // namespace vantoro
