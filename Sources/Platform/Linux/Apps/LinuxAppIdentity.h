// Applications on Linux: control groups that the desktop names for them, and desktop entries.
#pragma once

#include "Platform/AppIdentity.h"
#include "Platform/Linux/Apps/DesktopEntries.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vantoro {

/// A process in a control group of an application is that application's: the application itself (`userApp`) when it
/// runs the entry's program, otherwise a `helper`; a shell in it that takes commands and everything started from that
/// shell is the user's own work (`commandLine`) and belongs to its job. Elsewhere a process is an application if an
/// entry's command names its executable. Work in a session of the user's is `commandLine` also when its path was never
/// seen, a service of the user's own manager is `systemDaemon`. A service's processes belong to its unit, a container's
/// to the container, a game's to the game, other work to its job; scripts and virtual machines bear their own names. Of
/// a process inside a bundle (".app") nothing is said.
class LinuxAppIdentity : public AppIdentity {
public:
    struct Options {
        /// The folder that holds everything.
        std::string root = "/";
        DesktopFolders folders;
        /// A clock that only rises, in seconds.
        std::function<double()> clock;
    };

    explicit LinuxAppIdentity(Options options);

    AppMembership membership(std::int32_t pid, const ProcessOrigin& origin, bool isOwn) override;

private:
    struct Known {
        ProcessOrigin origin;
        bool isOwn = false;
        double seconds = 0;
        AppMembership membership;
    };

    AppMembership find(const ProcessOrigin& origin, bool isOwn);
    const InstalledEntry* entryOf(std::string_view controlGroup) const;

    Options options_;
    DesktopEntries entries_;
    std::unordered_map<std::int32_t, Known> known_;
};

/// Whether an executable is the program of an entry: the same file, of the same name (a sandbox shows other folders),
/// or the interpreter of a program that is a script.
bool runsProgramOf(const InstalledEntry& application, std::string_view executablePath);

} // namespace vantoro
