#include "Platform/Linux/Proc/LinuxProcessTable.h"

#include "Model/Processes/UnprivilegedProcesses.h"
#include "Support/Folders.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vantoro {
namespace {

using testing::TemporaryFolder;

LinuxProcessTable::Options options(const std::string& root, std::size_t budget = 64) {
    return {.root = root,
            .units = {.ticksPerSecond = 100, .pageBytes = 4096},
            .descriptorBudget = budget,
            .ownUid = 1000,
            .accountName = [](std::uint32_t uid) {
                return uid == 1000 ? std::optional<std::string>("ada") : std::nullopt;
            }};
}

std::vector<std::int32_t> pids(ProcessTable& table) {
    std::vector<std::int32_t> all{-1};
    table.listPids(all);
    return all;
}

std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

TEST(LinuxProcessTable, ReadsARecordedLaptop) {
    LinuxProcessTable table(options(testing::recordedMachine("laptop")));
    EXPECT_EQ(pids(table), (std::vector<std::int32_t>{1, 2, 57, 812, 1850, 2100, 2105, 2106, 2200, 2210, 2230, 2231,
                                                      2300, 2400, 2402, 2500, 2600, 2700}));
    EXPECT_EQ(table.shortRecord(1850), (ShortProcessRecord{.name = "gnome-shell", .uid = 1000, .startTime = 2400}));
    EXPECT_EQ(table.taskRecord(1850), (TaskRecord{.residentBytes = 61000u * 4096,
                                                  .userNanoseconds = 902'100'000'000,
                                                  .systemNanoseconds = 301'100'000'000}));
    EXPECT_EQ(table.shortRecord(2106)->name, "a) R 1 (b");
    const std::pair<int, const char*> paths[] = {
        {1, "/sbin/init"},            // the link is refused, the first argument is a path
        {2, "[kthreadd]"},            // the kernel's
        {57, "[kworker/3:1-events]"}, //
        {812, ""},                    // its first argument is a title of its own making
        {2105, "/usr/lib/editor/editor-renderer"},
        {2106, "/home/ada/a) R 1 (b"},  // deleted since
        {2700, "/opt/chatter/chatter"}, // a command line laid over the first argument
        {4242, ""}};
    for (const auto& [pid, path] : paths)
        EXPECT_EQ(table.path(pid), path) << pid;
    EXPECT_EQ(table.userName(1000), "ada");
    EXPECT_FALSE(table.userName(501));
    EXPECT_FALSE(table.shortRecord(0));
    EXPECT_FALSE(table.taskRecord(-5));
}

TEST(LinuxProcessTable, AQuietProcessIsWatchedByItsScheduleAndSeenToRunAtOnce) {
    const TemporaryFolder folder;
    const auto write = [&folder](unsigned long ticks, const char* schedule) {
        std::string stat = testing::processStat(7, "x", 100, ticks);
        folder.write("proc/7/stat", stat.replace(stat.find(" 20 0 2 "), 8, " 20 0 1 "));
        folder.write("proc/7/schedstat", schedule);
    };
    write(50, "123456 7 8\n");
    folder.write("proc/7/status", "Uid:\t1000\n");
    folder.write("proc/stat", "processes 10\n");
    LinuxProcessTable table(options(folder.path(), 1));
    const auto ticks = [&table] {
        pids(table);
        table.shortRecord(7);
        return table.taskRecord(7)->userNanoseconds / 10'000'000;
    };
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(ticks(), 50U);
    write(90, "123456 7 8\n");
    EXPECT_EQ(ticks(), 50U) << "its figures are left alone while its time on a processor stands still";
    write(90, "123999 7 9\n");
    EXPECT_EQ(ticks(), 90U);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(ticks(), 90U);
    write(95, "123999 7 9\n");
    int readings = 1;
    while (ticks() != 95U && readings < 100)
        ++readings;
    EXPECT_LE(readings, 16) << "and looked at now and then all the same";
    write(99, "0 0 0\n");
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(ticks(), 99U);
    write(100, "0 0 0\n");
    EXPECT_EQ(ticks(), 100U) << "a kernel that does not count says nothing";
}

TEST(LinuxProcessTable, ListsAnewOnlyWhenSomethingWasStarted) {
    const TemporaryFolder folder;
    writeProcess(folder, 7, "x", 100, 50);
    folder.write("proc/stat", "cpu 1 2 3 4\nprocesses 10\n");
    LinuxProcessTable table(options(folder.path()));
    EXPECT_EQ(pids(table), (std::vector<std::int32_t>{7}));
    writeProcess(folder, 5, "y", 200, 0);
    EXPECT_EQ(pids(table), (std::vector<std::int32_t>{7}));
    folder.write("proc/stat", "cpu 1 2 3 4\nprocesses 11\n");
    EXPECT_EQ(pids(table), (std::vector<std::int32_t>{5, 7}));
    folder.remove("proc/7");
    folder.write("proc/stat", "cpu 1 2 3 4\n"); // no count: always
    EXPECT_EQ(pids(table), (std::vector<std::int32_t>{5}));
}

TEST(LinuxProcessTable, AsksAgainWhoAProcessIsWhenItIsAnother) {
    const TemporaryFolder folder;
    writeProcess(folder, 7, "sh", 100, 50, 1000);
    folder.write("proc/7/cmdline", "/bin/sh");
    LinuxProcessTable table(options(folder.path()));
    EXPECT_EQ(table.shortRecord(7)->uid, 1000u);
    EXPECT_EQ(table.path(7), "/bin/sh");

    folder.write("proc/7/cmdline", "/bin/su");
    writeProcess(folder, 7, "sh", 100, 51, 0);
    EXPECT_EQ(table.shortRecord(7)->uid, 1000u) << "not asked each time";
    writeProcess(folder, 7, "su", 100, 52, 0); // the same process became another program
    EXPECT_EQ(table.shortRecord(7), (ShortProcessRecord{.name = "su", .uid = 0, .startTime = 100}));
    EXPECT_EQ(table.path(7), "/bin/su");

    folder.write("proc/7/cmdline", "/bin/su2");
    writeProcess(folder, 7, "su", 900, 1, 33); // another process under the same pid
    EXPECT_EQ(table.shortRecord(7), (ShortProcessRecord{.name = "su", .uid = 33, .startTime = 900}));
    EXPECT_EQ(table.path(7), "/bin/su2");
}

TEST(LinuxProcessTable, ReadsOncePerSampleAndNoticesALongerFigureBehindEqualBytes) {
    const TemporaryFolder folder;
    folder.write("proc/7/status", "Uid:\t1000\n");
    folder.write("proc/7/stat", testing::processStat(7, "x", 1, 1, 12));
    LinuxProcessTable table(options(folder.path()));
    ASSERT_TRUE(table.shortRecord(7));
    folder.write("proc/7/stat", testing::processStat(7, "x", 1, 1, 123));
    EXPECT_EQ(table.taskRecord(7)->residentBytes, 12u * 4096) << "from the same reading as the short record";
    EXPECT_EQ(table.taskRecord(7)->residentBytes, 123u * 4096);
}

TEST(LinuxProcessTable, TellsFiguresOfOnesOwnProcessesOnly) {
    const TemporaryFolder folder;
    folder.write("proc/stat", "processes 10\n");
    for (const auto& [pid, uid] : {std::pair{7, 1000U}, {8, 0U}, {9, 1001U}})
        writeProcess(folder, pid, "x", 100, 50, uid);
    const auto table = std::make_shared<LinuxProcessTable>(options(folder.path()));
    UnprivilegedProcesses processes(table, nullptr);
    const auto sample = processes.sample(1);
    ASSERT_EQ(sample.processes.size(), 1U);
    EXPECT_EQ(sample.processes[0].pid(), 7);
    EXPECT_EQ(processes.unreadableCount(), 2);
    EXPECT_FALSE(table->taskRecord(8)) << "nor without a short record before";
}

TEST(LinuxProcessTable, TheSamplerCountsWhatEndedAndWhatBegan) {
    const TemporaryFolder folder;
    static double now = 0;
    now = 100;
    LinuxProcessTable::Options here = options(folder.path());
    here.bootSeconds = [] { return now; };
    UnprivilegedProcesses sampler(std::make_shared<LinuxProcessTable>(here), nullptr);
    using Shares = std::vector<std::pair<std::int32_t, double>>;
    const auto shares = [&](unsigned long busy) {
        folder.write("proc/stat", "cpu " + std::to_string(busy) + " 0 0 0\n");
        Shares found;
        for (const ProcessSample& row : sampler.sample(now).processes)
            if (row.cpuPercent != 0)
                found.emplace_back(row.pid(), row.cpuPercent);
        now += 2;
        return found;
    };
    testing::Relative make{.pid = 20, .parent = 1, .group = 20, .session = 20, .name = "make", .ticks = 50};
    writeRelative(folder, make);
    EXPECT_EQ(shares(1000), Shares{});
    make.childTicks = 40;
    make.ticks = 60;
    writeRelative(folder, make);
    writeRelative(folder,
                  {.pid = 21, .parent = 20, .group = 20, .session = 20, .name = "cc1", .ticks = 30, .start = 10'020});
    EXPECT_EQ(shares(1200), (Shares{{20, 25}, {21, 15}}));
    folder.remove("proc/21");
    make.childTicks += 80;
    writeRelative(folder, make);
    EXPECT_EQ(shares(1400), (Shares{{20, 25}})) << "less what was shown of it";
}

TEST(LinuxProcessTable, SurvivesBrokenFiles) {
    const TemporaryFolder folder;
    for (const char* name : {"proc/7/stat", "proc/7/status", "proc/not-a-pid/stat", "proc/99999999999999/stat"})
        folder.write(name, "7 (x) S");
    LinuxProcessTable table(options(folder.path()));
    EXPECT_EQ(pids(table), (std::vector<std::int32_t>{7}));
    EXPECT_FALSE(table.shortRecord(7) || table.taskRecord(7));
    LinuxProcessTable nowhere(options(folder.path() + "/nothing"));
    EXPECT_TRUE(pids(nowhere).empty());
}

TEST(LinuxProcessTable, KeepsNoMoreDescriptorsThanAllowed) {
    const std::size_t before = openDescriptors();
    {
        LinuxProcessTable table(options(testing::recordedMachine("laptop"), 3));
        for (int round = 0; round < 3; ++round)
            for (const std::int32_t pid : pids(table))
                EXPECT_TRUE(table.shortRecord(pid)) << pid;
        EXPECT_LE(openDescriptors(), before + 3 + 3); // and the kernel's counters, the folder and its listing
        table.rest();
        EXPECT_EQ(openDescriptors(), before + 1);
        EXPECT_TRUE(table.shortRecord(pids(table).front()));
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(LinuxProcessTable, DropsAProcessOfThisMachineWhenItEnds) {
    LinuxProcessTable table;
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    pids(table);
    const auto record = table.shortRecord(child);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->uid, ::getuid());
    EXPECT_EQ(table.path(child), std::filesystem::read_symlink("/proc/self/exe").string());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(table.shortRecord(child));
    EXPECT_FALSE(table.taskRecord(child));
    const std::vector<std::int32_t> left = pids(table);
    EXPECT_EQ(std::count(left.begin(), left.end(), child), 0);
    EXPECT_EQ(std::count(left.begin(), left.end(), ::getpid()), 1);
}

TEST(LinuxProcessStream, IsTheProgramBesideThisOneUnlessAnotherIsNamed) {
    EXPECT_EQ(LinuxProcessStream("/x", {}).stream(0, 2, 40).program, "/x/vantoro-top");
    EXPECT_EQ(LinuxProcessStream("/x", "").pathList().program, "/x/vantoro-top");
    EXPECT_EQ(LinuxProcessStream("/x", "/tmp/other").pathList().program, "/tmp/other");
}

} // namespace
} // namespace vantoro
