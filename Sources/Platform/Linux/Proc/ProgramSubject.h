// What a program that only runs other people's work was started for: a script, a virtual machine, a game. Pure.
#pragma once

#include <string>
#include <string_view>

namespace vantoro {

/// The part behind the last "/".
std::string_view baseName(std::string_view path);

/// A shell that people type commands into.
bool isShell(std::string_view programName);

/// What a program for Windows runs in.
bool isWine(std::string_view programName);

/// What runs a whole machine.
bool isVirtualMachine(std::string_view programName);

/// Whether a program's arguments say more than its name.
bool hasSubject(std::string_view programName);

/// What the arguments of such a program (the text of /proc/PID/cmdline) say that it runs: an interpreter's script,
/// module, archive or class ("train.py", "http.server", "server.jar"), a virtual machine's or a container's name, the
/// path of a program for Windows. At most 200 bytes that steer no terminal, and of the arguments nothing else. Empty
/// when they do not say.
std::string subjectOf(std::string_view programName, std::string_view commandLine);

} // namespace vantoro
