// What a program that only runs other people's work was started for: a script, a virtual machine, a game. Pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

/// The part behind the last "/".
std::string_view baseName(std::string_view path);

/// A shell that people type commands into.
bool isShell(std::string_view programName);

/// Whether a shell's arguments (the text of /proc/PID/cmdline) leave it to take commands from whoever types them: no
/// script, no command line, nothing to be read to its end.
bool takesCommands(std::string_view commandLine);

/// Whether a program does nothing but start another and wait for it, as sudo and timeout do.
bool isWrapper(std::string_view programName);

/// What lets people and their commands in: what it starts is nobody else's work.
bool isDoor(std::string_view programName);

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

/// What a process is called where its path does not say it best: by what it runs, or without a wrapper's marks.
std::optional<std::string> nameOfWork(std::string_view executablePath, std::string_view subject);

/// The executable's path in the text of /proc/PID/cmdline: the first argument if it is an absolute path, without the
/// arguments that a program may have written into the same text. Empty when there is none.
std::string_view pathInCommandLine(std::string_view text);

} // namespace vantoro
