#include "Model/CommandLine/CommandLine.h"

#include "Model/CommandLine/CommandLineTable.h"
#include "Model/Text/Numbers.h"
#include "Model/Text/TerminalText.h"

#include <algorithm>
#include <fmt/format.h>

namespace vantoro {

namespace {

/// A request to write text on the screen cannot be longer than this; somebody else's file name can.
std::string asTyped(std::string_view text) {
    return fmt::format("'{}'", shortened(terminalText(text), longestShownName));
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
    const auto switches = commandLineSwitches();
    CommandLine line;
    bool explains = false;
    bool records = false;
    bool dumps = false;
    bool checks = false;
    bool watches = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t equals = arguments[i].starts_with("--") ? arguments[i].find('=') : std::string_view::npos;
        const std::string_view name = arguments[i].substr(0, equals);
        const auto found = std::ranges::find(switches, name, &CommandLineSwitch::name);
        if (found == switches.end())
            return CommandLineError{fmt::format("unknown argument {}; --help lists the switches", asTyped(name))};
        const bool takesValue = found->value != CommandLineSwitch::Value::none;
        std::string_view value;
        if (equals != std::string_view::npos)
            value = arguments[i].substr(equals + 1);
        else if (takesValue && i + 1 < arguments.size())
            value = arguments[++i];
        if (!takesValue && equals != std::string_view::npos)
            return CommandLineError{fmt::format("{} takes no value", name)};
        if (takesValue && value.empty())
            return CommandLineError{fmt::format("{} needs {}", name, found->valueName)};
        // Far likelier a value that was forgotten than a file of that name.
        if (takesValue && value.starts_with("--"))
            return CommandLineError{fmt::format(
                "{} needs {}, and {} looks like a switch{}", name, found->valueName, asTyped(value),
                found->value == CommandLineSwitch::Value::file ? "; a file of that name is given with ./ before it"
                                                               : "")};

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
                return CommandLineError{fmt::format("--seconds needs a number above 0, not {}", asTyped(value))};
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
    std::string text = fmt::format("vantoro {}.\n\nSwitches:\n", programPurpose());
    for (const CommandLineSwitch& option : commandLineSwitches())
        text += fmt::format("  {:<21}{}\n", fmt::format("{} {}", option.name, option.valueName), option.help);
    text += "\nEnvironment:\n";
    for (const EnvironmentVariable& variable : environmentVariables())
        text += fmt::format("  {:<26}{}\n", variable.name, variable.help);
    text += "\nExit status:\n";
    for (const ExitCode& exit : exitCodes())
        text += fmt::format("  {:<3}{}\n", exit.code, exit.help);
    return text;
}

} // namespace vantoro
