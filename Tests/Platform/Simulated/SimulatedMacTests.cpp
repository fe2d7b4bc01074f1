#include "Model/Diagnosis/Diagnosis.h"
#include "Model/History/Tracking.h"
#include "Model/Readers/CoreMonitor.h"
#include "Model/Readers/GPUPowerSampler.h"
#include "Model/Readers/SMCReader.h"
#include "Model/Records/SystemWords.h"
#include "Platform/Simulated/SimulatedMac.h"
#include "Support/HistoryBuilder.h"
#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

/// A host whose processors are as busy as they are told to be.
class ScriptedHost : public SystemStatistics {
public:
    /// 4 processors at 100 ticks a second.
    void pass(double seconds, double load) {
        const auto all = static_cast<std::uint32_t>(std::lround(400 * seconds));
        const auto busy = static_cast<std::uint32_t>(std::lround(all * load));
        ticks.user += busy / 2;
        ticks.system += busy - busy / 2;
        ticks.idle += all - busy;
    }
    std::optional<HostTicks> hostTicks() override { return ticks; }
    std::optional<VirtualMemory> virtualMemory() override { return {}; }
    std::optional<LoadAverages> loadAverages() override { return {}; }
    PhysicalMemory physicalMemory() override { return {}; }

    // Both wrap early.
    HostTicks ticks{.user = 0xffffff00, .idle = 0xffffff00};
};

/// A simulated machine with the ordinary readers upon it.
class SimulatedMachineUnderTest {
public:
    explicit SimulatedMachineUnderTest(bool fanless, std::uint64_t seed = 7) {
        Platform host;
        host.systemStatistics = statistics;
        host.processors = processors;
        processors->processorCounts = {.performance = 6, .efficiency = 2, .all = 8};
        processors->ticks.resize(8);
        platform = simulatedPlatform(
            host, fanless, [this] { return seconds; }, seed);
        smc_use(platform.smcService);
        cpufreq_use(platform.frequencyTables, platform.stateReport);
        ior_use(platform.energyReport);
        reader =
            std::make_unique<SMCReader>(SMCReader::Options{.trust = platform.smcService->trust(), .pause = [](int) {}});
        cores = std::make_unique<CoreMonitor>(processors);
        gpu = std::make_unique<GPUPowerSampler>([this] { return seconds; });
    }
    ~SimulatedMachineUnderTest() {
        reader.reset();
        smc_use(nullptr);
        cpufreq_use(nullptr, nullptr);
        ior_use(nullptr);
    }
    SimulatedMachineUnderTest(const SimulatedMachineUnderTest&) = delete;
    SimulatedMachineUnderTest& operator=(const SimulatedMachineUnderTest&) = delete;

    Snapshot measure() {
        cores->sample();
        Snapshot snapshot{.timestamp = testing::builtNow + seconds,
                          .fans = reader->readFans(),
                          .temps = reader->readTemperatures(),
                          .power = reader->readPower(),
                          .thermalPressure = thermalPressure(platform.thermalState->rawValue()).value(),
                          .cooling = reader->cooling()};
        snapshot.power.gpuWatts = gpu->sampleWatts();
        snapshot.chipHeat = heat.smoothed(snapshot.timestamp, snapshot.temps.soc);
        return snapshot;
    }

    /// Ticks every two seconds under this load, as the program would.
    Snapshot run(double forSeconds, double load, History* history = nullptr,
                 const std::vector<ProcessSample>& processes = {}) {
        Snapshot snapshot;
        for (const double end = seconds + forSeconds; seconds < end;) {
            statistics->pass(2, load);
            seconds += 2;
            snapshot = measure();
            snapshot.processes = processes;
            snapshot.cpu.idlePercent = 100 - 100 * load;
            if (history)
                history->append(snapshot);
        }
        return snapshot;
    }

    double seconds = 5000;
    std::shared_ptr<ScriptedHost> statistics = std::make_shared<ScriptedHost>();
    std::shared_ptr<testing::ScriptedProcessors> processors = std::make_shared<testing::ScriptedProcessors>();
    Platform platform;
    std::unique_ptr<SMCReader> reader;
    std::unique_ptr<CoreMonitor> cores;
    std::unique_ptr<GPUPowerSampler> gpu;
    HeatSmoothing heat;
};

} // namespace

TEST(SimulatedMac, ItsSensorsPassForRealOnesAtRestAndUnderLoad) {
    for (const bool fanless : {false, true}) {
        SimulatedMachineUnderTest machine(fanless);
        EXPECT_EQ(machine.reader->cooling(), fanless ? Cooling::passive : Cooling::fans);
        EXPECT_EQ(machine.reader->reportsNoFans(), fanless);
        EXPECT_EQ(machine.reader->sensorCount(), 24 + 10 + 3 + 4);
        double last = 0;
        for (const double load : {0.01, 1.0}) {
            const Snapshot snapshot = machine.run(300, load);
            EXPECT_EQ(snapshot.fans.size(), fanless ? 0U : 2U);
            EXPECT_EQ(machine.reader->readDieSensors().size(), 24U) << "none is taken for a placeholder";
            EXPECT_EQ(machine.reader->readGPUSensors().size(), 10U);
            EXPECT_GT(snapshot.temps.soc, last + 10) << "and none is the last good value";
            EXPECT_GT(snapshot.temps.soc, snapshot.temps.socMean + 2);
            EXPECT_TRUE(snapshot.temps.gpu > 30 && snapshot.temps.gpu < snapshot.temps.soc) << snapshot.temps.gpu;
            EXPECT_TRUE(snapshot.temps.battery > 25 && snapshot.temps.battery < 40) << snapshot.temps.battery;
            EXPECT_TRUE(snapshot.temps.enclosure > 25 && snapshot.temps.enclosure < 45) << snapshot.temps.enclosure;
            EXPECT_TRUE(snapshot.power.gpuWatts > 0.05 && snapshot.power.gpuWatts < 2) << snapshot.power.gpuWatts;
            EXPECT_NEAR(snapshot.power.systemWatts, snapshot.power.adapterWatts + snapshot.power.batteryWatts, 1e-3);
            EXPECT_EQ(machine.cores->maxPerformanceMHz(), 3504);
            for (const Core& core : machine.cores->cores()) {
                EXPECT_GE(core.megahertz, 600) << core.index;
                EXPECT_EQ(core.megahertz > 2000, load > 0.5) << core.index;
            }
            last = snapshot.temps.soc;
        }
        EXPECT_EQ(machineName(machine.platform.machine->modelIdentifier(), machine.platform.machine->processorBrand()),
                  "Simulated Mac");
        EXPECT_EQ(simulatedPlatform(
                      {.system = SystemKind::gnuLinux}, false, [] { return 0.0; }, 1)
                      .machine->modelIdentifier(),
                  "Simulated computer");
    }
}

TEST(SimulatedMac, ALongCompileIsHeardAndNamed) {
    const DefaultFormatContext context;
    for (const bool fanless : {false, true}) {
        SimulatedMachineUnderTest machine(fanless);
        History history;
        machine.run(120, 0.02, &history, {testing::process(10, "editor", 3)});
        EXPECT_LE(DiagnosisEngine::evaluate(history, Format(context)).state, StressLevel::light);
        machine.run(
            1800, 0.97, &history,
            {testing::process(20, "cc1plus", 380, ProcessKind::commandLine), testing::process(10, "editor", 3)});
        const Verdict verdict = DiagnosisEngine::evaluate(history, Format(context));
        EXPECT_GE(verdict.state, StressLevel::heavy);
        ASSERT_TRUE(verdict.suspect);
        EXPECT_EQ(verdict.suspect->displayName, "cc1plus");
        EXPECT_EQ(history.snapshots().back().thermalPressure >= ThermalPressure::fair, fanless);
    }
}

} // namespace vantoro
