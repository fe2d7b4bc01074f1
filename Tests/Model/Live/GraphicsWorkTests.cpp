// Who the graphics processor works for, in the snapshots.
#include "Model/Live/GraphicsWork.h"

#include "Support/HistoryBuilder.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <vector>

namespace vantoro {
namespace {

using testing::process;

class CountedClients : public GraphicsClients {
public:
    std::optional<GraphicsShares> read() override { return ++reads, shares; }
    void rest() override { ++rests; }

    std::optional<GraphicsShares> shares;
    int reads = 0;
    int rests = 0;
};

class GraphicsWorkTest : public ::testing::Test {
protected:
    Snapshot add(Snapshot snapshot, std::optional<double> awakePercent = {}) {
        snapshot.timestamp = now += 2;
        work.add(snapshot, awakePercent);
        return snapshot;
    }

    UnixSeconds now = 1000;
    std::shared_ptr<CountedClients> clients = std::make_shared<CountedClients>();
    GraphicsWork work{clients};
};

TEST_F(GraphicsWorkTest, AsksOnlyWhileItWorksOrSomebodyLooks) {
    struct Case {
        const char* what;
        std::optional<double> busyPercent;
        double watts = 0;
        std::optional<double> awakePercent;
        bool isSeen = false;
        bool isAsked = false;
    };
    const Case cases[] = {
        {"nothing known, nobody looks", {}, 0, {}, false, false},
        {"nothing known, somebody looks", {}, 0, {}, true, true},
        {"at rest", 3, 1.5, {}, false, false},
        {"at rest and looked at", 3, 1.5, {}, true, true},
        {"nothing to be seen", 0, 0.1, {}, true, false},
        {"asleep and looked at", {}, 0, 0, true, false},
        {"busy", 5, 0, {}, false, true},
        {"drawing", {}, 2, {}, false, true},
        {"what a large card draws at rest", 0, 15, {}, true, false},
        {"drawing more than at rest", 2, 40, {}, false, true},
        {"awake", 0, 0, 10, false, true},
    };
    for (const Case& each : cases) {
        clients->reads = 0;
        now += 100;
        if (each.isSeen)
            work.see();
        add({.power = {.gpuWatts = each.watts}, .gpuPercent = each.busyPercent}, each.awakePercent);
        EXPECT_EQ(clients->reads == 1, each.isAsked) << each.what;
    }
    now += 100;
    clients->reads = 0;
    add({.gpuPercent = 60});
    for (int ticks = 0; ticks < 10; ++ticks)
        add({.gpuPercent = 0});
    EXPECT_EQ(clients->reads, 6) << "for ten seconds after its last work";
    EXPECT_GE(clients->rests, 5);
    clients->reads = 0;
    work.seeAlways();
    add({});
    add({});
    EXPECT_EQ(clients->reads, 2);
}

TEST_F(GraphicsWorkTest, RowsGetTheirShareAndWorkersThatHaveNoneAreAskedFor) {
    clients->shares = GraphicsShares{
        .programs = {{.pid = 4, .percent = 0}, {.pid = 7, .percent = 88}, {.pid = 9, .percent = 1}, {12, 0.9}},
        .leastBusyPercent = 90};
    const Snapshot busy{.processes = {process(12, "browser", 5), process(4, "terminal", 1), process(5, "cc1", 300)},
                        .gpuPercent = 60};
    const Snapshot joined = add(busy);
    EXPECT_EQ(joined.processes[0].gpuPercent, 0.9);
    EXPECT_EQ(joined.processes[1].gpuPercent, 0) << "a client that had nothing done";
    EXPECT_EQ(joined.processes[2].gpuPercent, std::nullopt) << "not known to be one";
    EXPECT_EQ(work.workers(), (std::vector<std::int32_t>{7, 9}));
    clients->shares->programs[2].percent = 0.4;
    add(busy);
    EXPECT_EQ(work.workers(), (std::vector<std::int32_t>{7, 9})) << "a moment's rest";
    clients->shares->programs.clear();
    for (std::int32_t pid = 20; pid < 40; ++pid)
        clients->shares->programs.push_back({.pid = pid, .percent = pid * 1.0});
    add(busy);
    EXPECT_EQ(work.workers(), (std::vector<std::int32_t>{32, 33, 34, 35, 36, 37, 38, 39}));
    clients->shares.reset();
    const Snapshot untold = add(busy);
    EXPECT_EQ(untold.processes[0].gpuPercent, std::nullopt);
    EXPECT_EQ(untold.gpuPercent, 60);
    EXPECT_TRUE(work.workers().empty());
}

TEST_F(GraphicsWorkTest, WhatIsKnownOfClientsIsTheBusyShareOnlyWhereItIsNearlyAll) {
    struct Case {
        const char* what;
        std::optional<double> told;
        std::optional<double> awakePercent;
        bool hasAll = false;
        std::optional<double> busyPercent;
    };
    const Case cases[] = {
        {"told", 92, {}, false, 92},
        {"told of a moment between two pictures", 10, {}, false, 70},
        {"not told, and others may render", {}, {}, false, {}},
        {"not told, and much of it may be others'", {}, 95, false, {}},
        {"not told, but it slept for nearly all of the rest", {}, 79, false, 70},
        {"not told, but nobody else is there", {}, {}, true, 70},
    };
    for (const Case& each : cases) {
        clients->shares =
            GraphicsShares{.programs = {{.pid = 7, .percent = 70}}, .leastBusyPercent = 70, .hasAll = each.hasAll};
        work.see();
        EXPECT_EQ(add({.gpuPercent = each.told}, each.awakePercent).gpuPercent, each.busyPercent) << each.what;
    }
}

} // namespace
} // namespace vantoro
