// The program's entry point and its composition root: the only place that names a concrete platform.

#include "CSensors/cpufreq.h"
#include "CSensors/ioreport.h"
#include "CSensors/smc.h"
#include "Model/CommandLine/CommandLine.h"
#include "Model/Commands/CapabilityCheck.h"
#include "Model/Commands/MeasuringCommands.h"
#include "Model/Commands/StandardOutput.h"
#include "Model/Live/InterruptWatcher.h"
#include "Model/Live/Log.h"
#include "Model/Live/Replay.h"
#include "Model/Live/SensorHub.h"
#include "Model/Live/Settings.h"
#include "Model/Readers/CoreMonitor.h"
#include "Model/Readers/GPUPowerSampler.h"
#include "Model/Readers/SensorDump.h"
#include "Model/Readers/SMCReader.h"
#include "Model/Updates/Updates.h"
#include "Platform/Platform.h"
#include "Platform/Posix/Clocks.h"
#include "Platform/QuietPainting.h"
#include "Platform/Simulated/SimulatedMac.h"
#include "Platform/UpdateEngine.h"
#include "ProgramIdentity.h"
#include "Views/Shared/Words.h"
#include "Views/Shell/Shell.h"
#include "Views/Shell/SingleInstance.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QPixmapCache>
#include <QTimer>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace vantoro;

namespace {

constexpr int usageFault = 2;

int print(const std::string& text) {
    StandardOutput output;
    output.text(text);
    return output.status();
}

void pauseFor(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

/// The environment's "1" asks for the same as the switch of that name.
bool isAsked(bool bySwitch, const char* variable) {
    const char* const value = std::getenv(variable);
    return bySwitch || (value != nullptr && std::string_view(value) == "1");
}

/// The platform that the command line asks for, with the devices' functions told to use it.
Platform choosePlatform(const CommandLine& line) {
    Platform platform = currentPlatform(QCoreApplication::applicationDirPath().toStdString());
    constexpr std::uint64_t noiseSeed = 1;
    if (line.simulate)
        platform = simulatedPlatform(platform, line.simulateFanless, monotonicSeconds, noiseSeed);
    smc_use(platform.smcService);
    cpufreq_use(platform.frequencyTables, platform.stateReport);
    ior_use(platform.energyReport);
    return platform;
}

SMCReader::Options readerOptions(const CommandLine& line, const Platform& platform) {
    SMCReader::Options options = SMCReader::Options::of(platform.smcService, pauseFor);
    options.simulatesFanless = line.simulateFanless;
    return options;
}

/// What the platform cannot tell has no reader.
SensorSources sensorSources(const CommandLine& line, const Platform& platform) {
    return {.sensors = platform.smcService ? std::make_shared<SMCReader>(readerOptions(line, platform)) : nullptr,
            .cores = platform.processors ? std::make_shared<CoreMonitor>(platform.processors) : nullptr,
            .gpu = platform.energyReport ? std::make_shared<GPUPowerSampler>(monotonicSeconds) : nullptr};
}

void dumpSensors(const CommandLine& line, const Platform& platform, StandardOutput& output) {
    constexpr int watchedSamples = 12;
    constexpr double watchedSeconds = 2.0;
    const auto unknown = platform.system == SystemKind::macos ? SensorDump::Unknown::zero : SensorDump::Unknown::said;
    SMCReader::Options options = readerOptions(line, platform);
    // Nobody waits for what nobody can read.
    options.pause = [&output](int milliseconds) {
        if (!output.hasFailed())
            pauseFor(milliseconds);
    };
    const auto printLine = [&output](std::string_view text) { output.line(text); };
    if (line.watch) {
        SensorDump::watch(watchedSamples, watchedSeconds, options, unknown, printLine);
        return;
    }
    // Counters and reasons show as the difference of two looks, clocks that are counted as that of the last two.
    constexpr int betweenMilliseconds = 250;
    CoreMonitor cores(platform.strain ? platform.processors : nullptr);
    const bool tellsGraphicsWork = platform.graphicsClients && platform.system != SystemKind::macos;
    if (tellsGraphicsWork)
        platform.graphicsClients->read();
    if (platform.strain) {
        platform.strain->read();
        cores.sample();
        options.pause(betweenMilliseconds);
        cores.sample();
    }
    SensorDump::run(options, unknown, printLine);
    if (platform.strain) {
        options.pause(betweenMilliseconds);
        cores.sample();
        SensorDump::strain(cores.cores(), platform.strain->read(), printLine);
    }
    if (tellsGraphicsWork)
        output.line("Graphics work for: " + SensorDump::graphicsWork(platform.graphicsClients->read()));
}

void checkCapabilities(const CommandLine& line, const Platform& platform, const HubEnvironment& environment,
                       const Settings& settings, StandardOutput& output) {
    CapabilityCheck(
        platform,
        {.print = [&output](std::string_view text) { output.line(text); },
         .reader = readerOptions(line, platform),
         .now = monotonicSeconds,
         .mode =
             [&] { return ProcessMonitor::mode(environment.processMode, settings.value(Setting::processMonitorMode)); },
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
    StandardOutput output;
    if (line.simulate && !line.json && line.action != CommandLine::Action::record)
        output.line("Simulated sensors; processes and load are this machine's own.");
    if (line.action == CommandLine::Action::dump) {
        dumpSensors(line, platform, output);
        return output.status();
    }
    if (line.action == CommandLine::Action::check) {
        checkCapabilities(line, platform, environment, settings, output);
        return output.status();
    }
    SensorHub hub(platform, sensorSources(line, platform), settings, environment);
    if (line.action == CommandLine::Action::record)
        return recordThisMachine(line, hub,
                                 timerInterval(environment.interval, settings.value(Setting::sampleInterval)));
    return explainThisMachine(line, hub);
}

/// The desktop's own complaints, in our words and without the abort that Qt makes of them.
void reportFatally(QtMsgType type, const QMessageLogContext& /*where*/, const QString& text) {
    if (type == QtFatalMsg) {
        complain(fmt::format("no window can be opened here ({}); --explain answers in the terminal",
                             text.section(u'\n', 0, 0).simplified().toStdString()));
        std::_Exit(EXIT_FAILURE);
    }
    if (type == QtCriticalMsg)
        complain(text.simplified().toStdString());
}

/// Says on standard error when the window was first painted, for who measures how long that takes.
class FirstFrameReport : public QObject {
protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // What was painted reaches the screen at the end of the event.
            QTimer::singleShot(0, this, [] { std::fprintf(stderr, "first frame %.4f\n", unixSeconds()); });
        }
        return false;
    }
};

SourceNames sourceNames(const Platform& platform) {
    SourceNames names{.system = platform.system,
                      .sensors = QString::fromStdString(platform.sources.sensors),
                      .reports = QString::fromStdString(platform.sources.reports),
                      .costsAreStated = platform.sources.costsAreStated};
    if (platform.processStream) {
        names.stream = QString::fromStdString(platform.processStream->streamName());
        names.streamForShort = names.stream.section(u'/', -1);
    }
    return names;
}

/// `relaunch` is told what to start in this program's place once it has ended.
std::shared_ptr<UpdateEngine> updateEngine(Settings& settings, std::function<void(const std::string&)> relaunch) {
    ProgramIdentity identity = programIdentity();
    return currentUpdateEngine(
        {.version = std::move(identity.version),
         .build = std::move(identity.build),
         .feed = std::move(identity.feed),
         .publicKey = std::move(identity.publicKey),
         .authorities = std::move(identity.authorities),
         .program = QCoreApplication::applicationFilePath().toStdString(),
         .recall = [&settings](std::string_view key) { return settings.storedText(key).value_or(""); },
         .remember =
             [&settings](std::string_view key, const std::string& text) {
                 text.empty() ? settings.forget(key) : settings.storeText(key, text);
             },
         .now = unixSeconds,
         .relaunch = std::move(relaunch)});
}

void startUpdates(Updates& updates, const CommandLine& line, const std::optional<std::string>& gaveWay) {
    Log::updatesEnabled = line.debugUpdates;
    if (gaveWay)
        updates.tellGaveWay(*gaveWay);
    else
        updates.consumeRelaunch();
    updates.setInstallsWhenFound(line.installUpdate);
    updates.start();
    if (line.checkForUpdates && updates.hasUpdater())
        updates.checkForUpdatesInBackground();
}

/// What this program was asked for except for the update, which is done.
std::vector<std::string> argumentsAfterUpdate(int argc, char** argv) {
    std::vector<std::string> arguments(argv, argv + argc);
    std::erase_if(arguments, [](const std::string& argument) {
        return argument == "--install-update" || argument == "--check-for-updates";
    });
    return arguments;
}

/// Starts the program in this one's place. Comes back only when it cannot.
int becomeProgram(const std::string& program, std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ::execv(program.c_str(), arguments.data());
    complain("the new version cannot be started: " + program);
    return EXIT_FAILURE;
}

/// `gaveWay`: the version that did not start and that this one took the place of again. `successor` is told what is to
/// be started once this has ended.
int runOnDesktop(const CommandLine& line, int argc, char** argv, const std::optional<std::string>& gaveWay,
                 std::string& successor) {
    qInstallMessageHandler(reportFatally);
    // What Qt would take of the command line for itself is not ours to offer.
    int own = std::min(argc, 1);
    std::optional<QuietPainting> quietPainting(std::in_place);
    const QApplication application(own, argv);
    quietPainting.reset();
    QApplication::setApplicationName("Vantoro");
    QApplication::setDesktopFileName("vantoro");
    QApplication::setWindowIcon(QIcon(":/icons/app.svg"));
    // Each picture of the menu bar's turning fan would be kept, up to 10 MB of them. What is drawn again and again has
    // caches of its own.
    constexpr int cachedKilobytes = 512;
    QPixmapCache::setCacheLimit(cachedKilobytes);
    installAccessibility();
    installCatalogue(QLocale::system(), {":/i18n", QCoreApplication::applicationDirPath() + "/../share/vantoro/i18n"});

    Settings settings;
    const SettingsFormatContext formatContext(settings);
    const Motion motion(formatContext);
    const bool replays = line.replayFile.has_value();
    const Simulation simulation = replays                ? Simulation::none
                                  : line.simulate        ? Simulation::sensors
                                  : line.simulateFanless ? Simulation::fanlessness
                                                         : Simulation::none;
    // A replay is another thing to look at, beside the program that watches this machine.
    SingleInstance instance(simulation != Simulation::none ? "vantoro-simulated" : "vantoro");
    if (!replays && instance.isSecond())
        return EXIT_SUCCESS;

    const Platform platform = choosePlatform(line);
    SensorHub hub(replays ? Platform() : platform, replays ? SensorSources() : sensorSources(line, platform), settings,
                  HubEnvironment::ofThisProcess());
    std::optional<Replay> replay;
    if (replays) {
        replay.emplace(hub, *line.replayFile);
        if (replay->error()) {
            complain(replay->error()->text(*line.replayFile));
            return usageFault;
        }
        if (replay->warning())
            complain(replay->warning()->text(*line.replayFile));
    }
    Updates updates(replays ? nullptr
                            : updateEngine(settings,
                                           [&successor](const std::string& program) {
                                               successor = program;
                                               QCoreApplication::quit();
                                           }),
                    settings, {.system = platform.system});
    Shell shell(hub, settings, motion,
                {.simulation = simulation,
                 .sources = sourceNames(platform),
                 .updates = replays ? nullptr : &updates,
                 .looks = platform.systemLooks,
                 .ownCost = platform.ownCost,
                 .menuBar = platform.hasWideMenuBar ? MenuBarArrangement::sideBySide : MenuBarArrangement::withinSquare,
                 .hasMenus = platform.hasMenuBarMenus,
                 .showAbout = platform.showAbout,
                 .start = [&] { replay ? replay->start() : hub.start(); }});
    QObject::connect(&instance, &SingleInstance::raised, &shell, &Shell::raiseWindow);
    const InterruptWatcher interrupt([] { QCoreApplication::quit(); });
    startUpdates(updates, line, gaveWay);
    shell.open();
    FirstFrameReport firstFrame;
    if (isAsked(false, "VANTORO_FIRST_FRAME"))
        shell.window()->installEventFilter(&firstFrame);
    return QApplication::exec();
}

int run(const CommandLine& line, int argc, char** argv) {
    switch (line.action) {
    case CommandLine::Action::help:
        return print(helpText());
    case CommandLine::Action::version:
        return print(fmt::format("vantoro {}\n", programIdentity().version));
    case CommandLine::Action::window: {
        const std::vector<std::string> arguments = argumentsAfterUpdate(argc, argv);
        std::optional<std::string> gaveWay;
        if (!line.replayFile) {
            const ProgramIdentity identity = programIdentity();
            gaveWay = beginStart({.build = identity.build, .arguments = arguments, .patience = identity.startPatience});
        }
        std::string successor;
        const int status = runOnDesktop(line, argc, argv, gaveWay, successor);
        if (status == EXIT_SUCCESS)
            startEnded();
        // Everything of this run is given back by now: its windows, its children, its place as the only instance. Who
        // asked this program to stop meant what would follow it too.
        return successor.empty() || InterruptWatcher::wasInterrupted() ? status : becomeProgram(successor, arguments);
    }
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
    // A file that may grow no further is complained of like any other that cannot be written.
    std::signal(SIGXFSZ, SIG_IGN);
    const auto line = parseCommandLine(std::vector<std::string_view>(argv + (argc > 0 ? 1 : 0), argv + argc));
    if (const CommandLineError* error = std::get_if<CommandLineError>(&line)) {
        complain(error->reason);
        return usageFault;
    }
    CommandLine asked = std::get<CommandLine>(line);
    asked.simulate = isAsked(asked.simulate, "VANTORO_SIMULATE");
    asked.simulateFanless = isAsked(asked.simulateFanless, "VANTORO_SIMULATE_FANLESS");
    return run(asked, argc, argv);
}
