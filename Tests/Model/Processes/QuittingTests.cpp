// Ending groups of processes: who is asked, who is left alone, and what it comes to.
#include "Model/Processes/Quitting.h"

#include "Support/ScriptedProcesses.h"
#include "Support/Testing.h"

namespace vantoro {
namespace {

using testing::ScriptedProcesses;
using Signals = std::vector<std::pair<std::int32_t, QuitManner>>;

/// Asked about at second 0, when these processes are alive.
struct Machine {
    Quitting quitting(const std::vector<std::int32_t>& pids) {
        QuitQuestion question{.key = "make", .name = "make", .processes = {}, .known = {}};
        for (const auto& [pid, process] : processes.alive)
            question.known.emplace(pid, process.is.birth);
        for (const std::int32_t pid : pids)
            question.processes.push_back(processes.alive.at(pid).is);
        return Quitting(question);
    }

    ScriptedProcesses processes;
};

TEST(LivingProcessTests, ASuccessorInTheNumberIsNotTheMember) {
    ScriptedProcesses processes;
    processes.start(100).is.startedAt = 5000;
    processes.start(1);
    processes.start(processes.ownPid());
    const auto isAlive = [&](std::int32_t pid, UnixSeconds firstSeen) {
        return livingProcess(processes, {.pid = pid, .firstSeen = firstSeen}).has_value();
    };
    EXPECT_TRUE(isAlive(100, 5000));
    EXPECT_TRUE(isAlive(100, 9000));
    EXPECT_FALSE(isAlive(100, 4990)) << "seen before the one of today began";
    EXPECT_FALSE(isAlive(101, 9000)) << "ended";
    for (const std::int32_t pid : {-1, 0, 1, processes.ownPid()})
        EXPECT_FALSE(isAlive(pid, 9000)) << pid;
}

TEST(QuittingTests, AsksFirstAndForcesOnlyWhatIgnoresIt) {
    Machine machine;
    machine.processes.start(100);
    machine.processes.start(101).ignoresAsking = true;
    machine.processes.start(500);
    Quitting quitting = machine.quitting({100, 101});
    quitting.ask(machine.processes, 10);
    EXPECT_EQ(machine.processes.sent, (Signals{{100, QuitManner::ask}, {101, QuitManner::ask}}));
    quitting.look(machine.processes, 12);
    EXPECT_EQ(quitting.stage(), Quitting::Stage::asked);
    EXPECT_EQ(quitting.ended(), 1);
    EXPECT_EQ(quitting.secondsLeft(12), 3);
    quitting.look(machine.processes, 15);
    EXPECT_EQ(quitting.stage(), Quitting::Stage::stillRunning);
    quitting.force(machine.processes, 16);
    EXPECT_EQ(machine.processes.sent.size(), 3U) << "what has ended is not signalled again";
    EXPECT_EQ(machine.processes.sent.back(), (Signals::value_type{101, QuitManner::force}));
    quitting.look(machine.processes, 16.2);
    EXPECT_EQ(quitting.stage(), Quitting::Stage::over);
    EXPECT_TRUE(machine.processes.alive.contains(500));
}

TEST(QuittingTests, WhatTheyStartedSinceIsAskedTooAndNothingElse) {
    Machine machine;
    machine.processes.start(100).is.groupPid = 100; // a job of its own, which ignores being asked
    machine.processes.alive[100].ignoresAsking = true;
    machine.processes.start(200, 100); // its child from before the question
    Quitting quitting = machine.quitting({100});
    machine.processes.start(201, 100, 7).ignoresAsking = true;                     // started since,
    machine.processes.start(202, 201, 7);                                          // by that one in turn,
    machine.processes.start(203, 1, 7).is.groupPid = 100;                          // and an orphan of the job
    machine.processes.start(300, 50, 7);                                           // somebody else's
    machine.processes.start(301, machine.processes.ownPid(), 7).is.groupPid = 100; // this program's own
    machine.processes.start(machine.processes.ownPid(), 100, 7);
    quitting.ask(machine.processes, 0);
    EXPECT_EQ(quitting.all(), 4);
    machine.processes.start(204, 201, 9); // later still
    quitting.look(machine.processes, 1);
    quitting.force(machine.processes, 6);
    quitting.look(machine.processes, 6.2);
    EXPECT_EQ(quitting.stage(), Quitting::Stage::over);
    for (const std::int32_t pid : {100, 201, 202, 203, 204})
        EXPECT_FALSE(machine.processes.alive.contains(pid)) << pid;
    for (const std::int32_t pid : {200, 300, 301, machine.processes.ownPid()})
        EXPECT_TRUE(machine.processes.alive.contains(pid)) << pid;
}

TEST(QuittingTests, AnEndedParentsNumberMakesNobodyAChild) {
    Machine machine;
    machine.processes.start(100);
    machine.processes.start(101).ignoresAsking = true;
    Quitting quitting = machine.quitting({100, 101});
    quitting.ask(machine.processes, 0);
    machine.processes.start(100, 1, 8); // another process by now, with a child of its own
    machine.processes.start(300, 100, 9).is.groupPid = 100;
    quitting.look(machine.processes, 1);
    EXPECT_EQ(quitting.all(), 2);
    EXPECT_TRUE(machine.processes.alive.contains(300));
}

} // namespace
} // namespace vantoro
