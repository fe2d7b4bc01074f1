#include "Model/CommandLine.h"

#include "Model/Numbers.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace vantoro {

namespace {

struct Switch {
    std::string_view name;
    /// What its value is called; empty where it takes none.
    std::string_view value;
    std::string_view help;
};

constexpr std::array<Switch, 15> switches{{
    {"--explain", "", "watch this machine for a while, then say why it is warm or busy"},
    {"--record", "FILE", "write what this machine measures to FILE (.jsonl, or .jsonl.gz) until interrupted"},
    {"--replay", "FILE", "show the recording FILE in place of this machine; with --explain: conclude from it"},
    {"--seconds", "N", "with --explain or --record: sample for N seconds (--explain: 20)"},
    {"--json", "", "with --explain: print the whole conclusion as JSON"},
    {"--check", "", "print which sources of data work on this machine"},
    {"--dump", "", "print what the sensors offer and what is made of it"},
    {"--watch", "", "with --dump: print a line every 2 seconds, 12 times"},
    {"--simulate", "", "read simulated sensors in place of this machine's"},
    {"--simulate-fanless", "", "behave as on a machine without fans"},
    {"--check-for-updates", "", "look for a newer version right after the window has opened"},
    {"--install-update", "", "install a newer version without asking when one is found"},
    {"--debug-updates", "", "print what the updater does"},
    {"--help", "", "print this help and exit"},
    {"--version", "", "print the version and exit"},
}};

struct Variable {
    std::string_view name;
    std::string_view help;
};

constexpr std::array<Variable, 7> variables{{
    {"VANTORO_FIRST_FRAME", "\"1\": say when the window was first painted, for measuring"},
    {"VANTORO_INTERVAL", "seconds between samples, in place of the setting"},
    {"VANTORO_PROCESS_MODE", "\"auto\" or \"unprivileged\": where the process list comes from"},
    {"VANTORO_SIMULATE", "\"1\": the same as --simulate"},
    {"VANTORO_SIMULATE_FANLESS", "\"1\": the same as --simulate-fanless"},
    {"VANTORO_SYSFS_ROOT", "a folder in place of / when sensors are read, for diagnosis"},
    {"VANTORO_TOP", "a program to run in place of vantoro-top, for diagnosis"},
}};

/// A request to write text on the screen cannot be longer than this; somebody else's file name can.
std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 80;
    std::string safe(text.substr(0, longest));
    std::ranges::replace_if(
        safe, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return fmt::format("'{}{}'", safe, text.size() > longest ? "…" : "");
}

std::optional<double> parseSeconds(std::string_view text) {
    constexpr double longestSeconds = 24 * 86400; // what a millisecond timer can hold
    const std::optional<double> seconds = parseDecimal(text);
    return seconds && *seconds > 0 && *seconds <= longestSeconds ? seconds : std::nullopt;
}

/// What is wrong with switches that are each right by themselves; empty when nothing is.
std::string combinationFault(const CommandLine& line, bool explains, bool records) {
    if (explains && records)
        return "--explain and --record exclude each other";
    if (records && line.replayFile)
        return "--record and --replay exclude each other";
    if (line.simulate && line.replayFile)
        return "--simulate does not go with --replay: a recording has its own sensors";
    if (line.json && !explains)
        return "--json goes with --explain";
    if (line.seconds && line.replayFile)
        return "--seconds does not go with --replay: a recording has its own length";
    if (line.seconds && !explains && !records)
        return "--seconds goes with --explain or --record";
    return "";
}

} // namespace

std::variant<CommandLine, CommandLineError> parseCommandLine(const std::vector<std::string_view>& arguments) {
    CommandLine line;
    bool explains = false;
    bool records = false;
    bool dumps = false;
    bool checks = false;
    bool watches = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t equals = arguments[i].starts_with("--") ? arguments[i].find('=') : std::string_view::npos;
        const std::string_view name = arguments[i].substr(0, equals);
        const auto found = std::ranges::find(switches, name, &Switch::name);
        if (found == switches.end())
            return CommandLineError{fmt::format("unknown argument {}; --help lists the switches", quoted(name))};
        std::string_view value;
        if (equals != std::string_view::npos)
            value = arguments[i].substr(equals + 1);
        else if (!found->value.empty() && i + 1 < arguments.size())
            value = arguments[++i];
        if (found->value.empty() && equals != std::string_view::npos)
            return CommandLineError{fmt::format("{} takes no value", name)};
        if (!found->value.empty() && value.empty())
            return CommandLineError{fmt::format("{} needs {}", name, found->value)};

        if (name == "--help")
            return CommandLine{.action = CommandLine::Action::help};
        if (name == "--version")
            return CommandLine{.action = CommandLine::Action::version};
        if (name == "--explain") {
            explains = true;
        } else if (name == "--record") {
            records = true;
            line.recordFile = value;
        } else if (name == "--replay") {
            line.replayFile = value;
        } else if (name == "--json") {
            line.json = true;
        } else if (name == "--dump") {
            dumps = true;
        } else if (name == "--check") {
            checks = true;
        } else if (name == "--watch") {
            watches = true;
        } else if (name == "--simulate") {
            line.simulate = true;
        } else if (name == "--simulate-fanless") {
            line.simulateFanless = true;
        } else if (name == "--check-for-updates") {
            line.checkForUpdates = true;
        } else if (name == "--install-update") {
            line.installUpdate = true;
        } else if (name == "--debug-updates") {
            line.debugUpdates = true;
        } else if (name == "--seconds") {
            line.seconds = parseSeconds(value);
            if (!line.seconds)
                return CommandLineError{fmt::format("--seconds needs a number above 0, not {}", quoted(value))};
        }
    }
    if (std::string fault = combinationFault(line, explains, records); !fault.empty())
        return CommandLineError{std::move(fault)};
    // A dump is asked for when a machine puzzles: whatever else is asked for, it wins, and then the check.
    line.watch = dumps && watches;
    if (dumps)
        line.action = CommandLine::Action::dump;
    else if (checks)
        line.action = CommandLine::Action::check;
    else if (explains)
        line.action = CommandLine::Action::explain;
    else if (records)
        line.action = CommandLine::Action::record;
    return line;
}

std::string helpText() {
    std::string text = "vantoro says why this machine is warm or loud, and what can be done about it.\n\nSwitches:\n";
    for (const Switch& option : switches)
        text += fmt::format("  {:<21}{}\n", fmt::format("{} {}", option.name, option.value), option.help);
    text += "\nEnvironment:\n";
    for (const Variable& variable : variables)
        text += fmt::format("  {:<26}{}\n", variable.name, variable.help);
    text += "\nExit status: 0 done, 1 the system refused something, 2 bad arguments or a bad recording.\n";
    return text;
}

} // namespace vantoro
