// The real monitor with real child processes, good ones and bad ones.
#include "Model/ProcessMonitor.h"

#include "Support/EventLoop.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <QTemporaryDir>
#include <string>
#include <sys/wait.h>
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
    void listPids(std::vector<std::int32_t>& pids) override { pids = {77, 78}; }
    std::optional<ShortProcessRecord> shortRecord(std::int32_t /*pid*/) override {
        return ShortProcessRecord{.name = "sampled", .uid = 1};
    }
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override {
        return pid == 77 ? std::optional<TaskRecord>(TaskRecord{.residentBytes = 5}) : std::nullopt;
    }
    std::string path(std::int32_t /*pid*/) override { return "/opt/Tool.app/Contents/MacOS/Tool"; }
    std::optional<std::string> userName(std::uint32_t /*uid*/) override { return "anna"; }
};

std::vector<std::string> openDescriptors() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

bool hasChildren() {
    return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

class ProcessMonitorTest : public ::testing::Test {
protected:
    ProcessMonitorTest() {
        timing.watchdogFloor = 700ms;
        timing.watchdogIntervals = 0;
        timing.firstFallbackSample = 5ms;
        timing.fallbackSecond = 5ms;
        timing.pathListLimit = 500ms;
        timing.terminationGrace = 100ms;
    }

    ~ProcessMonitorTest() override { EXPECT_FALSE(hasChildren()); }

    /// A monitor over this script; what it reports is collected.
    void make(const std::string& script, ProcessMonitor::Mode mode = ProcessMonitor::Mode::automatic) {
        const std::string program = folder.filePath("top").toStdString();
        if (!script.empty()) {
            std::ofstream(program)
                << "#!/bin/sh\n"
                << "if [ \"$1\" = --paths ]; then echo '12 /opt/Editor.app/Contents/MacOS/Editor'; "
                   "exit; fi\n"
                << "block() { printf 'Processes: 2\\nLoad Avg: %s\\n\\nPID  COMMAND  %%CPU MEM\\n12   ed"
                   "       50.0 4K\\n' \"$1\"; }\n"
                << script << '\n';
            std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        }
        Platform platform;
        platform.processTable = std::make_shared<OneProcess>();
        platform.processStream = std::make_shared<ScriptedStream>(program);
        monitor = std::make_unique<ProcessMonitor>(
            platform, [mode] { return mode; }, timing);
        monitor->onUpdate = [this](const std::vector<ProcessSample>& list, const SystemLine& system) {
            lists.push_back(list);
            loads.push_back(system.cpu.loadAverage);
        };
        monitor->onSourceChange = [this](ProcessMonitor::Source source) { sources.push_back(source); };
    }

    bool fallsBack() {
        return waitUntil([this] { return !lists.empty() && monitor->source().kind == Kind::ownProcessesOnly; });
    }

    void expectFallback(const std::string& script) {
        make(script);
        monitor->start(1, 40);
        ASSERT_TRUE(fallsBack());
        EXPECT_FALSE(sources.back().byChoice);
        ASSERT_EQ(lists.back().size(), 1U);
        EXPECT_EQ(lists.back()[0].displayName(), "Tool") << "the fallback's rows get identities too";
        EXPECT_EQ(monitor->unreadableCount(), 1);
        monitor.reset();
    }

    QTemporaryDir folder;
    ProcessMonitor::Timing timing;
    std::vector<std::vector<ProcessSample>> lists;
    std::vector<double> loads;
    std::vector<ProcessMonitor::Source> sources;
    std::unique_ptr<ProcessMonitor> monitor;
};

constexpr const char* healthy = "if [ \"$2\" = 2 ]; then exit 1; fi\n"
                                "block 1; block 2; block 3; block 4; exec sleep 1000";

TEST_F(ProcessMonitorTest, DeliversTheStreamFromItsSecondBlockOn) {
    make(healthy);
    monitor->start(1, 40);
    ASSERT_TRUE(waitUntil([this] { return lists.size() == 2; })) << "the fourth block is not finished yet";
    EXPECT_EQ(loads, (std::vector<double>{2, 3}));
    EXPECT_EQ(sources, (std::vector<ProcessMonitor::Source>{{Kind::system}}));
    const ProcessSample& row = monitor->processes().at(0);
    EXPECT_EQ(row.rawName(), "ed");
    EXPECT_EQ(row.owningAppPath(), "/opt/Editor.app");
    EXPECT_EQ(row.cpuPercent, 50);
    EXPECT_TRUE(row.identity.sharesRecordWith(lists[0][0].identity)) << "texts are shared from tick to tick";
    EXPECT_EQ(monitor->unreadableCount(), 0);
    monitor.reset();
}

TEST_F(ProcessMonitorTest, AQuickLookDeliversBeforeTheStreamDoes) {
    make("if [ \"$2\" = 2 ]; then block 8; block 9; exit; fi\nblock 1; exec sleep 1000");
    monitor->start(1, 40);
    ASSERT_TRUE(waitUntil([this] { return !lists.empty(); }));
    EXPECT_EQ(loads, std::vector<double>{9});
    EXPECT_EQ(monitor->source().kind, Kind::system);
    monitor.reset();
}

TEST_F(ProcessMonitorTest, FallsBackFromAProgramThatIsMissing) {
    expectFallback("");
}
TEST_F(ProcessMonitorTest, FallsBackFromAProgramThatRefuses) {
    expectFallback("exit 1");
}
TEST_F(ProcessMonitorTest, FallsBackFromAProgramThatIsSilent) {
    expectFallback("exec sleep 1000");
}
TEST_F(ProcessMonitorTest, FallsBackFromAProgramThatPrintsGarbage) {
    expectFallback("while echo 'no block at all \377'; do :; done");
}
TEST_F(ProcessMonitorTest, FallsBackFromAProgramThatIgnoresBeingTold) {
    expectFallback("trap '' TERM; exec sleep 1000");
}

TEST_F(ProcessMonitorTest, FallsBackWhenTheStreamDiesAndNeverReturns) {
    make("if [ \"$2\" = 2 ]; then exit 1; fi\nblock 1; block 2; block 3; exit 0");
    monitor->start(1, 40);
    ASSERT_TRUE(fallsBack());
    EXPECT_EQ(loads.front(), 2) << "what was printed before is delivered";
    EXPECT_EQ(sources, (std::vector<ProcessMonitor::Source>{{Kind::system}, {Kind::ownProcessesOnly, false}}));
    monitor.reset();
}

TEST_F(ProcessMonitorTest, LinesOfAMegabyteCostThemselvesOnly) {
    make("if [ \"$2\" = 2 ]; then exit 1; fi\nlong() { head -c 1048576 /dev/zero | tr '\\0' x; echo; }\n"
         "block 1; long; block 2; long; long; block 3; exec sleep 1000");
    monitor->start(1, 40);
    ASSERT_TRUE(waitUntil([this] { return !lists.empty(); }));
    EXPECT_EQ(lists[0].size(), 1U);
    EXPECT_EQ(loads[0], 2);
    monitor.reset();
}

TEST_F(ProcessMonitorTest, AStreamThatFloodsIsLeft) {
    make("if [ \"$2\" = 2 ]; then exit 1; fi\nblock 1; block 2; block 3; exec cat /dev/zero");
    monitor->start(1, 40);
    ASSERT_TRUE(fallsBack());
    monitor.reset();
}

TEST_F(ProcessMonitorTest, APathListThatHangsCostsPathsOnly) {
    make("");
    const std::string program = folder.filePath("top").toStdString();
    std::ofstream(program) << "#!/bin/sh\nif [ \"$1\" = --paths ]; then exec sleep 1000; fi\n"
                              "for i in 1 2 3; do printf 'Processes: 1\\nPID  COMMAND\\n12   ed\\n'; done; "
                              "exec sleep 1000\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    monitor->start(1, 40);
    ASSERT_TRUE(waitUntil([this] { return !lists.empty(); }));
    EXPECT_EQ(lists[0].at(0).displayName(), "ed");
    monitor.reset();
}

TEST_F(ProcessMonitorTest, TheUsersChoiceStartsNoProgram) {
    make("touch \"$0.ran\"; exit 1", ProcessMonitor::Mode::unprivileged);
    monitor->start(1, 40);
    ASSERT_TRUE(fallsBack());
    EXPECT_EQ(sources, (std::vector<ProcessMonitor::Source>{{Kind::ownProcessesOnly, true}}));
    EXPECT_FALSE(std::filesystem::exists(folder.filePath("top.ran").toStdString()));
    monitor.reset();
}

TEST_F(ProcessMonitorTest, StartAndStopTenTimesLeaveNothingBehind) {
    make(healthy);
    // The first start makes what lives as long as the thread does, such as its child-process notifier.
    monitor->start(1, 40);
    ASSERT_TRUE(waitUntil([this] { return !lists.empty(); }));
    monitor->stop();
    ASSERT_TRUE(waitUntil([] { return !hasChildren(); }));
    const std::vector<std::string> before = openDescriptors();
    for (int i = 0; i < 10; ++i) {
        monitor->start(1, 40);
        monitor->stop();
    }
    monitor->start(1, 40);
    lists.clear();
    ASSERT_TRUE(waitUntil([this] { return !lists.empty(); }));
    monitor->stop();
    EXPECT_EQ(monitor->source().kind, Kind::starting);
    ASSERT_TRUE(waitUntil([] { return !hasChildren(); })) << "no child is left";
    EXPECT_TRUE(waitUntil([&before] { return openDescriptors().size() == before.size(); })) << "no descriptor is left";
    lists.clear();
    sources.clear();
    // Longer than the watchdog and many fallback intervals: a timer left behind would have spoken by now.
    EXPECT_FALSE(waitUntil([this] { return !lists.empty() || !sources.empty(); }, 900ms));
    monitor.reset();
}

TEST(ProcessMonitor, ModesAndTimeLimits) {
    using Mode = ProcessMonitor::Mode;
    EXPECT_EQ(ProcessMonitor::mode({}, "auto"), Mode::automatic);
    EXPECT_EQ(ProcessMonitor::mode({}, "unprivileged"), Mode::unprivileged);
    EXPECT_EQ(ProcessMonitor::mode("auto", "unprivileged"), Mode::automatic);
    EXPECT_EQ(ProcessMonitor::mode("unprivileged", "auto"), Mode::unprivileged);
    EXPECT_EQ(ProcessMonitor::mode("UNPRIVILEGED", "unprivileged"), Mode::unprivileged);
    EXPECT_EQ(ProcessMonitor::mode("nonsense", "nonsense"), Mode::automatic);
    const ProcessMonitor::Timing timing;
    EXPECT_EQ(timing.watchdog(1), 10s);
    EXPECT_EQ(timing.watchdog(5), 15s);
    EXPECT_EQ(timing.watchdog(7), 21s);
}

} // namespace
} // namespace vantoro
