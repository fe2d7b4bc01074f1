#include "Model/Commands/CapabilityCheck.h"

#include "CSensors/cpufreq.h"
#include "CSensors/ioreport.h"
#include "Support/ScriptedSensors.h"

#include <QTemporaryDir>

namespace vantoro {
namespace {

using namespace std::chrono_literals;
using namespace testing;
using Kind = ProcessMonitor::Source::Kind;

/// The first sample finds no CPU time used; each later one finds every process that much further.
class WorkingProcesses : public ProcessTable {
public:
    std::vector<std::pair<std::string, int>> namesAndMilliseconds;

    void listPids(std::vector<std::int32_t>& pids) override {
        ++samples_;
        for (std::size_t i = 0; i < namesAndMilliseconds.size(); ++i)
            pids.push_back(static_cast<std::int32_t>(i + 1));
    }
    std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) override {
        return ShortProcessRecord{.name = at(pid).first};
    }
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override {
        if (at(pid).first == "hidden")
            return std::nullopt;
        return TaskRecord{.userNanoseconds = static_cast<std::uint64_t>(samples_ * at(pid).second) * 1'000'000};
    }
    std::string path(std::int32_t /*pid*/) override { return ""; }
    std::optional<std::string> userName(std::uint32_t /*uid*/) override { return "anna"; }

private:
    const std::pair<std::string, int>& at(std::int32_t pid) {
        return namesAndMilliseconds.at(static_cast<std::size_t>(pid - 1));
    }
    int samples_ = 0;
};

class FixedStatistics : public SystemStatistics {
public:
    std::optional<HostTicks> hostTicks() override {
        ticks_.user += 30;
        ticks_.idle += 70;
        return ticks_;
    }
    std::optional<VirtualMemory> virtualMemory() override {
        return VirtualMemory{.pageBytes = 1, .wiredPages = 20, .compressorPages = 25, .swapOuts = 1};
    }
    std::optional<LoadAverages> loadAverages() override { return std::nullopt; }
    PhysicalMemory physicalMemory() override { return {.totalBytes = 100, .availableBytes = {}}; }

private:
    HostTicks ticks_;
};

class NamedStream : public ProcessStream {
public:
    std::string program;
    ProgramCommand stream(int /*samples*/, int /*intervalSeconds*/, int /*rows*/) const override {
        return {program, {}};
    }
    ProgramCommand pathList() const override { return {program, {"--paths"}}; }
    std::string streamName() const override { return "stream"; }
    std::string pathListName() const override { return "list"; }
};

class CapabilityCheckTest : public ::testing::Test {
protected:
    ~CapabilityCheckTest() override {
        smc_use(nullptr);
        ior_use(nullptr);
        cpufreq_use(nullptr, nullptr);
    }

    std::string script(const std::string& text) {
        const std::string program = folder.filePath("program").toStdString();
        std::ofstream(program) << "#!/bin/sh\n" << text << '\n';
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return program;
    }

    std::string run(std::chrono::milliseconds monitorTime) {
        std::string text;
        double now = 0;
        ProcessMonitor::Timing timing;
        timing.firstFallbackSample = 5ms;
        CapabilityCheck(platform, {.print = [&](std::string_view line) { text += std::string(line) + '\n'; },
                                   .reader = {.pause = [&](int milliseconds) { now += milliseconds / 1e3; }},
                                   .now = [&] { return now; },
                                   .mode = [] { return ProcessMonitor::Mode::unprivileged; },
                                   .timing = timing,
                                   .monitorTime = monitorTime})
            .run();
        return text;
    }

    QTemporaryDir folder;
    Platform platform;
};

TEST_F(CapabilityCheckTest, AMachineWhereEverythingWorks) {
    const auto smc = std::make_shared<ScriptedSMC>();
    smc->setFamily("Tp", {45, 46, 47.25});
    smc->set("FNum", "ui8 ", {1});
    smc->setFloat("F0Ac", 1200);
    smc_use(smc);
    const auto energy = std::make_shared<ScriptedEnergy>();
    energy->channels = {{"GPU", "J", 1}};
    ior_use(energy);
    const auto processors = std::make_shared<ScriptedProcessors>();
    processors->processorCounts = {.performance = 4, .efficiency = 4};
    platform.processors = processors;
    const auto table = std::make_shared<WorkingProcesses>();
    table->namesAndMilliseconds = {
        {"idler", 2}, {"maker", 500}, {"é-worker", 50}, {"hidden", 9},
        {"a", 3},     {"b", 4},       {"c", 5},         {"a-name-of-more-than-28-bytes-is-whole", 600}};
    platform.processTable = table;
    platform.systemStatistics = std::make_shared<FixedStatistics>();
    const auto stream = std::make_shared<NamedStream>();
    stream->program = script("[ \"$1\" = --paths ] && echo '1 /sbin/init' || printf 'x\\nProcesses: 412 total \\n'");
    platform.processStream = stream;

    EXPECT_EQ(run(2s), R"(Vantoro capability check
────────────────────────────────────────────────────
✓ SMC (fans, temperatures, power)        5 keys · 1 fan · chip 47.2°C
✓ IOReport (GPU wattage)                 energy counter reading
✓ Per-core load and frequency            4P + 4E cores

✓ stream (every process)                 Processes: 412 total
✓ list (full process paths)              13 bytes of output
✓ Process syscalls (your own processes)  7 of 8 processes measurable
✓ System CPU and memory syscalls         30% busy · 60% memory pressure

  Busiest of yours right now:
    a-name-of-more-than-28-bytes-is-whole 120.0%
    maker                        100.0%
    é-worker                      10.0%
    c                              1.0%
    b                              0.8%

✓ Vantoro's process source               syscalls — by preference, in Settings
✓ Process list after 6 seconds           7 processes · 30% system CPU

Everything above marked ✓ works without admin rights.
If top and ps are blocked, Settings › Process monitoring
explains what the process list can still show.
)");
    EXPECT_EQ(smc->closed, 1);
}

TEST_F(CapabilityCheckTest, AMachineWhereNothingWorks) {
    const std::string text = run(50ms);
    EXPECT_EQ(text.find("✓"), text.rfind("✓")) << "only where the last lines explain it";
    EXPECT_NE(text.find(R"(✗ ps (full process paths)                not present on this Mac

  ↳ These are the only privileged things Vantoro uses, and
    both ship setuid-root. A refusal here is this Mac's
    management policy, not a fault in the app — it falls
    back to the syscalls below on its own.
✗ Process syscalls (your own processes)  0 of 0 processes measurable
✗ System CPU and memory syscalls         0% busy · 0% memory pressure

✗ Vantoro's process source               syscalls — by preference, in Settings
✗ Process list after 6 seconds           empty — this is the failure the fallback exists to prevent
)"),
              std::string::npos);
}

TEST_F(CapabilityCheckTest, AProgramIsTriedToItsEnd) {
    const std::tuple<const char*, ProgramTrial> cases[] = {
        {"echo some; echo; echo ' Processes: no'; echo 'Processes: 3'; echo 'Processes: 4'", {true, "Processes: 3"}},
        {"printf 'Processes: \\377\\n'", {true, "13 bytes of output"}},
        {"echo Processes: 1; exit 3", {false, "exited with status 3"}},
        {"echo complaint >&2", {false, "ran but produced no output"}},
        {"kill -9 $$", {false, "killed by a signal while running"}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(canRun({script(text), {}}, 20s), expected) << text;
    EXPECT_EQ(canRun({script("exec >&-; exec sleep 1000"), {}}, 300ms).detail, "did not finish in time");
    EXPECT_EQ(canRun({folder.filePath("none").toStdString(), {}}, 1s).detail, "not present on this Mac");
    const std::string program = script("");
    std::filesystem::permissions(program, std::filesystem::perms::owner_read);
    EXPECT_EQ(canRun({program, {}}, 1s).detail, "present, but this Mac will not let you execute it");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::ofstream(program) << "#!/no/such/interpreter\n";
    EXPECT_TRUE(canRun({program, {}}, 1s).detail.starts_with("cannot execute — "));
}

} // namespace
} // namespace vantoro
