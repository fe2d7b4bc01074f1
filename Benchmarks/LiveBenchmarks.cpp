// What touches this machine: a sample of all its processes, and a whole tick.

#include "FullHistory.h"

#include "Model/Live/SensorHub.h"
#include "Model/Live/Settings.h"
#include "Model/Processes/UnprivilegedProcesses.h"
#include "Model/Readers/CoreMonitor.h"
#include "Model/Readers/GPUPowerSampler.h"
#include "Model/Readers/SMCReader.h"
#include "Platform/Platform.h"
#include "Platform/Posix/Clocks.h"
#include "Platform/Simulated/SimulatedMac.h"

#include <benchmark/benchmark.h>
#include <QTemporaryDir>

namespace vantoro {
namespace {

void sampleAllProcesses(benchmark::State& state) {
    const Platform platform = currentPlatform("");
    UnprivilegedProcesses sampler(platform.processTable, platform.systemStatistics);
    double seconds = 0;
    std::size_t processes = 0;
    for (auto _ : state)
        processes = sampler.sample(++seconds).processes.size();
    state.counters["perProcess"] = benchmark::Counter(static_cast<double>(state.iterations() * processes),
                                                      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(sampleAllProcesses)->Unit(benchmark::kMicrosecond);

/// Ticks with a history as full as it gets at the fastest rate.
void tick(benchmark::State& state, const Platform& platform, SensorSources sources) {
    const QTemporaryDir folder;
    const Settings settings(folder.filePath("settings.ini").toStdString());
    HubEnvironment environment = HubEnvironment::ofThisProcess();
    UnixSeconds now = 1e9 + 7200 * 0.25;
    environment.now = [&now] { return now += 0.25; };
    SensorHub hub(platform, std::move(sources), settings, environment);
    benchmarks::fill(hub.history(), 0.25, 7200, History::processesPerSample);
    for (auto _ : state)
        hub.tick();
}

SensorSources allSources(const Platform& platform) {
    smc_use(platform.smcService);
    cpufreq_use(platform.frequencyTables, platform.stateReport);
    ior_use(platform.energyReport);
    return {.sensors =
                std::make_shared<SMCReader>(SMCReader::Options::of(platform.smcService, [](int /*milliseconds*/) {})),
            .cores = std::make_shared<CoreMonitor>(platform.processors),
            .gpu = std::make_shared<GPUPowerSampler>(monotonicSeconds)};
}

void tickWithoutSensors(benchmark::State& state) {
    tick(state, currentPlatform(""), {});
}
BENCHMARK(tickWithoutSensors)->Unit(benchmark::kMicrosecond)->Iterations(40);

/// This machine's, or those of the recorded machine that VANTORO_SYSFS_ROOT names.
void tickWithSensors(benchmark::State& state) {
    const Platform platform = currentPlatform("");
    tick(state, platform, allSources(platform));
}
BENCHMARK(tickWithSensors)->Unit(benchmark::kMicrosecond)->Iterations(40);

void tickOnSimulatedMac(benchmark::State& state) {
    const Platform platform = simulatedPlatform(currentPlatform(""), false, monotonicSeconds, 1);
    tick(state, platform, allSources(platform));
}
BENCHMARK(tickOnSimulatedMac)->Unit(benchmark::kMicrosecond)->Iterations(40);

} // namespace
} // namespace vantoro
