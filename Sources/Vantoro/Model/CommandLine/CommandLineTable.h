// The one list of what the program takes and gives on a command line: its switches, the variables it heeds and its exit
// codes. `--help`, the manual page and the shells' completions are made from it.
#pragma once

#include <span>
#include <string_view>

namespace vantoro {

struct CommandLineSwitch {
    /// What follows the switch; decides what a shell offers there.
    enum class Value { none, file, seconds };

    std::string_view name;
    Value value = Value::none;
    /// What its value is called; empty where it takes none.
    std::string_view valueName;
    std::string_view help;
};

struct EnvironmentVariable {
    std::string_view name;
    std::string_view help;
};

struct ExitCode {
    int code = 0;
    std::string_view help;
};

/// One sentence of what the program is for.
std::string_view programPurpose();

/// The ways to call the program: what follows its name, values in capitals.
std::span<const std::string_view> commandLineForms();
std::span<const CommandLineSwitch> commandLineSwitches();
std::span<const EnvironmentVariable> environmentVariables();
std::span<const ExitCode> exitCodes();

} // namespace vantoro
