// What the program is asked to do, from its arguments.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vantoro {

struct CommandLine {
    enum class Action { window, explain, record, dump, check, help, version };
    Action action = Action::window;
    /// With explain or record: how long to sample.
    std::optional<double> seconds;
    /// With record: the file to write.
    std::string recordFile;
    /// The recording to read in place of live sensors.
    std::optional<std::string> replayFile;
    /// With explain: machine-readable.
    bool json = false;
    /// With dump: a table over time in place of everything once.
    bool watch = false;
    /// Sensors made of arithmetic in place of this machine's.
    bool simulate = false;
    /// As if the machine had no fans.
    bool simulateFanless = false;
    /// In the window: an update that is found is installed without asking.
    bool installUpdate = false;
    /// In the window: look for an update right after the start.
    bool checkForUpdates = false;
    /// Print what the updater does.
    bool debugUpdates = false;

    bool operator==(const CommandLine&) const = default;
};

/// One line that says what is wrong with the arguments.
struct CommandLineError {
    std::string reason;

    bool operator==(const CommandLineError&) const = default;
};

/// The arguments without the program's own name.
std::variant<CommandLine, CommandLineError> parseCommandLine(const std::vector<std::string_view>& arguments);

/// What `--help` prints.
std::string helpText();

} // namespace vantoro
