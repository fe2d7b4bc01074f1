// Applications on Linux: control groups that the desktop names for them, and desktop entries.
#pragma once

#include "Platform/AppIdentity.h"
#include "Platform/Linux/Apps/DesktopEntries.h"
#include "Platform/Linux/Reading/KeptFile.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vantoro {

/// A process in a control group of an application is that application's: the application itself (`userApp`) when it
/// runs the entry's program, otherwise a `helper`; a shell in it and everything started from that shell is the user's
/// own work (`commandLine`) and belongs to no application. Elsewhere a process is an application if an entry's command
/// names its executable. Of a process inside a bundle (".app") nothing is said.
class LinuxAppIdentity : public AppIdentity {
public:
    struct Options {
        /// The folder that holds proc and everything else.
        std::string root = "/";
        DesktopFolders folders;
        /// A clock that only rises, in seconds.
        std::function<double()> clock;
    };

    explicit LinuxAppIdentity(Options options);

    AppMembership membership(std::int32_t pid, std::string_view listedPath) override;

private:
    struct Known {
        std::string listedPath;
        double seconds = 0;
        AppMembership membership;
    };

    AppMembership find(std::int32_t pid, const std::string& path, double seconds);
    const InstalledEntry* entryOf(std::string_view controlGroup) const;
    bool isShellWork(std::int32_t pid, const std::string& controlGroup, const InstalledEntry& application) const;
    std::string controlGroup(std::int32_t pid) const;

    Options options_;
    DesktopEntries entries_;
    Descriptor processes_;
    std::unordered_map<std::int32_t, Known> known_;
};

/// Whether an executable is the program of an entry: the same file, of the same name (a sandbox shows other folders),
/// or the interpreter of a program that is a script.
bool runsProgramOf(const InstalledEntry& application, std::string_view executablePath);

} // namespace vantoro
