// The program's entry point and its composition root: the only place that names a concrete platform.

#include "Model/CommandLine.h"
#include "Model/ExplainCommand.h"
#include "Model/RecordCommand.h"
#include "Model/SensorHub.h"
#include "Model/Settings.h"
#include "Platform/CurrentPlatform.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <QCoreApplication>
#include <string>
#include <string_view>
#include <vector>

using namespace vantoro;

namespace {

constexpr int usageFault = 2;

int print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0)
        return EXIT_SUCCESS;
    std::fputs("vantoro: the text could not be written\n", stderr);
    return EXIT_FAILURE;
}

int runOnThisMachine(const CommandLine& line, int argc, char** argv) {
    // Without it Qt brings in a second event loop library, whose wake-ups and memory a terminal command has no use for.
    ::setenv("QT_NO_GLIB", "1", 0);
    const QCoreApplication application(argc, argv);
    const Settings settings;
    const HubEnvironment environment = HubEnvironment::ofThisProcess();
    SensorHub hub(currentPlatform(QCoreApplication::applicationDirPath().toStdString()), {}, settings, environment);
    if (line.action == CommandLine::Action::record)
        return recordThisMachine(line, hub, timerInterval(environment.interval, settings.sampleInterval()));
    return explainThisMachine(line, hub);
}

int run(const CommandLine& line, int argc, char** argv) {
    switch (line.action) {
    case CommandLine::Action::help:
        return print(helpText());
    case CommandLine::Action::version:
        return print(fmt::format("vantoro {}\n", VANTORO_VERSION));
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
