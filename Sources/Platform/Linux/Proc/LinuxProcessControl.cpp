#include "Platform/Linux/Proc/LinuxProcessControl.h"

#include "Platform/Linux/Proc/LinuxProcessTable.h"
#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Reading/KeptFile.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

// Older headers do not know the calls; the numbers are the same on every architecture.
#ifndef SYS_pidfd_send_signal
#define SYS_pidfd_send_signal 424
#endif
#ifndef SYS_pidfd_open
#define SYS_pidfd_open 434
#endif

namespace vantoro {

namespace {

double seconds(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::optional<ProcessStat> readStat(std::int32_t pid, std::array<char, 4096>& room) {
    const Descriptor file(::open(("/proc/" + std::to_string(pid) + "/stat").c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number() < 0)
        return std::nullopt;
    const ssize_t size = ::read(file.number(), room.data(), room.size());
    if (size <= 0)
        return std::nullopt;
    return parseProcessStat({room.data(), static_cast<std::size_t>(size)});
}

/// A leader that ended before its threads is shown as a zombie while they run on.
bool isAlive(const ProcessStat& stat) {
    return stat.state != 'X' && stat.state != 'x' && (stat.state != 'Z' || stat.threads > 1);
}

} // namespace

LinuxProcessControl::LinuxProcessControl() : ticksPerSecond_(KernelUnits::ofThisMachine().ticksPerSecond) {}

std::int32_t LinuxProcessControl::ownPid() const {
    return ::getpid();
}

std::optional<LivingProcess> LinuxProcessControl::find(std::int32_t pid) {
    if (pid < 1)
        return std::nullopt;
    std::array<char, 4096> room;
    const auto stat = readStat(pid, room);
    if (!stat || !isAlive(*stat))
        return std::nullopt;
    const double sinceBoot = static_cast<double>(stat->startTicks) / static_cast<double>(ticksPerSecond_);
    return LivingProcess{.pid = pid,
                         .parentPid = stat->parentPid,
                         .groupPid = stat->groupPid,
                         .sessionPid = stat->sessionPid,
                         .birth = stat->startTicks + 1, // 0 stands for not known
                         .startedAt = seconds(CLOCK_REALTIME) - seconds(CLOCK_BOOTTIME) + sinceBoot};
}

void LinuxProcessControl::list(std::vector<LivingProcess>& alive) {
    alive.clear();
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), ::closedir);
    if (!folder)
        return;
    while (const dirent* const entry = ::readdir(folder.get())) {
        const std::string name = entry->d_name;
        if (name.empty() || name.size() > 9 || name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        if (const auto process = find(std::stoi(name)))
            alive.push_back(*process);
    }
}

std::string LinuxProcessControl::folder(const LivingProcess& process) {
    std::array<char, 4096> room; // PATH_MAX: the kernel gives no more
    const ssize_t size =
        ::readlink(("/proc/" + std::to_string(process.pid) + "/cwd").c_str(), room.data(), room.size());
    const auto now = find(process.pid);
    const bool isSame = now && now->birth == process.birth;
    return isSame && size > 0 ? std::string(room.data(), static_cast<std::size_t>(size)) : std::string();
}

QuitAnswer LinuxProcessControl::end(const LivingProcess& process, QuitManner manner) {
    if (process.pid <= 1 || process.pid == ownPid())
        return QuitAnswer::refused;
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process.pid, 0)));
    const int error = errno;
    if (handle.number() < 0 && error == ESRCH)
        return QuitAnswer::gone;
    const auto now = find(process.pid);
    if (!now || now->birth != process.birth)
        return QuitAnswer::gone;
    const int number = manner == QuitManner::force ? SIGKILL : SIGTERM;
    const long result = handle.number() >= 0 ? ::syscall(SYS_pidfd_send_signal, handle.number(), number, nullptr, 0)
                                             : ::kill(process.pid, number);
    if (result == 0)
        return QuitAnswer::reached;
    return errno == ESRCH ? QuitAnswer::gone : QuitAnswer::refused;
}

} // namespace vantoro
