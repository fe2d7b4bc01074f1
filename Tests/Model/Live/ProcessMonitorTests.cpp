// The real monitor with real child processes, good ones and bad ones.
#include "Model/Live/ProcessMonitor.h"

#include "Platform/Linux/Apps/LinuxAppIdentity.h"
#include "Support/EventLoop.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <QTemporaryDir>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace vantoro {
namespace {

using namespace std::chrono_literals;
using testing::waitUntil;
using Kind = ProcessMonitor::Source::Kind;

/// Any shell script in place of the stream's program; "$1" is "--paths" when the path list is asked for, and "$2" the
/// count of samples (0 for the stream, 2 for the first quick look).
class ScriptedStream : public ProcessStream {
public:
    explicit ScriptedStream(std::string program) : program_(std::move(program)) {}

    ProgramCommand stream(int samples, int intervalSeconds, int rows) const override {
        return {program_,
                {"-l", std::to_string(samples), "-s", std::to_string(intervalSeconds), "-n", std::to_string(rows)}};
    }
    ProgramCommand pathList() const override { return {program_, {"--paths"}}; }

private:
    std::string program_;
};

class OneProcess : public ProcessTable {
public:
    void listPids(std::vector<std::int32_t>& pids) override {
        isResting = false;
        pids = {77, 78};
    }
    std::optional<ShortProcessRecord> shortRecord(std::int32_t /*pid*/) override {
        return ShortProcessRecord{.name = "sampled", .uid = 1};
    }
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override {
        return pid == 77 ? std::optional<TaskRecord>(TaskRecord{.residentBytes = 5}) : std::nullopt;
    }
    std::string path(std::int32_t /*pid*/) override { return "/opt/Tool.app/Contents/MacOS/Tool"; }
    std::optional<std::string> userName(std::uint32_t /*uid*/) override { return "anna"; }
    void rest() override { isResting = true; }

    std::atomic<bool> isResting = false;
};

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

bool hasChildren() {
    return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

/// A monitor over any shell script, and what it reports.
class Watched {
public:
    explicit Watched(
        const std::string& script, ProcessMonitor::Mode mode = ProcessMonitor::Mode::automatic,
        const std::string& pathList = "printf '12 /opt/Editor.app/Contents/MacOS/Editor\\n13 [kworker/0:1]\\n'",
        std::chrono::milliseconds pathListPause = 3s) {
        timing.pathListPause = pathListPause;
        timing.watchdogFloor = 700ms;
        timing.watchdogIntervals = 0;
        timing.firstFallbackSample = 5ms;
        timing.fallbackSecond = 5ms;
        timing.pathListLimit = 500ms;
        timing.terminationGrace = 100ms;
        const std::string program = folder.filePath("top").toStdString();
        if (!script.empty()) {
            std::ofstream(program)
                << "#!/bin/sh\nif [ \"$1\" = --paths ]; then " << pathList << "; exit; fi\n"
                << R"(block() { printf 'Processes: 2\nLoad Avg: %s\n\nPID  COMMAND  %%CPU MEM\n12   ed       50.0 4K\n13   kworker  0.5  0K\n' "$1"; }
)" << script << '\n';
            std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        }
        Platform platform;
        platform.processTable = table;
        platform.processStream = std::make_shared<ScriptedStream>(program);
        platform.appIdentity = std::make_shared<LinuxAppIdentity>(
            LinuxAppIdentity::Options{.root = folder.path().toStdString(), .folders = {}, .clock = [] { return 1.0; }});
        monitor = std::make_unique<ProcessMonitor>(
            platform, [mode] { return mode; }, timing);
        monitor->onUpdate = [this](const std::vector<ProcessSample>& list, const SystemLine& system) {
            lists.push_back(list);
            loads.push_back(system.cpu.loadAverage);
        };
        monitor->onSourceChange = [this](ProcessMonitor::Source source) { sources.push_back(source); };
        monitor->start(1, 40);
    }

    bool hasFallenBack() const { return !lists.empty() && monitor->source().kind == Kind::ownProcessesOnly; }

    QTemporaryDir folder;
    std::shared_ptr<OneProcess> table = std::make_shared<OneProcess>();
    ProcessMonitor::Timing timing;
    std::vector<std::vector<ProcessSample>> lists;
    std::vector<double> loads;
    std::vector<ProcessMonitor::Source> sources;
    std::unique_ptr<ProcessMonitor> monitor;
};

class ProcessMonitorTest : public ::testing::Test {
protected:
    ~ProcessMonitorTest() override { EXPECT_FALSE(hasChildren()); }
};

constexpr const char* healthy = "[ \"$2\" != 2 ] || exit 1; block 1; block 2; block 3; block 4; exec sleep 1000";

TEST_F(ProcessMonitorTest, DeliversTheStreamFromItsSecondBlockOn) {
    const Watched watched(healthy);
    ASSERT_TRUE(waitUntil([&] { return watched.lists.size() == 2; })) << "the fourth block is not finished yet";
    EXPECT_EQ(watched.loads, (std::vector<double>{2, 3}));
    EXPECT_EQ(watched.sources, (std::vector<ProcessMonitor::Source>{{Kind::system}}));
    EXPECT_EQ(watched.monitor->unreadableCount(), 0);
    const ProcessSample& row = watched.lists.back().at(0);
    EXPECT_EQ(row.rawName(), "ed");
    EXPECT_EQ(row.owningAppPath(), "/opt/Editor.app");
    EXPECT_EQ(row.cpuPercent, 50);
    EXPECT_TRUE(row.identity.sharesRecordWith(watched.lists[0][0].identity)) << "texts are shared from tick to tick";
    const ProcessSample& thread = watched.lists.back().at(1);
    EXPECT_EQ(thread.identity->kind, ProcessKind::kernel);
    EXPECT_EQ(thread.displayName(), "kworker");
    EXPECT_EQ(thread.executablePath(), "") << "the path list's mark is no path";
}

TEST_F(ProcessMonitorTest, AQuickLookDeliversBeforeTheStreamDoes) {
    const Watched watched("if [ \"$2\" = 2 ]; then block 8; block 9; exit; fi\nblock 1; exec sleep 1000");
    ASSERT_TRUE(waitUntil([&] { return !watched.lists.empty(); }));
    EXPECT_EQ(watched.loads, std::vector<double>{9});
    EXPECT_EQ(watched.monitor->source().kind, Kind::system);
}

TEST_F(ProcessMonitorTest, TheKernelItselfNeverAsksForNewPaths) {
    // Each listing of the paths leaves a line, and this time another one may follow at once.
    const Watched watched("kernel() { block 1; printf '0    kernel   9.0  4K\\n'; }\n"
                          "[ \"$2\" != 2 ] || exit 1; sleep 0.2; kernel; kernel; kernel; kernel; exec sleep 1000",
                          ProcessMonitor::Mode::automatic,
                          "echo x >>\"$0.paths\"; printf '12 /opt/Editor.app/Contents/MacOS/Editor\\n13 /bin/k\\n'",
                          1ms);
    ASSERT_TRUE(waitUntil([&] { return watched.lists.size() == 2; }));
    EXPECT_EQ(watched.lists[1].back().displayName(), "kernel_task");
    EXPECT_EQ(std::filesystem::file_size(watched.folder.filePath("top.paths").toStdString()), 2U)
        << "one listing, before the stream began";
}

// A game keeps the graphics processor busy with next to nothing of the processors: it was in no list.
TEST_F(ProcessMonitorTest, WhoIsAskedForIsListedHoweverLittleItDoes) {
    const Watched watched("while :; do block 1; sleep 0.02; done");
    const auto waitForRows = [&](std::size_t count) {
        return waitUntil([&] { return !watched.lists.empty() && watched.lists.back().size() == count; });
    };
    ASSERT_TRUE(waitForRows(2));
    watched.monitor->alsoList({12, 77, 78});
    ASSERT_TRUE(waitForRows(4)) << "12 is there already";
    const std::vector<ProcessSample>& list = watched.lists.back();
    EXPECT_EQ(list[2].pid(), 77);
    EXPECT_EQ(list[2].owningAppName(), "Tool");
    EXPECT_EQ(list[2].user(), "anna");
    EXPECT_EQ(list[2].memoryBytes, 5U);
    EXPECT_EQ(list[3].pid(), 78) << "also one of which the system tells no more than its name";
    watched.monitor->alsoList({});
    EXPECT_TRUE(waitForRows(2));
    EXPECT_TRUE(watched.table->isResting);
}

TEST_F(ProcessMonitorTest, FallsBackFromAProgramThatIsOfNoUse) {
    std::vector<std::unique_ptr<Watched>> all;
    for (const char* const script : {"", "exit 1", "exec sleep 1000", "trap '' TERM; exec sleep 1000",
                                     "while echo 'no block at all \377'; do :; done",
                                     // What does not decode must not pass for a stream that works.
                                     "if [ \"$2\" = 2 ]; then block 1; block 2; printf '14 \\377 1.0 4K\\n'; exit; fi\n"
                                     "exec sleep 1000"})
        all.push_back(std::make_unique<Watched>(script));
    for (const auto& watched : all) {
        ASSERT_TRUE(waitUntil([&] { return watched->hasFallenBack(); }));
        EXPECT_FALSE(watched->sources.back().byChoice);
        ASSERT_EQ(watched->lists.front().size(), 1U);
        EXPECT_EQ(watched->lists.back()[0].displayName(), "Tool") << "the fallback's rows get identities too";
        EXPECT_EQ(watched->monitor->unreadableCount(), 1);
    }
}

TEST_F(ProcessMonitorTest, FallsBackFromAStreamThatDiesOrFloods) {
    const std::string some = "[ \"$2\" != 2 ] || exit 1; block 1; block 2; block 3; ";
    const Watched dies(some + "exit 0");
    const Watched floods(some + "exec cat /dev/zero");
    ASSERT_TRUE(waitUntil([&] { return dies.hasFallenBack() && floods.hasFallenBack(); }));
    EXPECT_EQ(dies.loads.front(), 2) << "what was printed before is delivered";
    EXPECT_EQ(dies.sources, (std::vector<ProcessMonitor::Source>{{Kind::system}, {Kind::ownProcessesOnly, false}}));
}

TEST_F(ProcessMonitorTest, LinesOfAMegabyteAndAPathListThatHangsCostThemselvesOnly) {
    const Watched lines("[ \"$2\" != 2 ] || exit 1; long() { head -c 1048576 /dev/zero | tr '\\0' x; echo; }\n"
                        "block 1; long; block 2; long; long; block 3; exec sleep 1000");
    const Watched paths("block 1; block 2; block 3; exec sleep 1000", ProcessMonitor::Mode::automatic,
                        "exec sleep 1000");
    ASSERT_TRUE(waitUntil([&] { return !lines.lists.empty() && !paths.lists.empty(); }));
    EXPECT_EQ(lines.lists[0].size(), 2U);
    EXPECT_EQ(lines.loads[0], 2);
    EXPECT_EQ(paths.lists[0].at(0).displayName(), "ed");
}

TEST_F(ProcessMonitorTest, TheUsersChoiceStartsNoProgram) {
    const Watched watched("touch \"$0.ran\"; exit 1", ProcessMonitor::Mode::unprivileged);
    ASSERT_TRUE(waitUntil([&] { return watched.hasFallenBack(); }));
    EXPECT_EQ(watched.sources, (std::vector<ProcessMonitor::Source>{{Kind::ownProcessesOnly, true}}));
    EXPECT_FALSE(std::filesystem::exists(watched.folder.filePath("top.ran").toStdString()));
    EXPECT_FALSE(watched.table->isResting);
    watched.monitor->stop();
    EXPECT_TRUE(waitUntil([&] { return watched.table->isResting.load(); })) << "its files stay open after the stop";
}

TEST_F(ProcessMonitorTest, StartAndStopTenTimesLeaveNothingBehind) {
    Watched watched(healthy);
    // The first start makes what lives as long as the thread does, such as its child-process notifier.
    ASSERT_TRUE(waitUntil([&] { return !watched.lists.empty(); }));
    watched.monitor->stop();
    ASSERT_TRUE(waitUntil([] { return !hasChildren(); }));
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 10; ++i) {
        watched.monitor->start(1, 40);
        watched.monitor->stop();
    }
    watched.monitor->start(1, 40);
    watched.lists.clear();
    ASSERT_TRUE(waitUntil([&] { return !watched.lists.empty(); }));
    watched.monitor->stop();
    EXPECT_EQ(watched.monitor->source().kind, Kind::starting);
    ASSERT_TRUE(waitUntil([] { return !hasChildren(); })) << "no child is left";
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() == before; })) << "no descriptor is left";
    ASSERT_TRUE(waitUntil([&] { return watched.sources.back() == ProcessMonitor::Source{}; }));
    watched.lists.clear();
    watched.sources.clear();
    // Longer than the watchdog and many fallback intervals: a timer left behind would have spoken by now.
    EXPECT_FALSE(waitUntil([&] { return !watched.lists.empty() || !watched.sources.empty(); }, 900ms));
}

TEST_F(ProcessMonitorTest, WhatArrivesAfterTheStopIsNobodys) {
    Watched watched("", ProcessMonitor::Mode::unprivileged);
    std::this_thread::sleep_for(100ms); // many results are on their way, none is handled
    watched.monitor->stop();
    EXPECT_FALSE(waitUntil([&] { return !watched.lists.empty() || !watched.sources.empty(); }, 20ms));
}

TEST(ProcessMonitor, ModesAndTimeLimits) {
    using Mode = ProcessMonitor::Mode;
    for (const auto& [environment, setting, mode] : {std::tuple{"", "auto", Mode::automatic},
                                                     {"", "unprivileged", Mode::unprivileged},
                                                     {"auto", "unprivileged", Mode::automatic},
                                                     {"unprivileged", "auto", Mode::unprivileged},
                                                     {"UNPRIVILEGED", "unprivileged", Mode::unprivileged},
                                                     {"nonsense", "nonsense", Mode::automatic}})
        EXPECT_EQ(ProcessMonitor::mode(*environment ? std::optional<std::string>(environment) : std::nullopt, setting),
                  mode)
            << environment;
    const ProcessMonitor::Timing timing;
    EXPECT_EQ(timing.watchdog(1), 10s);
    EXPECT_EQ(timing.watchdog(5), 15s);
    EXPECT_EQ(timing.watchdog(7), 21s);
}

} // namespace
} // namespace vantoro
