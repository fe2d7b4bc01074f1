#include "Model/History/History.h"

#include "Support/HistoryBuilder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <numeric>
#include <random>

namespace vantoro {

using namespace vantoro::testing;

namespace {

History everyTwoSeconds(int count) {
    History history;
    for (int i = 0; i < count; ++i)
        history.append(at(2 * i, fanMachine(0)));
    return history;
}

/// Processes of a few applications that come and go and work by fits and starts.
History randomHistory(std::mt19937& engine) {
    const auto roll = [&engine](int sides) { return static_cast<int>(engine() % static_cast<unsigned>(sides)); };
    struct Living {
        std::int32_t pid;
        int application;
        int secondsLeft;
        double cpuPercent;
    };
    std::vector<Living> living;
    std::int32_t nextPid = 1;
    const int longestLife = 1 + roll(80);
    const int crowd = 1 + roll(30);
    History history;
    for (int second = 0; second < 100; ++second) {
        std::erase_if(living, [](Living& each) { return each.secondsLeft-- <= 0; });
        while (std::ssize(living) < crowd)
            living.push_back({nextPid++, roll(4), roll(longestLife), static_cast<double>(roll(150))});
        std::vector<ProcessSample> rows;
        for (const Living& each : living) {
            rows.push_back(process(each.pid, "p", roll(3) == 0 ? roll(300) : each.cpuPercent, ProcessKind::helper,
                                   "app " + std::to_string(each.application)));
            rows.back().memoryBytes = static_cast<std::uint64_t>(roll(1000));
            if (roll(2) == 0)
                rows.back().gpuPercent = roll(100) / 10.0;
        }
        history.append(at(second, fanMachine(0, rows)));
    }
    return history;
}

} // namespace

TEST(History, KeepsTheBusiestRowsOfATickInStableOrder) {
    std::vector<ProcessSample> rows;
    for (int pid = 0; pid < 35; ++pid)
        rows.push_back(process(pid, "p", pid % 7));
    History history;
    history.append(fanMachine(0, rows));
    const auto& kept = history.snapshots().back().processes;
    ASSERT_EQ(kept.size(), History::processesPerSample);
    for (std::size_t i = 1; i < kept.size(); ++i) {
        EXPECT_GE(kept[i - 1].cpuPercent, kept[i].cpuPercent);
        EXPECT_TRUE(kept[i - 1].cpuPercent > kept[i].cpuPercent || kept[i - 1].pid() < kept[i].pid());
    }
    EXPECT_EQ(kept.back().cpuPercent, 3);
}

TEST(History, ARowThatRendersKeepsItsPlaceBesideBusierOnes) {
    const auto keptOf = [](std::vector<int> rendering, int rows = 30) {
        std::vector<ProcessSample> processes;
        for (int pid = 0; pid < rows; ++pid)
            processes.push_back(process(pid, "p", 100 - pid));
        for (const int pid : rendering)
            processes[static_cast<std::size_t>(pid)].gpuPercent = pid == 25 ? 0.9 : 1;
        History::keepBusiest(processes);
        std::string kept;
        for (const ProcessSample& row : processes)
            kept += row.pid() < 17 ? "" : std::to_string(row.pid()) + " ";
        return kept;
    };
    EXPECT_EQ(keptOf({}), "17 18 19 ");
    EXPECT_EQ(keptOf({29, 25}), "17 18 29 ") << "less than 1 % is no work";
    EXPECT_EQ(keptOf({19, 29, 22}), "19 22 29 ");
    EXPECT_EQ(keptOf({18, 19}, 20), "17 18 19 ");
    std::vector<int> all(30);
    std::iota(all.begin(), all.end(), 0);
    EXPECT_EQ(keptOf(all), "17 18 19 ");
}

TEST(History, DropsWhatIsOlderThanTheRetention) {
    History history = everyTwoSeconds(100);
    history.setRetention(60);
    history.append(at(200, fanMachine(0)));
    EXPECT_EQ(history.snapshots().size(), 31U); // the one exactly 60 s old included
    EXPECT_EQ(history.snapshots().front().timestamp, 140);
    history.setRetention(10);
    EXPECT_EQ(history.snapshots().size(), 6U);
    history.setRetention(1000);
    EXPECT_EQ(history.snapshots().size(), 6U);
}

TEST(History, WindowsAreHalfOpenAndAlwaysInRange) {
    const History history = everyTwoSeconds(10); // 0, 2 … 18
    struct Case {
        double from;
        double to;
        std::size_t count;
    };
    for (const auto& [from, to, count] : {Case{4, 8, 2}, Case{3, 9, 3}, Case{4, 4, 0}, Case{8, 4, 0}, Case{-9, 99, 10},
                                          Case{18, 99, 1}, Case{19, 99, 0}, Case{-9, 0, 0}})
        EXPECT_EQ(history.slice(from, to).size(), count) << from << " to " << to;
    EXPECT_EQ(history.recent(0).size(), 1U);
    EXPECT_EQ(history.recent(6).size(), 4U);
    EXPECT_EQ(history.recent(6).front().timestamp, 12);
    EXPECT_EQ(history.recent(1e9).size(), 10U);
    EXPECT_TRUE(History().recent(10).empty());
    EXPECT_TRUE(History().slice(0, 10).empty());
}

TEST(History, LooksForTheCauseBeforeTheEffectWhenItCan) {
    struct Case {
        int seconds;
        int firstAgeWithRows;
        int lastAgeWithRows;
        double oldestAge;
        double newestAge;
    };
    for (const auto& [seconds, first, last, oldestAge, newestAge] :
         {Case{200, 200, 0, 75, 16}, Case{200, 40, 40, 75, 16}, Case{10, 10, 0, 10, 0}, // too short for the window
          Case{200, 15, 0, 75, 0},                                                      // no row in the window
          Case{200, 200, 76, 75, 0}}) {                                                 // nor anywhere since
        History built;
        for (int age = seconds; age >= 0; --age)
            built.append(at(1000 - age, fanMachine(0, std::vector<ProcessSample>(age <= first && age >= last))));
        const SnapshotRun window = built.causeWindow(15, 75);
        EXPECT_EQ(1000 - window.front().timestamp, oldestAge);
        EXPECT_EQ(1000 - window.back().timestamp, newestAge);
    }
    EXPECT_TRUE(History().causeWindow(15, 75).empty());
}

TEST(History, FindsWhereTheUnbrokenRampBegan) {
    const auto rampOf = [](const std::vector<Snapshot>& snapshots, std::optional<double> threshold = {}) {
        History built;
        for (std::size_t i = 0; i < snapshots.size(); ++i)
            built.append(at(static_cast<double>(i), snapshots[i]));
        return built.lastRampStart(threshold);
    };
    const Snapshot quiet = fanMachine(0.1);
    const Snapshot busy = fanMachine(0.5);
    EXPECT_EQ(rampOf({}), std::nullopt);
    EXPECT_EQ(rampOf({busy, quiet, busy, busy}), 2);
    EXPECT_EQ(rampOf({busy, busy}), 0);
    EXPECT_EQ(rampOf({busy, quiet}), std::nullopt);
    EXPECT_EQ(rampOf({fanMachine(0.18)}), std::nullopt);
    EXPECT_EQ(rampOf({fanMachine(0.19)}), 0);
    EXPECT_EQ(rampOf({busy, quiet, busy}, 0.05), 0);
    EXPECT_EQ(rampOf({fanlessMachine(65)}), std::nullopt);
    EXPECT_EQ(rampOf({fanlessMachine(66)}), 0);
}

TEST(History, TheBusyShareIsThatOfTheTenSecondsBefore) {
    History history;
    const auto append = [&history](UnixSeconds time, double busyPercent) {
        history.append(at(time, bareMachine(busyPercent)));
        return history.busyShare(history.snapshots().size() - 1);
    };
    EXPECT_EQ(append(0, 100), 1);
    EXPECT_EQ(append(4, 20), 0.6);
    EXPECT_EQ(append(10, 30), 0.5) << "ten seconds are still counted";
    EXPECT_EQ(append(10.5, 40), 0.3) << "what is older is not";
    EXPECT_EQ(append(300, -20), 0) << "a gap leaves the newest alone";
    EXPECT_EQ(append(250, 80), 0.8) << "nor does a clock set back count what is yet to come";
    EXPECT_EQ(append(251, std::nan("")), 0.4);
    history.setRetention(3);
    EXPECT_EQ(history.busyShare(history.snapshots().size() - 1), 0.4) << "a share goes with its snapshot";
    EXPECT_EQ(history.lastRampStart({}), 250) << "above 22 % without a break";

    History begun;
    begun.append(at(0, bareMachine(0)), false);
    EXPECT_EQ(begun.busyShare(0), 0);
    begun.append(at(1, bareMachine(0)), false);
    begun.append(at(2, bareMachine(90)));
    EXPECT_EQ(begun.busyShare(2), 0.9) << "what nobody had told yet is no rest";
    begun.setRetention(0.5);
    begun.append(at(2.4, bareMachine(50)));
    EXPECT_EQ(begun.busyShare(1), 0.7);
}

TEST(History, KnowsTheRampWithoutLookingBackAtAllOfIt) {
    History history;
    history.setRetention(20);
    const std::vector<Snapshot> kinds{fanMachine(0.5),    fanlessMachine(60), fanMachine(0.2),
                                      fanlessMachine(90), bareMachine(60),    speedOnlyMachine(90)};
    for (int i = 0; i < 400; ++i) {
        // Long ramps that outlast the retention, short ones, and changes of the threshold in between.
        const bool isMixed = i % 100 < 40;
        history.append(at(i, isMixed ? kinds[static_cast<std::size_t>(i * 7 / 3 % 6)] : kinds[i < 200 ? 0 : 3]));
        if (i == 190)
            history.setRetention(5);
        const double threshold = history.snapshots().back().cooling == Cooling::fans ? 0.18 : 0.22;
        ASSERT_EQ(history.lastRampStart({}), history.lastRampStart(threshold)) << i;
    }
    history.append(at(1000, fanMachine(0.5)));
    EXPECT_EQ(history.lastRampStart({}), 1000) << "what came before was dropped";
}

TEST(ProcessAggregation, SumsUpOneProcessOverTheWindow) {
    History history;
    for (int i = 0; i < 10; ++i) {
        std::vector<ProcessSample> rows{process(8, "idle", 24.9)};
        if (i >= 5)
            rows.push_back(process(7, i == 9 ? "" : "build " + std::to_string(i), i == 9 ? 100 : 25));
        rows.back().energyImpact = 10;
        rows.back().memoryBytes = 1000 - static_cast<std::uint64_t>(i);
        history.append(at(i, fanMachine(0, rows)));
    }
    const auto aggregates = History::aggregate(history.recent(100));
    ASSERT_EQ(aggregates.size(), 2U);
    EXPECT_EQ(aggregates[1].busySamples, 0);
    // The name is the last that was not empty; busy begins at a quarter of a core.
    const ProcessAggregate expected{.pid = 7,
                                    .displayName = "build 8",
                                    .kind = ProcessKind::userApp,
                                    .user = "me",
                                    .totalCPU = 200,
                                    .peakCPU = 100,
                                    .totalEnergy = 50,
                                    .peakMemory = 995,
                                    .samples = 5,
                                    .busySamples = 5,
                                    .firstSeen = 5,
                                    .lastSeen = 9,
                                    .averageCPU = 40,
                                    .averageEnergy = 10,
                                    .sustained = 0.5,
                                    .stressScore = 71};
    EXPECT_EQ(aggregates[0], expected);
    EXPECT_TRUE(History::aggregate({}).empty());
    EXPECT_TRUE(History::groups({}).empty());
}

TEST(ProcessAggregation, AReusedPidTakesTheLatestKind) {
    History history;
    history.append(at(0, fanMachine(0, {process(1, "old", 10, ProcessKind::userApp, "Old")})));
    history.append(at(1, fanMachine(0, {process(1, "new", 30, ProcessKind::systemDaemon)})));
    const ProcessAggregate both = History::aggregate(history.recent(10)).at(0);
    EXPECT_EQ(both.displayName + both.owningAppName.value_or(""), "newOld");
    EXPECT_EQ(both.kind, ProcessKind::systemDaemon);
}

TEST(ProcessAggregation, TheSlowingItselfIsNobodysWork) {
    History history;
    history.append(fanMachine(0, {process(1, "idle_inject", 90, ProcessKind::kernel),
                                  process(2, "kidle_inj", 90, ProcessKind::kernel),
                                  process(3, "idle_injector", 5, ProcessKind::commandLine)}));
    const auto aggregates = History::aggregate(history.recent(0));
    ASSERT_EQ(aggregates.size(), 1U);
    EXPECT_EQ(aggregates[0].pid, 3);
}

TEST(ProcessAggregation, GroupsTheProcessesOfAnApplication) {
    ProcessSample main = process(3, "Editor", 5, ProcessKind::userApp, "Editor");
    ProcessIdentity withPath = *main.identity;
    withPath.owningAppPath = "/Applications/Editor.app";
    main.identity = withPath;
    main.memoryBytes = 100;
    std::vector<ProcessSample> rows{process(1, "Helper A", 20, ProcessKind::helper, "Editor"),
                                    process(2, "Helper B", 40, ProcessKind::helper, "Editor"), main,
                                    process(4, "zip", 90, ProcessKind::commandLine)};
    rows[0].energyImpact = 1000; // ranks the process first, but plays no part for the group
    History history;
    history.append(fanMachine(0, rows));
    const auto groups = History::groups(history.recent(0));
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].key, "zip");
    const ProcessGroup& editor = groups[1];
    EXPECT_EQ(editor.displayName, "Editor");
    EXPECT_EQ(editor.kind, ProcessKind::userApp);
    EXPECT_EQ(editor.owningAppPath, "/Applications/Editor.app");
    ASSERT_EQ(editor.members.size(), 3U);
    EXPECT_EQ(editor.members[0].pid, 2);
    EXPECT_EQ(editor.members[2].pid, 3);
    EXPECT_DOUBLE_EQ(editor.totalCPU, 65);
    EXPECT_DOUBLE_EQ(editor.peakCPU, 40);
    EXPECT_EQ(editor.totalMemory, 100U);
    EXPECT_DOUBLE_EQ(editor.stressScore, 65 + 45 * 1 + 0.05 * 40);
}

TEST(ProcessAggregation, WhatNeverRanAtOnceDoesNotAddUp) {
    // A job of half a second's work each, one after the other, each seen twice; beside it, two that run side by side.
    History history;
    for (int i = 0; i < 40; ++i) {
        std::vector<ProcessSample> rows = application(900, "pair", 40, 2);
        rows.push_back(process(100 + i / 2, "cc1plus", i % 2 == 0 ? 90 : 30, ProcessKind::commandLine, "make"));
        for (ProcessSample& row : rows)
            row.memoryBytes = 500;
        history.append(at(i, fanMachine(0, rows)));
    }
    const SnapshotRun window = history.recent(100);
    const auto groups = History::groups(window);
    EXPECT_EQ(groups[0].key, "make");
    EXPECT_DOUBLE_EQ(groups[0].totalCPU, 60) << "and not 1200";
    EXPECT_EQ(groups[0].totalMemory, 500U);
    EXPECT_DOUBLE_EQ(groups[1].totalCPU, 40);
    EXPECT_EQ(groups[1].totalMemory, 1000U);
    EXPECT_DOUBLE_EQ(togetherCPU(groups, window), 100);
    EXPECT_EQ(togetherCPU({}, window), 0);
}

TEST(ProcessAggregation, NoFigureIsAboveWhatOneSnapshotHeld) {
    std::mt19937 engine{7}; // NOLINT(*-msc51-cpp): the same histories every time
    for (int round = 0; round < 20; ++round) {
        const History history = randomHistory(engine);
        for (const SnapshotRun& window : {history.recent(100), history.causeWindow(15, 75), history.recent(20)}) {
            const auto groups = History::groups(window);
            double mostOfAll = 0;
            std::map<std::string, double> mostCPU;
            std::map<std::string, double> mostGraphics;
            std::map<std::string, std::uint64_t> mostMemory;
            for (const Snapshot& snapshot : window) {
                std::map<std::string, double> cpu;
                std::map<std::string, double> graphics;
                std::map<std::string, std::uint64_t> memory;
                double all = 0;
                for (const ProcessSample& row : snapshot.processes) {
                    const std::string& name = *row.owningAppName();
                    all += row.cpuPercent;
                    mostCPU[name] = std::max(mostCPU[name], cpu[name] += row.cpuPercent);
                    mostGraphics[name] = std::max(mostGraphics[name], graphics[name] += row.gpuPercent.value_or(0));
                    mostMemory[name] = std::max(mostMemory[name], memory[name] += row.memoryBytes);
                }
                mostOfAll = std::max(mostOfAll, all);
            }
            for (const ProcessGroup& group : groups) {
                EXPECT_LE(group.totalCPU, mostCPU[group.key] * (1 + 1e-6)) << round;
                EXPECT_LE(group.gpuPercent.value_or(0), std::min(mostGraphics[group.key], 100.0) + 1e-6) << round;
                EXPECT_LE(group.totalMemory, mostMemory[group.key]) << round;
            }
            EXPECT_LE(togetherCPU(groups, window), mostOfAll * (1 + 1e-6)) << round;
        }
    }
}

TEST(ProcessAggregation, GraphicsWorkIsTheMeanOverAllOfTheWindow) {
    History history;
    for (int i = 0; i < 10; ++i) {
        std::vector<ProcessSample> rows{process(1, "Game", 1), process(2, "page", 5, ProcessKind::helper, "Web"),
                                        process(3, "page", 5, ProcessKind::helper, "Web"), process(4, "none", 9)};
        if (i >= 5)
            rows[0].gpuPercent = 90;
        rows[1].gpuPercent = 80;
        rows[2].gpuPercent = 60;
        history.append(at(i, fanMachine(0, rows)));
    }
    std::map<std::string, std::optional<double>> shares;
    for (const ProcessGroup& group : History::groups(history.recent(100)))
        shares[group.key] = group.gpuPercent;
    EXPECT_EQ(shares["Game"], 45);
    EXPECT_EQ(shares["Web"], 100) << "there is no more";
    EXPECT_EQ(shares["none"], std::nullopt);
}

TEST(ProcessAggregation, TellsWhatNoRowAccountsFor) {
    struct Case {
        const char* what;
        double busyPercent;
        std::vector<ProcessSample> rows;
        std::optional<int> processors;
        std::optional<double> rest;
    };
    std::vector<ProcessSample> crowd;
    for (int pid = 0; pid < 30; ++pid)
        crowd.push_back(process(pid, "p", 20 - 0.5 * pid));
    std::vector<ProcessSample> workers(30, process(1, "worker", 40));
    std::vector<ProcessSample> withGraphics = crowd;
    withGraphics.back().cpuPercent = 0;
    withGraphics.back().gpuPercent = 50;
    const auto pause = process(9, "idle_inject/3", 50, ProcessKind::kernel);
    for (const auto& [what, busyPercent, rows, processors, rest] :
         {Case{"the processors are not counted", 90, {process(1, "a", 10)}, {}, {}},
          Case{"a tenth of the machine", 12.5, {process(1, "a", 20)}, 8, {}},
          Case{"more than a tenth", 15, {process(1, "a", 20)}, 8, 100}, Case{"no list tells nothing", 90, {}, 8, {}},
          Case{"rows that were cut off may be behind it", 80, workers, 32, {}},
          Case{"but not behind this much", 100, crowd, 64, 6400 - 305},
          Case{"a row kept for its graphics work says nothing", 100, withGraphics, 12, {}},
          Case{"one pause stands for all", 100, {pause, process(1, "a", 380)}, 8, {}}}) {
        History history;
        for (int i = 0; i < 4; ++i)
            history.append(at(i, bareMachine(i == 0 ? 0 : busyPercent, i == 0 ? decltype(rows){} : rows)));
        EXPECT_EQ(unaccountedCPU(history.recent(10), processors), rest) << what;
    }
}

} // namespace vantoro
