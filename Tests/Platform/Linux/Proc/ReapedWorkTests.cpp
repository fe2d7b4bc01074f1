#include "Platform/Linux/Proc/ReapedWork.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace vantoro {
namespace {

using Credits = std::vector<ReapedWork::Credit>;

/// Bash (10, its own group) and make (20) below it; both live and hang on systemd (1).
class ReapedWorkTest : public ::testing::Test {
protected:
    std::map<std::int32_t, ReapedWork::Process> alive{
        {1, {1, 0, 1, 1}}, {10, {10, 1, 10, 5}}, {20, {20, 10, 20, 50}}, {21, {21, 20, 20, 60}}};
    ReapedWork work;

    Credits settle(std::uint64_t most = 1000) {
        return work.settle(most, [this](std::int32_t pid) -> std::optional<ReapedWork::Process> {
            const auto found = alive.find(pid);
            return found != alive.end() ? std::optional(found->second) : std::nullopt;
        });
    }
    void reaped(std::int32_t pid, std::uint64_t ticks) { work.reaped(alive.at(pid), ticks); }
    void ended(std::int32_t pid, std::uint64_t told, std::uint64_t recent) {
        work.ended(alive.at(pid), told, recent);
        alive.erase(pid);
    }
};

TEST_F(ReapedWorkTest, WhatWasShownOfTheEndedIsTakenOff) {
    EXPECT_EQ(settle(), Credits{});
    reaped(20, 30);
    EXPECT_EQ(settle(), (Credits{{20, 0, 30}})) << "children that nobody ever saw";
    alive[30] = {30, 20, 20, 70};
    reaped(20, 130);
    ended(30, 90, 50);
    EXPECT_EQ(settle(), (Credits{{20, 0, 40}}));
    // A whole tree at once: make and all below it end, and their shell waits for make.
    ended(21, 40, 10);
    ended(20, 300, 10);
    reaped(10, 400);
    EXPECT_EQ(settle(), (Credits{{10, 20, 60}})) << "the group that ended has worked, not the shell";
}

TEST_F(ReapedWorkTest, NeverMoreThanTheKernelWasBusyNorThanArrived) {
    reaped(20, 300);
    reaped(10, 100);
    std::uint64_t total = 0;
    for (const auto& credit : settle(99))
        total += credit.ticks;
    EXPECT_LE(total, 99U);
    EXPECT_GE(total, 97U);
    // Of a parent who ignores its children's ends nothing arrives, neither now nor later.
    ended(21, 80, 80);
    EXPECT_EQ(settle(), Credits{});
    EXPECT_EQ(settle(), Credits{});
    reaped(20, 50);
    EXPECT_EQ(settle(), (Credits{{20, 0, 50}})) << "and what is not awaited any more takes nothing away";
}

TEST_F(ReapedWorkTest, OneWhoEndedAfterItsParentWasReadArrivesARoundLater) {
    ended(21, 80, 80);
    EXPECT_EQ(settle(), Credits{});
    reaped(20, 95);
    EXPECT_EQ(settle(), (Credits{{20, 0, 15}}));
    // The parent may end in between as well.
    alive[22] = {22, 20, 20, 60};
    ended(22, 70, 70);
    EXPECT_EQ(settle(), Credits{});
    ended(20, 200, 10);
    reaped(10, 300);
    EXPECT_EQ(settle(), (Credits{{10, 22, 30}})) << "of the group, by the one that worked last";
}

TEST_F(ReapedWorkTest, OrphansArriveWithWhoeverAdoptedThem) {
    // Make ended before its child: the child was handed to systemd, which waited for it.
    ended(20, 100, 5);
    ended(21, 60, 60);
    reaped(10, 110);
    reaped(1, 85);
    Credits credits = settle();
    std::uint64_t total = 0;
    for (const auto& credit : credits)
        total += credit.ticks;
    EXPECT_EQ(total, 35U);
    // One that slept when its parent ended still bears the parent's pid when it ends itself, some rounds later.
    alive[40] = {40, 10, 40, 90};
    alive[41] = {41, 40, 40, 91};
    ended(40, 0, 0);
    settle();
    settle();
    ended(41, 500, 3);
    reaped(1, 520);
    EXPECT_EQ(settle(), (Credits{{1, 41, 20}}));
    // The pid's next owner is nobody's parent.
    alive[50] = {50, 10, 50, 95};
    alive[51] = {51, 50, 50, 96};
    ended(50, 0, 0);
    settle();
    alive[50] = {50, 10, 50, 200};
    ended(51, 70, 3);
    reaped(1, 80);
    EXPECT_EQ(settle(), (Credits{{1, 51, 10}}));
}

/// Processes that start, work, end, are waited for or not yet, and are handed on, as the kernel does it.
class Kernel {
public:
    struct Process {
        ReapedWork::Process is;
        std::uint64_t own = 0;
        std::uint64_t children = 0;
        bool isZombie = false;
    };
    std::map<std::int32_t, Process> processes{{1, {.is = {.pid = 1, .groupPid = 1}}},
                                              {2, {.is = {.pid = 2, .parentPid = 1, .groupPid = 2}}}};
    std::uint64_t worked = 0;

    explicit Kernel(unsigned seed) : random_(seed) {}

    void step() {
        ++now_;
        const std::int32_t pid = anyone();
        Process& process = processes.at(pid);
        const auto what = random_() % 100;
        if (what < 55) {
            const std::uint64_t ticks = process.isZombie ? 0 : random_() % 20;
            process.own += ticks;
            worked += ticks;
        } else if (what < 75 && !process.isZombie && processes.size() < 60) {
            const std::int32_t child = nextPid_++;
            processes[child] = {.is = {child, pid, random_() % 3 == 0 ? child : process.is.groupPid, now_}};
        } else if (what < 90 && pid > 2) {
            process.isZombie = process.is.isZombie = true;
            for (auto& [other, orphan] : processes)
                if (orphan.is.parentPid == pid)
                    orphan.is.parentPid = random_() % 2 == 0 && isAbove(2, pid) ? 2 : 1;
        } else if (process.isZombie) {
            Process& parent = processes.at(process.is.parentPid);
            if (parent.isZombie)
                return;
            parent.children += process.own + process.children;
            processes.erase(pid);
        }
    }

private:
    std::int32_t anyone() {
        auto at = processes.begin();
        std::advance(at, static_cast<std::ptrdiff_t>(random_() % processes.size()));
        return at->first;
    }
    bool isAbove(std::int32_t ancestor, std::int32_t pid) const {
        while (pid > 1 && pid != ancestor)
            pid = processes.at(pid).is.parentPid;
        return pid == ancestor;
    }

    std::mt19937 random_;
    std::int32_t nextPid_ = 3;
    std::uint64_t now_ = 1;
};

TEST(ReapedWorkOverTime, AllThatWasWorkedIsShownOnceWhateverEndsWhenever) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Kernel kernel(seed);
        ReapedWork work;
        std::map<std::int32_t, Kernel::Process> before = kernel.processes;
        std::map<std::int32_t, std::uint64_t> recent;
        std::uint64_t shown = 0;
        std::uint64_t workedBefore = 0;
        std::mt19937 random(seed);
        for (int round = 0; round < 150; ++round) {
            for (auto steps = random() % 120; steps > 0; --steps)
                kernel.step();
            std::uint64_t read = 0;
            std::map<std::int32_t, std::uint64_t> recentNow;
            for (const auto& [pid, process] : kernel.processes) {
                const auto known = before.find(pid);
                const Kernel::Process last = known != before.end() ? known->second : Kernel::Process();
                read += process.own - last.own;
                recentNow[pid] = process.own - last.own + process.children - last.children;
                if (process.children != last.children)
                    work.reaped(process.is, process.children - last.children);
            }
            for (const auto& [pid, process] : before)
                if (!kernel.processes.contains(pid))
                    work.ended(process.is, process.own + process.children, recent[pid]);
            const std::uint64_t most = kernel.worked - workedBefore - read;
            std::uint64_t credited = 0;
            for (const auto& credit : work.settle(most, [&](std::int32_t pid) {
                     const auto found = kernel.processes.find(pid);
                     return found != kernel.processes.end() ? std::optional(found->second.is) : std::nullopt;
                 })) {
                credited += credit.ticks;
                ASSERT_TRUE(kernel.processes.contains(credit.reaperPid));
                ASSERT_TRUE(credit.endedPid == 0 || before.contains(credit.endedPid));
            }
            // What ended and is not waited for yet is a row still, so each round's work is shown in that round.
            ASSERT_EQ(read + credited, kernel.worked - workedBefore) << "seed " << seed << ", round " << round;
            shown += read + credited;
            workedBefore = kernel.worked;
            before = kernel.processes;
            recent = recentNow;
        }
        EXPECT_EQ(shown, kernel.worked);
    }
}

} // namespace
} // namespace vantoro
