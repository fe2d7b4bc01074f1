#include "Platform/Linux/Apps/LinuxAppIdentity.h"

#include "Platform/Linux/Apps/AppUnit.h"
#include "Platform/Linux/Proc/ProcStat.h"

#include <fcntl.h>
#include <utility>

namespace vantoro {

namespace {

/// How long an answer is given again. A process can be moved to its application's group after it has started, and a pid
/// can change hands.
constexpr double secondsKept = 10;
constexpr std::size_t mostKnown = 65'536;
constexpr int mostAncestors = 64;
constexpr std::size_t mostProcBytes = 65'536;

bool isInBundle(std::string_view path) {
    constexpr std::string_view ending = ".app";
    for (std::size_t at = path.find(ending); at != std::string_view::npos; at = path.find(ending, at + 1))
        if (at + ending.size() == path.size() || path[at + ending.size()] == '/')
            return true;
    return false;
}

} // namespace

LinuxAppIdentity::LinuxAppIdentity(Options options)
    : options_(std::move(options))
    , entries_(options_.root, options_.folders)
    , processes_(::open((options_.root + "/proc").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

AppMembership LinuxAppIdentity::membership(std::int32_t pid, std::string_view listedPath) {
    if (isPathMark(listedPath)) {
        if (listedPath.front() == '(')
            return {};
        return {.kind = ProcessKind::kernel, .displayName = std::string(listedPath.substr(1, listedPath.size() - 2))};
    }
    if (!listedPath.starts_with('/') || isInBundle(listedPath))
        return {};
    const double now = options_.clock();
    const auto found = known_.find(pid);
    if (found != known_.end() && found->second.listedPath == listedPath && now - found->second.seconds < secondsKept)
        return found->second.membership;
    if (found == known_.end() && known_.size() >= mostKnown)
        known_.clear();
    Known& known = known_[pid];
    known.listedPath = listedPath;
    known.seconds = now;
    known.membership = find(pid, known.listedPath, now);
    return known.membership;
}

AppMembership LinuxAppIdentity::find(std::int32_t pid, const std::string& path, double seconds) {
    entries_.refresh(seconds);
    const std::string group = controlGroup(pid);
    AppMembership membership;
    if (const InstalledEntry* application = entryOf(group)) {
        if (isShellWork(pid, group, *application)) {
            membership.kind = ProcessKind::commandLine;
            return membership;
        }
        membership.kind = runsProgramOf(*application, path) ? ProcessKind::userApp : ProcessKind::helper;
        membership.owningAppName = application->entry.name;
        membership.owningAppPath = application->file;
    } else if (const InstalledEntry* named = entries_.byExecutable(path)) {
        membership.kind = ProcessKind::userApp;
        membership.owningAppName = named->entry.name;
        membership.owningAppPath = named->file;
    }
    return membership;
}

const InstalledEntry* LinuxAppIdentity::entryOf(std::string_view controlGroup) const {
    for (const std::string& id : applicationIds(controlGroup))
        if (const InstalledEntry* entry = entries_.byId(id))
            return entry;
    return nullptr;
}

bool LinuxAppIdentity::isShellWork(std::int32_t pid, const std::string& group,
                                   const InstalledEntry& application) const {
    bool parentIsInside = true;
    for (int generation = 0; generation < mostAncestors && pid > 1 && parentIsInside; ++generation) {
        const auto text = readFileAt(processes_.number(), (std::to_string(pid) + "/stat").c_str(), mostProcBytes);
        const auto stat = text ? parseProcessStat(*text) : std::nullopt;
        if (!stat)
            return false;
        const std::int32_t parent = stat->parentPid;
        parentIsInside = parent > 1 && controlGroup(parent) == group;
        // A script's own name stands in its shell's place, so this is a shell that takes commands. An application whose
        // command is itself a shell's begins with one.
        if (isShell(stat->name) && (parentIsInside || !isShell(application.programName)))
            return true;
        pid = parent;
    }
    return false;
}

std::string LinuxAppIdentity::controlGroup(std::int32_t pid) const {
    const auto text = readFileAt(processes_.number(), (std::to_string(pid) + "/cgroup").c_str(), mostProcBytes);
    return text ? std::string(parseControlGroup(*text)) : std::string();
}

bool runsProgramOf(const InstalledEntry& application, std::string_view executablePath) {
    const std::string_view name = baseName(executablePath);
    if (name.empty())
        return false;
    if (executablePath == application.programPath || name == application.programName ||
        name == baseName(application.programPath))
        return true;
    // "python3" is run by python3.11, "gjs" by gjs-console; a shell that runs a script only prepares the program's way.
    for (const std::string& interpreter : {application.interpreterName, application.programName})
        if (isLauncher(interpreter) && !isShell(interpreter) && name.starts_with(interpreter))
            return true;
    return false;
}

} // namespace vantoro
