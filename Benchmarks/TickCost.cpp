// vantoro_tick_cost MACHINE SNAPSHOTS: what one tick costs with all sensors of an unpacked recorded machine and a
// history of so many snapshots, as a multiple of what it cannot do without: the bare reading of the same files, and the
// delivery of the process list. Medians of this thread's CPU time over many rounds; within a round all take turns, so
// that whatever else the machine does meets all of them alike.
//
// "tick": SensorHub::tick. "delivery": the same of a second hub in the same state but without any source of sensors: it
// puts the same 40 rows into a snapshot and the history, and evaluates and publishes that. "bare": one pread of each of
// the machine's files that the first hub keeps open, each of which it reads once in a tick.
// "measure": SensorHub::measure alone, beside the bare reading of its files and the measure of the hub without sensors,
// which does no more than copy the 40 rows. None of the model's own work dilutes this ratio.
// Parsing the process list is part of none of them.

#include "CSensors/cpufreq.h"
#include "CSensors/ioreport.h"
#include "CSensors/smc.h"
#include "FullHistory.h"
#include "Model/Live/SensorHub.h"
#include "Model/Live/Settings.h"
#include "Model/Readers/CoreMonitor.h"
#include "Model/Readers/GPUPowerSampler.h"
#include "Model/Readers/SMCReader.h"
#include "Platform/Linux/Power/LinuxEnergyReport.h"
#include "Platform/Linux/Power/LinuxStrain.h"
#include "Platform/Linux/Processor/LinuxProcessors.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Linux/Sensors/LinuxThermalState.h"
#include "Platform/Posix/Clocks.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <QCoreApplication>
#include <QTemporaryDir>
#include <string>
#include <unistd.h>
#include <vector>

using namespace vantoro;

namespace {

constexpr double tickSeconds = 2;
constexpr int rounds = 2000;

/// The rounds follow each other at once, but some readings are kept for a moment: each round puts this clock on.
std::atomic<double> lead = 0;

double readAheadSeconds() {
    return lead + vantoro::monotonicSeconds();
}

double threadMicroseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// As many processes as the hub asks for, from busy to idle.
class FortyProcesses : public ProcessTable {
public:
    void listPids(std::vector<std::int32_t>& pids) override {
        for (std::int32_t pid = 1; pid <= SensorHub::processRows; ++pid)
            pids.push_back(pid);
    }
    std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) override {
        return ShortProcessRecord{.name = "application-" + std::to_string(pid)};
    }
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override {
        const double seconds = readAheadSeconds() / (2.0 * pid);
        return TaskRecord{.residentBytes = 1 << 24, .userNanoseconds = static_cast<std::uint64_t>(seconds * 1e9)};
    }
    std::string path(std::int32_t pid) override { return "/usr/lib/applications/application-" + std::to_string(pid); }
    std::optional<std::string> userName(std::uint32_t) override { return "somebody"; }
};

Platform recordedPlatform(const std::string& root) {
    const auto lane = std::make_shared<SlowLane>(readAheadSeconds);
    const auto counters = std::make_shared<ThrottleCounters>(root, lane);
    return {.smcService = std::make_shared<HwmonSMCService>(root, lane, nullptr),
            .energyReport = std::make_shared<LinuxEnergyReport>(root, lane, nullptr),
            .processors = std::make_shared<LinuxProcessors>(root, lane),
            .thermalState = std::make_shared<LinuxThermalState>(root, lane, counters),
            .strain = std::make_shared<LinuxStrain>(root, lane, nullptr, counters)};
}

SensorSources allSources(const Platform& platform) {
    smc_use(platform.smcService);
    cpufreq_use(platform.frequencyTables, platform.stateReport);
    ior_use(platform.energyReport);
    return {.sensors =
                std::make_shared<SMCReader>(SMCReader::Options::of(platform.smcService, [](int /*milliseconds*/) {})),
            .cores = std::make_shared<CoreMonitor>(platform.processors),
            .gpu = std::make_shared<GPUPowerSampler>(readAheadSeconds)};
}

/// A hub that has its process list and a history of `snapshots`.
std::unique_ptr<SensorHub> readyHub(Platform platform, SensorSources sources, const Settings& settings,
                                    std::size_t snapshots) {
    platform.processTable = std::make_shared<FortyProcesses>();
    HubEnvironment environment = HubEnvironment::ofThisProcess();
    environment.processMode = "unprivileged";
    environment.processTiming.firstFallbackSample = std::chrono::milliseconds(20);
    environment.now = [now = 1e9 + tickSeconds * static_cast<double>(snapshots)]() mutable {
        return now += tickSeconds;
    };
    auto hub = std::make_unique<SensorHub>(platform, std::move(sources), settings, environment);
    benchmarks::fill(hub->history(), tickSeconds, snapshots, History::processesPerSample);
    hub->startProcesses();
    while (!hub->processesReady())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return hub;
}

/// Those of this process's descriptors that belong to files below the folder.
std::vector<int> descriptorsBelow(const std::filesystem::path& folder) {
    std::vector<int> descriptors;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry, error).string().starts_with(folder.string() + "/"))
            descriptors.push_back(std::atoi(entry.path().filename().c_str()));
    }
    return descriptors;
}

class Times {
public:
    template <typename Work>
    void add(const Work& work) {
        const double begun = threadMicroseconds();
        work();
        all_.push_back(threadMicroseconds() - begun);
    }
    double median() const {
        std::vector<double> ordered = all_;
        std::ranges::nth_element(ordered, ordered.begin() + rounds / 2);
        return ordered[rounds / 2];
    }

private:
    std::vector<double> all_;
};

void readBare(const std::vector<int>& files) {
    for (const int file : files) {
        char room[4096];
        if (::pread(file, room, sizeof room, 0) < 0)
            std::exit(EXIT_FAILURE);
    }
}

void print(const char* what, const Times& whole, const std::vector<int>& files, const Times& bare,
           const Times& delivery) {
    fmt::print("{} ratio {:.2f} files {} us {:.1f} bare {:.1f} delivery {:.1f}\n", what,
               whole.median() / (bare.median() + delivery.median()), files.size(), whole.median(), bare.median(),
               delivery.median());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: vantoro_tick_cost MACHINE SNAPSHOTS\n", stderr);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const Settings settings(folder.filePath("settings.ini").toStdString());
    const std::filesystem::path root = std::filesystem::canonical(argv[1]);
    const auto snapshots = static_cast<std::size_t>(std::strtoul(argv[2], nullptr, 10));
    const Platform platform = recordedPlatform(root.string());
    const auto hub = readyHub(platform, allSources(platform), settings, snapshots);
    const auto hubWithoutSensors = readyHub({}, {}, settings, snapshots);
    const auto putClockOn = [] { lead = lead + tickSeconds; };
    double now = 0;
    for (int time = 0; time < 10; ++time) { // opens the files, and proves them quick
        putClockOn();
        hub->measure(++now);
    }
    const std::vector<int> measuredFiles = descriptorsBelow(root);
    for (int time = 0; time < 10; ++time) {
        putClockOn();
        hub->tick();
    }
    const std::vector<int> files = descriptorsBelow(root);

    Times bareMeasure;
    Times rows;
    Times measure;
    Times bare;
    Times delivery;
    Times tick;
    for (int round = 0; round < rounds; ++round) {
        putClockOn();
        bareMeasure.add([&] { readBare(measuredFiles); });
        rows.add([&] { hubWithoutSensors->measure(++now); });
        measure.add([&] { hub->measure(++now); });
        putClockOn();
        bare.add([&] { readBare(files); });
        delivery.add([&] { hubWithoutSensors->tick(); });
        tick.add([&] { hub->tick(); });
    }
    print("tick", tick, files, bare, delivery);
    print("measure", measure, measuredFiles, bareMeasure, rows);
    return EXIT_SUCCESS;
}
