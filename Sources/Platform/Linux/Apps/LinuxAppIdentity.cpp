#include "Platform/Linux/Apps/LinuxAppIdentity.h"

#include "Platform/Linux/Apps/AppUnit.h"

#include "Model/Text/TerminalText.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace vantoro {

namespace {

/// How long an answer is given again: applications are installed and removed.
constexpr double secondsKept = 10;
constexpr std::size_t mostKnown = 65'536;

bool isInBundle(std::string_view path) {
    constexpr std::string_view ending = ".app";
    for (std::size_t at = path.find(ending); at != std::string_view::npos; at = path.find(ending, at + 1))
        if (at + ending.size() == path.size() || path[at + ending.size()] == '/')
            return true;
    return false;
}

std::string shown(std::string_view name) {
    return shortened(terminalText(name), longestShownName);
}

/// The game that Steam keeps below this path, with "/" or a Windows path's "\\" in it; empty for none, and for what
/// games run in.
std::string gameOf(std::string path) {
    std::ranges::replace(path, '\\', '/');
    constexpr std::string_view folder = "/steamapps/common/";
    const std::size_t at = path.find(folder);
    if (at == std::string::npos)
        return {};
    const std::size_t start = at + folder.size();
    const std::size_t end = path.find('/', start);
    const std::string name = end == std::string::npos ? std::string() : path.substr(start, end - start);
    return name.starts_with("Proton") || name.starts_with("SteamLinuxRuntime") ? std::string() : shown(name);
}

/// The kind of what belongs to no application.
std::optional<ProcessKind> kindOf(const ProcessOrigin& origin, bool isOwn) {
    const std::string_view unit = unitOf(origin.controlGroup);
    const bool hasShell = origin.shell != ProcessOrigin::Shell::none;
    const bool hasPath = origin.path.starts_with('/');
    if (unit.empty())
        return isOwn && (hasShell || !hasPath) ? std::optional(ProcessKind::commandLine) : std::nullopt;
    // What "systemd-run" starts is somebody's work, and so is all that begins with a shell in a session.
    const bool isUsers = origin.controlGroup.find("user.slice/") != std::string::npos;
    // Without a session manager, whoever logs in stays in the service that let them in.
    const bool isDoor = unit.starts_with("ssh") || unit.find("getty@") != std::string_view::npos;
    if (isDoor && (hasShell || !origin.job.empty()))
        return ProcessKind::commandLine;
    if (unit.ends_with(".service"))
        return isUsers && unit.starts_with("run-") ? ProcessKind::commandLine : ProcessKind::systemDaemon;
    if (!isUsers || unit == "init.scope")
        return ProcessKind::systemDaemon;
    if (hasShell || (isOwn && !hasPath))
        return ProcessKind::commandLine;
    if (isOwn && unit.starts_with("app-"))
        return ProcessKind::userApp;
    const bool isDesktops = unit.starts_with("session-") && (origin.path.starts_with("/usr/lib"));
    return isOwn && !isDesktops ? ProcessKind::commandLine : ProcessKind::systemDaemon;
}

/// Whose work it is that is no application's: the job's, or the service's; empty for its own.
std::string ownerOf(const ProcessOrigin& origin, std::optional<ProcessKind> kind) {
    std::string_view unit = unitOf(origin.controlGroup);
    if (kind == ProcessKind::commandLine || (!kind && unit.empty()))
        return origin.job;
    if (kind != ProcessKind::systemDaemon)
        return {};
    // What is started by the clock, or for once, says more than what starts it.
    const auto isAmong = [](std::string_view name, std::initializer_list<std::string_view> names) {
        return std::ranges::find(names, name) != names.end();
    };
    const bool isForOnce = unit.starts_with("run-");
    constexpr std::string_view ending = ".service";
    const bool isService = unit.ends_with(ending);
    unit = unit.substr(0, unit.rfind('.'));
    if (isForOnce || (isService && !origin.job.empty() && isAmong(unit, {"anacron", "atd", "cron", "crond", "cronie"})))
        return origin.job;
    // The bus names what it starts for itself, and so does a desktop ("org.gnome.Shell@wayland"); a display manager's
    // unit holds the display server and more.
    const bool isTelling =
        isService && !isAmong(unit.substr(0, unit.find_first_of("-.")), {"com", "dbus", "net", "org"}) &&
        !isAmong(unit, {"display-manager", "gdm", "gdm3", "greetd", "lightdm", "lxdm", "sddm", "xdm"});
    return isTelling ? shown(unescaped(unit)) : std::string();
}

} // namespace

LinuxAppIdentity::LinuxAppIdentity(Options options)
    : options_(std::move(options)), entries_(options_.root, options_.folders) {}

AppMembership LinuxAppIdentity::membership(std::int32_t pid, const ProcessOrigin& origin, bool isOwn) {
    if (origin.path.starts_with('[') && isPathMark(origin.path))
        return {.kind = ProcessKind::kernel,
                .displayName = kernelThreadName(std::string_view(origin.path).substr(1, origin.path.size() - 2))};
    if (isInBundle(origin.path))
        return {};
    const double now = options_.clock();
    const auto found = known_.find(pid);
    if (found != known_.end() && now - found->second.seconds < secondsKept && found->second.isOwn == isOwn &&
        found->second.origin == origin)
        return found->second.membership;
    if (found == known_.end() && known_.size() >= mostKnown)
        known_.clear();
    entries_.refresh(now);
    Known& known = known_[pid];
    known = {.origin = origin, .isOwn = isOwn, .seconds = now, .membership = find(origin, isOwn)};
    return known.membership;
}

AppMembership LinuxAppIdentity::find(const ProcessOrigin& origin, bool isOwn) {
    AppMembership membership{.displayName = nameOfWork(origin.path, origin.subject)};
    const auto belongTo = [&membership](ProcessKind kind, std::string name) {
        membership.kind = kind;
        membership.owningAppName = std::move(name);
        return membership;
    };
    if (const std::string id = containerOf(origin.controlGroup); !id.empty()) {
        const bool isUsers = isOwn || origin.controlGroup.find("user.slice/") != std::string::npos;
        return belongTo(isUsers ? ProcessKind::commandLine : ProcessKind::systemDaemon,
                        "container " + shown(origin.container.empty() ? id : origin.container));
    }
    const bool isWindows = isWine(baseName(origin.path));
    if (std::string game = gameOf(isWindows ? origin.subject : origin.path); !game.empty())
        return belongTo(ProcessKind::userApp, std::move(game));
    const InstalledEntry* application = entryOf(origin.controlGroup);
    if (application != nullptr) {
        using enum ProcessOrigin::Shell;
        const bool isOpener =
            origin.shell == first && !isShell(application->programName) && origin.job != application->programName;
        if (origin.shell == inner || isOpener) {
            membership.kind = ProcessKind::commandLine;
            if (!origin.job.empty())
                membership.owningAppName = origin.job;
            return membership;
        }
        membership.owningAppPath = application->file;
        return belongTo(runsProgramOf(*application, origin.path) ? ProcessKind::userApp : ProcessKind::helper,
                        application->entry.name);
    }
    if (const InstalledEntry* named = entries_.byExecutable(origin.path)) {
        membership.owningAppPath = named->file;
        return belongTo(ProcessKind::userApp, named->entry.name);
    }
    membership.kind = isWindows && isOwn ? ProcessKind::userApp : kindOf(origin, isOwn);
    if (std::string owner = ownerOf(origin, membership.kind); !owner.empty())
        membership.owningAppName = std::move(owner);
    return membership;
}

const InstalledEntry* LinuxAppIdentity::entryOf(std::string_view controlGroup) const {
    for (const std::string& id : applicationIds(controlGroup))
        if (const InstalledEntry* entry = entries_.byId(id))
            return entry;
    return nullptr;
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
