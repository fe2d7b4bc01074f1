// What touches this machine: a sample of all its processes, and a whole tick.

#include "FullHistory.h"

#include "Model/SensorHub.h"
#include "Model/Settings.h"
#include "Model/UnprivilegedProcesses.h"
#include "Platform/CurrentPlatform.h"

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

/// With a history as full as it gets at the fastest rate.
void tickOfTheHub(benchmark::State& state) {
    const QTemporaryDir folder;
    const Settings settings(folder.filePath("settings.ini").toStdString());
    HubEnvironment environment = HubEnvironment::ofThisProcess();
    UnixSeconds now = 1e9 + 7200 * 0.25;
    environment.now = [&now] { return now += 0.25; };
    SensorHub hub(currentPlatform(""), {}, settings, environment);
    benchmarks::fill(hub.history(), 0.25, 7200, History::processesPerSample);
    for (auto _ : state)
        hub.tick();
}
BENCHMARK(tickOfTheHub)->Unit(benchmark::kMicrosecond)->Iterations(40);

} // namespace
} // namespace vantoro
