#include "Platform/Darwin/Processes/DarwinProcessControl.h"

#include "Platform/Darwin/Processes/DarwinProcesses.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <libproc.h>
#include <sys/proc_info.h>
#include <unistd.h>

#import <AppKit/AppKit.h>

namespace vantoro {

namespace {

/// SZOMB of sys/proc.h: ended, and not yet waited for.
constexpr std::uint32_t zombie = 5;

} // namespace

std::int32_t DarwinProcessControl::ownPid() const {
    return ::getpid();
}

std::optional<LivingProcess> DarwinProcessControl::find(std::int32_t pid) {
    if (pid < 1)
        return std::nullopt;
    proc_bsdinfo record{};
    constexpr int size = sizeof record;
    if (::proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &record, size) == size) {
        if (record.pbi_status == zombie)
            return std::nullopt;
        const pid_t session = ::getsid(pid);
        const double microseconds = static_cast<double>(record.pbi_start_tvusec);
        return LivingProcess{.pid = pid,
                             .parentPid = static_cast<std::int32_t>(record.pbi_ppid),
                             .groupPid = static_cast<std::int32_t>(record.pbi_pgid),
                             .sessionPid = session > 0 ? session : 0,
                             .birth = record.pbi_start_tvsec * 1'000'000 + record.pbi_start_tvusec,
                             .startedAt = static_cast<double>(record.pbi_start_tvsec) + microseconds / 1e6};
    }
    // Of another user's process less is told: that it is there, and no more.
    proc_bsdshortinfo little{};
    constexpr int littleSize = sizeof little;
    if (::proc_pidinfo(pid, PROC_PIDT_SHORTBSDINFO, 0, &little, littleSize) != littleSize ||
        little.pbsi_status == zombie)
        return std::nullopt;
    return LivingProcess{.pid = pid,
                         .parentPid = static_cast<std::int32_t>(little.pbsi_ppid),
                         .groupPid = static_cast<std::int32_t>(little.pbsi_pgid)};
}

void DarwinProcessControl::list(std::vector<LivingProcess>& alive) {
    alive.clear();
    std::vector<std::int32_t> pids;
    DarwinProcessTable().listPids(pids);
    for (const std::int32_t pid : pids)
        if (const auto process = find(pid))
            alive.push_back(*process);
}

std::string DarwinProcessControl::folder(const LivingProcess& process) {
    proc_vnodepathinfo record{};
    constexpr int size = sizeof record;
    const bool isTold = ::proc_pidinfo(process.pid, PROC_PIDVNODEPATHINFO, 0, &record, size) == size;
    const auto now = find(process.pid);
    if (!isTold || !now || now->birth != process.birth)
        return {};
    const char* const path = record.pvi_cdir.vip_path;
    return {path, ::strnlen(path, sizeof record.pvi_cdir.vip_path)};
}

QuitAnswer DarwinProcessControl::end(const LivingProcess& process, QuitManner manner) {
    if (process.pid <= 1 || process.pid == ownPid())
        return QuitAnswer::refused;
    const auto now = find(process.pid);
    if (!now || now->birth != process.birth)
        return QuitAnswer::gone;
    // A process that may be signalled shows when it started.
    if (process.birth == 0)
        return QuitAnswer::refused;
    if (manner == QuitManner::ask) {
        @autoreleasepool {
            NSRunningApplication* const application =
                [NSRunningApplication runningApplicationWithProcessIdentifier:process.pid];
            if (application != nil && [application terminate])
                return QuitAnswer::reached;
        }
    }
    if (::kill(process.pid, manner == QuitManner::force ? SIGKILL : SIGTERM) == 0)
        return QuitAnswer::reached;
    return errno == ESRCH ? QuitAnswer::gone : QuitAnswer::refused;
}

} // namespace vantoro
