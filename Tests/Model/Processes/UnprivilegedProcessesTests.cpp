#include "Model/Processes/UnprivilegedProcesses.h"

#include "Model/Processes/IdentityResolver.h"
#include "Support/Testing.h"

namespace vantoro {
namespace {

struct FakeProcess {
    ShortProcessRecord record;
    std::optional<TaskRecord> task;
};

class FakeTable : public ProcessTable {
public:
    std::map<std::int32_t, std::optional<FakeProcess>> processes;
    int userLookups = 0;

    void listPids(std::vector<std::int32_t>& pids) override {
        for (const auto& [pid, process] : processes)
            pids.push_back(pid);
    }
    std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) override {
        const auto& process = processes.at(pid);
        return process ? std::optional(process->record) : std::nullopt;
    }
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override { return processes.at(pid)->task; }
    std::string path(std::int32_t pid) override { return "/bin/" + processes.at(pid)->record.name; }
    std::optional<std::string> userName(std::uint32_t uid) override {
        ++userLookups;
        return uid == 0 ? std::optional<std::string>("root") : std::nullopt;
    }
};

class FakeStatistics : public SystemStatistics {
public:
    std::optional<HostTicks> ticks;
    std::optional<HostTicks> hostTicks() override { return ticks; }
    std::optional<VirtualMemory> virtualMemory() override { return std::nullopt; }
    std::optional<LoadAverages> loadAverages() override { return LoadAverages{1.5, 2, 3}; }
    PhysicalMemory physicalMemory() override { return {.totalBytes = 64, .availableBytes = 48}; }
};

constexpr std::uint64_t second = 1'000'000'000;

FakeProcess busy(const char* name, std::uint64_t cpuNanoseconds, std::uint64_t startTime = 1, std::uint32_t uid = 0) {
    return {{name, uid, startTime}, TaskRecord{.residentBytes = 4096, .userNanoseconds = cpuNanoseconds}};
}

class UnprivilegedProcessesTest : public ::testing::Test {
protected:
    std::shared_ptr<FakeTable> table = std::make_shared<FakeTable>();
    std::shared_ptr<FakeStatistics> statistics = std::make_shared<FakeStatistics>();
    UnprivilegedProcesses sampler{table, statistics};

    double cpuOf(std::int32_t pid, double at) {
        for (const ProcessSample& process : sampler.sample(at).processes)
            if (process.pid() == pid)
                return process.cpuPercent;
        return -1;
    }
};

TEST_F(UnprivilegedProcessesTest, SharesComeFromTheTimeBetweenTwoReadings) {
    using Case = std::tuple<double, double, std::uint64_t, double>;
    for (const auto& [at, cpuSeconds, startTime, percent] :
         {Case{10, 7, 1, 0},                                            // nothing to compare with yet
          Case{12, 7.5, 1, 25}, Case{14, 7.5, 1, 0}, Case{14, 9, 1, 0}, // no time passed
          Case{16, 8, 1, 0},                                            // a counter that went back
          Case{18, 11, 2, 0}}) {                                        // the pid's next owner
        table->processes[5] = busy("a", static_cast<std::uint64_t>(cpuSeconds * second), startTime);
        EXPECT_EQ(cpuOf(5, at), percent) << at;
    }
    table->processes.erase(5);
    sampler.sample(20);
    table->processes[5] = busy("a", 12 * second, 2);
    EXPECT_EQ(cpuOf(5, 22), 0) << "a process that was gone starts anew";
}

TEST_F(UnprivilegedProcessesTest, WhatIsRefusedIsCountedAndWhatVanishesIsNot) {
    table->processes[0] = busy("kernel", 0);
    table->processes[3] = std::nullopt;
    table->processes[4] = FakeProcess{{"hidden", 501, 1}, std::nullopt};
    table->processes[5] = busy("mine", 0, 1, 501);
    table->processes[6] = busy("also-mine", 0, 1, 501);
    const auto sample = sampler.sample(1);
    ASSERT_EQ(sample.processes.size(), 2U);
    EXPECT_EQ(sampler.unreadableCount(), 1);
    const ProcessSample& mine = sample.processes[0];
    EXPECT_EQ(*mine.identity, (ProcessIdentity{.pid = 5,
                                               .rawName = "mine",
                                               .displayName = "mine",
                                               .executablePath = "/bin/mine",
                                               .user = "501",
                                               .kind = ProcessKind::systemDaemon}));
    EXPECT_EQ(mine.memoryBytes, 4096U);
    EXPECT_EQ(table->userLookups, 1) << "one look-up per account";
    EXPECT_TRUE(sampler.sample(2).processes[0].identity.sharesRecordWith(mine.identity));
    table->processes[5]->record.name = "other";
    EXPECT_EQ(sampler.sample(3).processes[0].executablePath(), "/bin/other") << "an exec keeps pid and start time";
}

TEST_F(UnprivilegedProcessesTest, TheSystemLine) {
    EXPECT_EQ(sampler.sample(1).system.cpu, (CPULoad{.loadAverage = 1.5})) << "ticks refused: idle";
    statistics->ticks = {.user = 0xFFFFFFFB, .system = 10, .idle = 10, .nice = 0};
    EXPECT_EQ(sampler.sample(2).system.cpu.idlePercent, 100);
    statistics->ticks = {.user = 5, .system = 30, .idle = 70, .nice = 10};
    EXPECT_EQ(sampler.sample(3).system.cpu, (CPULoad{20, 20, 60, 1.5})) << "the user counter wrapped";
    EXPECT_EQ(sampler.sample(4).system.cpu.idlePercent, 100) << "no tick passed";
    EXPECT_EQ(sampler.sample(5).system.memory, (MemoryLoad{.totalBytes = 64, .availableBytes = 48}));

    const VirtualMemory memory{.pageBytes = 10,
                               .wiredPages = 3,
                               .compressorPages = 4,
                               .internalPages = 1000,
                               .purgeablePages = 1200,
                               .swapOuts = 9};
    EXPECT_EQ(memoryLoad(64, memory), (MemoryLoad{70, 64, 30, 40, 9})) << "never less than nothing";
}

class FixedMembership : public AppIdentity {
public:
    AppMembership membership(std::int32_t /*pid*/, const ProcessOrigin& origin, bool /*isOwn*/) override {
        if (origin.path == "/usr/bin/web" || hasMoved)
            return {.kind = ProcessKind::userApp, .owningAppName = "Web", .owningAppPath = "/share/web.desktop"};
        return {};
    }
    bool hasMoved = false;
};

TEST(IdentityResolver, KeepsTheRecordUntilThePlatformHasAnotherAnswer) {
    const auto apps = std::make_shared<FixedMembership>();
    IdentityResolver resolver(apps, "anna");
    const SharedProcessIdentity first = resolver.resolve(7, "sh", {.path = "/bin/sh"}, "anna");
    EXPECT_EQ(first->kind, ProcessKind::commandLine);
    EXPECT_TRUE(resolver.resolve(7, "sh", {.path = "/bin/sh"}, "anna").sharesRecordWith(first));
    const SharedProcessIdentity afterExec = resolver.resolve(7, "web", {.path = "/usr/bin/web"}, "anna");
    EXPECT_EQ(afterExec->kind, ProcessKind::userApp);
    EXPECT_EQ(afterExec->displayName, "web");
    EXPECT_EQ(afterExec->owningAppName, "Web");
    EXPECT_TRUE(resolver.resolve(7, "web", {.path = "/usr/bin/web"}, "anna").sharesRecordWith(afterExec));
    const SharedProcessIdentity waiting = resolver.resolve(5, "viewer", {.path = "/opt/viewer"}, "anna");
    EXPECT_FALSE(waiting->owningAppName);
    apps->hasMoved = true;
    const SharedProcessIdentity moved = resolver.resolve(5, "viewer", {.path = "/opt/viewer"}, "anna");
    EXPECT_EQ(moved->owningAppName, "Web") << "the desktop moved it into its application's group after its start";
    EXPECT_TRUE(resolver.resolve(5, "viewer", {.path = "/opt/viewer"}, "anna").sharesRecordWith(moved));
    apps->hasMoved = false;
    EXPECT_EQ(*resolver.resolve(5, "viewer", {.path = "/opt/viewer"}, "anna"), *waiting);
    apps->hasMoved = true;
    EXPECT_EQ(
        resolver.resolve(8, "Mail", {.path = "/Applications/Mail.app/Contents/MacOS/Mail"}, "anna")->owningAppName,
        "Mail")
        << "a bundle path says it all";
    EXPECT_FALSE(resolver.resolve(0, "kernel_task", {.path = ""}, "root")->owningAppName);
    apps->hasMoved = false;
    EXPECT_EQ(resolver.resolve(9, "cut", {.path = "(cut)"}, "anna")->executablePath, "") << "a mark is no path";
}

TEST(IdentityResolver, AProcessThatEndedBeforeItsPathWasReadIsWhatItsLikeAre) {
    IdentityResolver resolver(std::make_shared<FixedMembership>(), "anna");
    const auto resolve = [&](std::int32_t pid, const char* path, const char* user) {
        return resolver.resolve(pid, "a-very-long-comp", {.path = path}, user);
    };
    EXPECT_EQ(resolve(1, "(a-very-long-comp)", "anna")->kind, ProcessKind::systemDaemon);
    resolve(2, "/opt/a-very-long-compiler", "anna");
    EXPECT_EQ(resolve(3, "(a-very-long-comp)", "anna")->kind, ProcessKind::commandLine);
    EXPECT_EQ(resolve(3, "(a-very-long-comp)", "anna")->displayName, "a-very-long-compiler");
    EXPECT_EQ(resolve(4, "", "root")->displayName, "a-very-long-comp") << "another's";
}

TEST(IdentityResolver, ForgetsWhatIsNoLongerSeen) {
    EXPECT_EQ(UnprivilegedProcesses(nullptr, nullptr).sample(1).system, SystemLine{}) << "nor is a platform needed";
    IdentityResolver resolver(std::make_shared<FixedMembership>(), "anna");
    std::vector<SharedProcessIdentity> records;
    for (std::int32_t pid = 1; pid <= 200; ++pid) {
        records.push_back(resolver.resolve(pid, "sh", {.path = "/bin/sh"}, "anna"));
        resolver.endSample();
    }
    EXPECT_TRUE(resolver.resolve(200, "sh", {.path = "/bin/sh"}, "anna").sharesRecordWith(records.back()));
    EXPECT_FALSE(resolver.resolve(1, "sh", {.path = "/bin/sh"}, "anna").sharesRecordWith(records.front()));
}

} // namespace
} // namespace vantoro
