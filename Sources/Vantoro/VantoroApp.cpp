// The program's entry point and its composition root: the only place that names a concrete platform.

#include "CSensors/cpufreq.h"
#include "CSensors/ioreport.h"
#include "CSensors/smc.h"
#include "Model/CapabilityCheck.h"
#include "Model/CommandLine.h"
#include "Model/CoreMonitor.h"
#include "Model/ExplainCommand.h"
#include "Model/GPUPowerSampler.h"
#include "Model/RecordCommand.h"
#include "Model/SensorDump.h"
#include "Model/SensorHub.h"
#include "Model/Settings.h"
#include "Model/SMCReader.h"
#include "Platform/CurrentPlatform.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <QCoreApplication>
#include <string_view>
#include <thread>
#include <vector>

using namespace vantoro;

namespace {

constexpr int usageFault = 2;

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void pauseFor(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

/// Line by line, so that a table over time is seen as it grows.
void printLine(std::string_view line) {
    fmt::print("{}\n", line);
    std::fflush(stdout);
}

/// The platform that the command line and the environment ask for, with the devices' functions told to use it.
Platform choosePlatform(const CommandLine& /*line*/) {
    Platform platform = currentPlatform(QCoreApplication::applicationDirPath().toStdString());
    smc_use(platform.smcService);
    cpufreq_use(platform.frequencyTables, platform.stateReport);
    ior_use(platform.energyReport);
    return platform;
}

SMCReader::Options readerOptions(const CommandLine& line, const Platform& platform) {
    return {.simulatesFanless = line.simulateFanless || simulatesFanless({}, std::getenv("VANTORO_SIMULATE_FANLESS")),
            .trust = platform.smcService ? platform.smcService->trust() : SensorTrust::manyAndNoisy,
            .pause = pauseFor};
}

/// What the platform cannot tell has no reader.
SensorSources sensorSources(const CommandLine& line, const Platform& platform) {
    return {.sensors = platform.smcService ? std::make_shared<SMCReader>(readerOptions(line, platform)) : nullptr,
            .cores = platform.processors ? std::make_shared<CoreMonitor>(platform.processors) : nullptr,
            .gpu = platform.energyReport ? std::make_shared<GPUPowerSampler>(monotonicSeconds) : nullptr};
}

void dumpSensors(const CommandLine& line, const Platform& platform) {
    constexpr int watchedSamples = 12;
    constexpr double watchedSeconds = 2.0;
    if (line.watch)
        SensorDump::watch(watchedSamples, watchedSeconds, readerOptions(line, platform), printLine);
    else
        SensorDump::run(readerOptions(line, platform), printLine);
}

void checkCapabilities(const CommandLine& line, const Platform& platform, const HubEnvironment& environment,
                       const Settings& settings) {
    CapabilityCheck(
        platform, {.print = printLine,
                   .reader = readerOptions(line, platform),
                   .now = monotonicSeconds,
                   .mode = [&] { return ProcessMonitor::mode(environment.processMode, settings.processMonitorMode()); },
                   .timing = environment.processTiming})
        .run();
}

int runOnThisMachine(const CommandLine& line, int argc, char** argv) {
    // Without it Qt brings in a second event loop library, whose wake-ups and memory a terminal command has no use for.
    ::setenv("QT_NO_GLIB", "1", 0);
    const QCoreApplication application(argc, argv);
    const Settings settings;
    const HubEnvironment environment = HubEnvironment::ofThisProcess();
    const Platform platform = choosePlatform(line);
    if (line.action == CommandLine::Action::dump) {
        dumpSensors(line, platform);
        return EXIT_SUCCESS;
    }
    if (line.action == CommandLine::Action::check) {
        checkCapabilities(line, platform, environment, settings);
        return EXIT_SUCCESS;
    }
    SensorHub hub(platform, sensorSources(line, platform), settings, environment);
    if (line.action == CommandLine::Action::record)
        return recordThisMachine(line, hub, timerInterval(environment.interval, settings.sampleInterval()));
    return explainThisMachine(line, hub);
}

int run(const CommandLine& line, int argc, char** argv) {
    switch (line.action) {
    case CommandLine::Action::help:
        fmt::print("{}", helpText());
        return EXIT_SUCCESS;
    case CommandLine::Action::version:
        fmt::print("vantoro {}\n", VANTORO_VERSION);
        return EXIT_SUCCESS;
    case CommandLine::Action::window:
        fmt::print(stderr, "vantoro: the window is not built yet; --explain answers in the terminal (see --help)\n");
        return usageFault;
    case CommandLine::Action::explain:
        if (line.replayFile) {
            const Settings settings;
            const SettingsFormatContext context(settings);
            return explainRecording(line, Format(context));
        }
        return runOnThisMachine(line, argc, argv);
    case CommandLine::Action::record:
    case CommandLine::Action::dump:
    case CommandLine::Action::check:
        return runOnThisMachine(line, argc, argv);
    }
    return usageFault;
}

} // namespace

int main(int argc, char** argv) {
    const auto line = parseCommandLine(std::vector<std::string_view>(argv + (argc > 0 ? 1 : 0), argv + argc));
    if (const CommandLineError* error = std::get_if<CommandLineError>(&line)) {
        fmt::print(stderr, "vantoro: {}\n", error->reason);
        return usageFault;
    }
    return run(std::get<CommandLine>(line), argc, argv);
}
