// One desktop entry, in the format that freedesktop.org lays down. Pure.
#pragma once

#include "Platform/Linux/Proc/ProgramSubject.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

struct DesktopEntry {
    /// The name shown to people, without control characters.
    std::string name;
    /// The words of the command line, quotes resolved and field codes (%f, %U, …) left out. Empty when there is none or
    /// its quotes do not close.
    std::vector<std::string> command;
    bool terminal = false;
    /// "NoDisplay" or "Hidden".
    bool hidden = false;

    bool operator==(const DesktopEntry&) const = default;
};

/// None unless the group [Desktop Entry] is there, is of the type "Application" and has a name. A text with a NUL is
/// none.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view text);

/// The program that a command line is about: behind "env" and its assignments, and, for "flatpak run", the one named by
/// "--command=". Empty when the command does not say.
std::string_view commandProgram(const std::vector<std::string>& command);

/// A program that runs other people's programs, so that its name says nothing about which application it is.
bool isLauncher(std::string_view programName);

} // namespace vantoro
