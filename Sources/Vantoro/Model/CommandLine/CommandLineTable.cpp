#include "Model/CommandLine/CommandLineTable.h"

#include <array>

namespace vantoro {

namespace {

using Value = CommandLineSwitch::Value;

constexpr std::array<std::string_view, 5> forms{
    "[--replay FILE | --simulate] [--simulate-fanless]",
    "--explain [--seconds N | --replay FILE] [--json]",
    "--record FILE [--seconds N]",
    "--check | --dump [--watch]",
    "--help | --version",
};

constexpr std::array<CommandLineSwitch, 15> switches{{
    {"--explain", Value::none, "", "watch this machine for a while, then say why it is warm or busy"},
    {"--record", Value::file, "FILE",
     "write what this machine measures to FILE (.jsonl, or .jsonl.gz) until interrupted"},
    {"--replay", Value::file, "FILE",
     "show the recording FILE in place of this machine; with --explain: conclude from it"},
    {"--seconds", Value::seconds, "N", "with --explain or --record: sample for N seconds (--explain: 20)"},
    {"--json", Value::none, "", "with --explain: print the whole conclusion as JSON"},
    {"--check", Value::none, "", "print which sources of data work on this machine"},
    {"--dump", Value::none, "", "print what the sensors offer and what is made of it"},
    {"--watch", Value::none, "", "with --dump: print a line every 2 seconds, 12 times"},
    {"--simulate", Value::none, "", "read simulated sensors in place of this machine's"},
    {"--simulate-fanless", Value::none, "", "behave as on a machine without fans"},
    {"--check-for-updates", Value::none, "", "look for a newer version right after the window has opened"},
    {"--install-update", Value::none, "", "install a newer version without asking when one is found"},
    {"--debug-updates", Value::none, "", "print what the updater does"},
    {"--help", Value::none, "", "print this help and exit"},
    {"--version", Value::none, "", "print the version and exit"},
}};

constexpr std::array<EnvironmentVariable, 8> variables{{
    {"NO_COLOR", "set to anything: no emphasis in the terminal"},
    {"VANTORO_FIRST_FRAME", "\"1\": say when the window was first painted, for measuring"},
    {"VANTORO_INTERVAL", "seconds between samples, in place of the setting"},
    {"VANTORO_PROCESS_MODE", "\"auto\" or \"unprivileged\": where the process list comes from"},
    {"VANTORO_SIMULATE", "\"1\": the same as --simulate"},
    {"VANTORO_SIMULATE_FANLESS", "\"1\": the same as --simulate-fanless"},
    {"VANTORO_SYSFS_ROOT", "a folder in place of / when sensors are read, for diagnosis"},
    {"VANTORO_TOP", "a program to run in place of vantoro-top, for diagnosis"},
}};

constexpr std::array<ExitCode, 3> codes{{
    {0, "done"},
    {1, "the system refused something"},
    {2, "bad arguments or a bad recording"},
}};

} // namespace

std::string_view programPurpose() {
    return "says why this machine is warm or loud, and what can be done about it";
}

std::span<const std::string_view> commandLineForms() {
    return forms;
}

std::span<const CommandLineSwitch> commandLineSwitches() {
    return switches;
}

std::span<const EnvironmentVariable> environmentVariables() {
    return variables;
}

std::span<const ExitCode> exitCodes() {
    return codes;
}

} // namespace vantoro
