#include "Platform/Linux/Proc/ProcScan.h"

#include "Platform/Linux/Proc/ProgramSubject.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

/// A path below the proc folder, such as "1234/stat".
struct ProcPath {
    char text[32];

    ProcPath(std::int32_t pid, const char* file) {
        char* at = std::to_chars(text, text + 12, pid).ptr;
        *at++ = '/';
        std::memcpy(at, file, std::strlen(file) + 1);
    }
};

/// The pid that names a folder; 0 for any other name.
std::int32_t pidNamed(const char* name) {
    std::int32_t pid = 0;
    const char* end = name + std::strlen(name);
    const auto [rest, error] = std::from_chars(name, end, pid);
    return error == std::errc{} && rest == end && pid > 0 ? pid : 0;
}

/// With a fork count that stands still the folder is read every so often all the same: a process can come into sight
/// in other ways, as where /proc hides other users' processes and one of them changes its user.
constexpr int listingsSkippedAtMost = 30;

/// How long a process must have been quiet before its figures are left alone, and for how many readings they are.
constexpr int quietReadingsBeforeSparing = 3;
constexpr int mostSparedReadings = 15;

ReapedWork::Process kinOf(const ScannedProcess& process) {
    return {process.pid, process.parentPid, process.groupPid, process.startTicks, process.state == 'Z'};
}

} // namespace

void raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max)
        return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

std::size_t descriptorBudget() {
    constexpr rlim_t reserve = 128;
    constexpr rlim_t most = 65536;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= reserve)
        return 0;
    return static_cast<std::size_t>(std::min(limit.rlim_cur - reserve, most));
}

ProcScan::ProcScan(const std::string& root, std::size_t descriptorBudget)
    : folder_(::open((root + "/proc").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    , descriptorBudget_(descriptorBudget) {}

ProcScan::~ProcScan() = default;

void ProcScan::FolderCloser::operator()(void* folder) const {
    ::closedir(static_cast<DIR*>(folder));
}

bool ProcScan::list(const std::optional<KernelStat>& kernel, std::uint64_t bootTicks) {
    if (!isSettled_)
        settle();
    isSettled_ = false;
    ended_.clear();
    ++rounds_;
    spentTicks_ = 0;
    const std::uint64_t busy = kernel ? kernel->busyTicks : 0;
    busySince_ = kernel && busyTicks_ && busy > *busyTicks_ ? busy - *busyTicks_ : 0;
    busyTicks_ = kernel ? std::optional(busy) : std::nullopt;
    previousBootTicks_ = std::exchange(bootTicks_, bootTicks);
    const std::optional<std::uint64_t> forks = kernel ? kernel->forks : std::nullopt;
    if (forks && forks == listedForks_ && listingsSkipped_ < listingsSkippedAtMost) {
        ++listingsSkipped_;
        std::erase_if(processes_, [](const ScannedProcess& process) { return process.ended; });
        return true;
    }
    if (!listing_ && folder_) {
        // The stream owns its descriptor, and the scan needs its own for as long as it lives.
        Descriptor copy(::openat(folder_.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        listing_.reset(::fdopendir(copy.number()));
        if (listing_)
            copy.release();
    }
    pids_.clear();
    if (!listing_) {
        keepOnly(pids_);
        return false;
    }
    DIR* folder = static_cast<DIR*>(listing_.get());
    ::rewinddir(folder);
    while (const dirent* entry = ::readdir(folder))
        if (const std::int32_t pid = pidNamed(entry->d_name); pid != 0)
            pids_.push_back(pid);
    if (!std::is_sorted(pids_.begin(), pids_.end()))
        std::sort(pids_.begin(), pids_.end());
    keepOnly(pids_);
    listedForks_ = forks;
    listingsSkipped_ = 0;
    return true;
}

void ProcScan::keepOnly(const std::vector<std::int32_t>& pids) {
    const bool same = std::equal(pids.begin(), pids.end(), processes_.begin(), processes_.end(),
                                 [](std::int32_t pid, const ScannedProcess& process) { return process.pid == pid; });
    if (same) {
        for (ScannedProcess& process : processes_)
            process.ended = false;
        return;
    }
    previous_.swap(processes_);
    processes_.clear();
    processes_.reserve(pids.size());
    auto known = previous_.begin();
    for (const std::int32_t pid : pids) {
        while (known != previous_.end() && known->pid < pid)
            bury(*known++);
        if (known != previous_.end() && known->pid == pid) {
            processes_.push_back(std::move(*known++));
            processes_.back().ended = false;
        } else {
            processes_.emplace_back().pid = pid;
        }
    }
    while (known != previous_.end())
        bury(*known++);
    previous_.clear();
}

std::span<ScannedProcess> ProcScan::processesFrom(std::int32_t pid) {
    const auto at =
        std::lower_bound(processes_.begin(), processes_.end(), pid,
                         [](const ScannedProcess& process, std::int32_t wanted) { return process.pid < wanted; });
    return {at, processes_.end()};
}

ScannedProcess* ProcScan::find(std::int32_t pid) {
    const auto from = processesFrom(pid);
    return !from.empty() && from.front().pid == pid ? &from.front() : nullptr;
}

ScannedProcess& ProcScan::add(std::int32_t pid) {
    if (ScannedProcess* known = find(pid))
        return *known;
    const auto at =
        std::upper_bound(processes_.begin(), processes_.end(), pid,
                         [](std::int32_t wanted, const ScannedProcess& process) { return wanted < process.pid; });
    ScannedProcess process;
    process.pid = pid;
    return *processes_.insert(at, std::move(process));
}

void ProcScan::forget(ScannedProcess& process) {
    if (process.descriptor_) {
        process.descriptor_.close();
        --descriptorsKept_;
    }
}

/// Takes a process that is gone out of the list; its pid is free for another.
void ProcScan::bury(ScannedProcess& process) {
    forget(process);
    const std::int32_t pid = process.pid;
    if (process.readings != 0) {
        process.ended = true;
        process.residentPages = 0;
        ended_.push_back(std::move(process));
    }
    process = ScannedProcess();
    process.pid = pid;
    process.ended = true;
}

/// Whether the process is watched by its schedule alone and has not been on a processor since the last reading.
bool ProcScan::hasNotRun(ScannedProcess& process) {
    if (!process.descriptor_ || process.kept_ != ScannedProcess::Kept::schedule)
        return false;
    char buffer[64];
    const ssize_t got = ::pread(process.descriptor_.number(), buffer, sizeof buffer, 0);
    const bool same = got > 0 && static_cast<std::size_t>(got) == process.scheduleBytes_ &&
                      std::memcmp(buffer, process.schedule_.data(), process.scheduleBytes_) == 0;
    if (same && process.sparedReadings_ < mostSparedReadings) {
        ++process.sparedReadings_;
        return true;
    }
    if (same) {
        // Time for a full reading; the schedule stays watched.
        process.sparedReadings_ = 0;
        return false;
    }
    forget(process);
    process.quietReadings_ = 0;
    return false;
}

/// Keeps the schedule open in the place of the figures. Its first reading comes before the figures' last one, so that
/// nothing is lost in between.
void ProcScan::watchSchedule(ScannedProcess& process) {
    if (!process.descriptor_ || process.kept_ != ScannedProcess::Kept::stat || process.hasNoSchedule_ ||
        process.threads != 1 || process.state == 'R' || process.quietReadings_ < quietReadingsBeforeSparing)
        return;
    Descriptor file(
        ::openat(folder_.number(), ProcPath(process.pid, "schedstat").text, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    const ssize_t got = file ? ::pread(file.number(), process.schedule_.data(), process.schedule_.size(), 0) : 0;
    // "0" is what a kernel without these counts says of every process.
    if (got <= 0 || static_cast<std::size_t>(got) == process.schedule_.size() || process.schedule_[0] == '0') {
        process.hasNoSchedule_ = true;
        return;
    }
    process.scheduleBytes_ = static_cast<std::size_t>(got);
    process.sparedReadings_ = 0;
    process.descriptor_ = std::move(file);
    process.kept_ = ScannedProcess::Kept::schedule;
}

std::ptrdiff_t ProcScan::readStat(ScannedProcess& process, char* buffer, std::size_t size) {
    if (process.descriptor_ && process.kept_ == ScannedProcess::Kept::stat) {
        const ssize_t got = ::pread(process.descriptor_.number(), buffer, size, 0);
        if (got > 0)
            return got;
        // This process is gone. Another may have its pid by now.
        forget(process);
    }
    Descriptor file(::openat(folder_.number(), ProcPath(process.pid, "stat").text, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        process.ended = errno == ENOENT || errno == ESRCH;
        return 0;
    }
    const ssize_t got = ::pread(file.number(), buffer, size, 0);
    if (got <= 0) {
        process.ended = true;
        return 0;
    }
    if (!process.descriptor_ && descriptorsKept_ < descriptorBudget_) {
        process.descriptor_ = std::move(file);
        process.kept_ = ScannedProcess::Kept::stat;
        ++descriptorsKept_;
    }
    return got;
}

bool ProcScan::read(ScannedProcess& process) {
    const bool isSpared = hasNotRun(process);
    char buffer[2048];
    std::ptrdiff_t got = 0;
    if (!isSpared) {
        watchSchedule(process);
        got = readStat(process, buffer, sizeof buffer);
        if (got <= 0) {
            if (process.ended)
                bury(process);
            return false;
        }
    }
    // The byte after the last figure is compared too, or a longer figure would pass for its beginning.
    const auto size = static_cast<std::size_t>(got);
    const bool isSame = isSpared || (process.parsedBytes_ != 0 && process.parsedBytes_ <= size &&
                                     std::memcmp(process.parsed_.data(), buffer, process.parsedBytes_) == 0);
    if (isSame) {
        process.spentTicks = 0;
        process.reapedTicks = 0;
        process.quietReadings_ += isSpared ? 0 : 1;
    } else {
        const std::optional<ProcessStat> stat = parseProcessStat({buffer, size});
        if (!stat)
            return false;
        take(process, *stat);
        const std::size_t used = std::min(stat->usedBytes + 1, size);
        process.parsedBytes_ = used <= process.parsed_.size() ? used : 0;
        std::memcpy(process.parsed_.data(), buffer, process.parsedBytes_);
    }
    ++process.readings;
    return true;
}

/// Takes over the figures of a reading that is unlike the one before.
void ProcScan::take(ScannedProcess& process, const ProcessStat& stat) {
    if (process.readings != 0 && process.startTicks != stat.startTicks) {
        // The descriptor is the successor's already.
        Descriptor descriptor = std::move(process.descriptor_);
        bury(process);
        process.descriptor_ = std::move(descriptor);
        process.ended = false;
    }
    const bool isFirst = process.readings == 0;
    // One that was not in the list before and started since spent all of its time since; one that merely came into
    // sight did not.
    const bool isYoung = isFirst && previousBootTicks_ != 0 && stat.startTicks >= previousBootTicks_;
    const auto since = [&](std::uint64_t now, std::uint64_t before) {
        return isFirst ? (isYoung ? now : 0) : now - std::min(now, before);
    };
    process.spentTicks = since(stat.userTicks + stat.systemTicks, process.totalTicks());
    process.reapedTicks = since(stat.childTicks, process.childTicks);
    spentTicks_ += process.spentTicks;
    if (process.name != stat.name) {
        process.name.assign(stat.name);
        process.uid.reset();
        process.uidSettled = false;
        process.path.reset();
        process.told_.reset();
    }
    process.quietReadings_ = 0;
    process.state = stat.state;
    process.parentPid = stat.parentPid;
    process.groupPid = stat.groupPid;
    process.sessionPid = stat.sessionPid;
    process.flags = stat.flags;
    process.userTicks = stat.userTicks;
    process.systemTicks = stat.systemTicks;
    process.startTicks = stat.startTicks;
    process.childTicks = stat.childTicks;
    process.threads = stat.threads;
    process.residentPages = stat.residentPages;
    if (process.reapedTicks != 0)
        reaped_.reaped(kinOf(process), process.reapedTicks);
}

const std::vector<ReapedWork::Credit>& ProcScan::settle() {
    isSettled_ = true;
    for (const ScannedProcess& process : ended_)
        if (!process.isKernelThread())
            reaped_.ended(kinOf(process), process.totalTicks() + process.childTicks,
                          process.spentTicks + process.reapedTicks);
    return reaped_.settle(
        busySince_ - std::min(busySince_, spentTicks_), [this](std::int32_t pid) -> std::optional<ReapedWork::Process> {
            const ScannedProcess* const process = find(pid);
            return process != nullptr && process->readings != 0 ? std::optional(kinOf(*process)) : std::nullopt;
        });
}

ScannedProcess* ProcScan::findEnded(std::int32_t pid) {
    const auto found = std::ranges::find(ended_, pid, &ScannedProcess::pid);
    return found != ended_.end() ? &*found : nullptr;
}

std::optional<std::uint32_t> ProcScan::uid(ScannedProcess& process) {
    if (process.ended || (process.uid && (process.uidSettled || process.readings < 3)))
        return process.uid;
    process.uidSettled = process.uid.has_value();
    // The line stands near the beginning; what comes after the first page is lists of groups and processors.
    const std::optional<std::string> text = readFile(process, "status", 4096);
    process.uid = text ? parseRealUid(*text) : std::nullopt;
    return process.uid;
}

const std::string& ProcScan::path(ScannedProcess& process) {
    if (!process.path)
        process.path = process.ended ? std::string() : readPath(process);
    return *process.path;
}

std::optional<std::string> ProcScan::readFile(const ScannedProcess& process, const char* file,
                                              std::size_t limit) const {
    return readFileAt(folder_.number(), ProcPath(process.pid, file).text, limit, FileDelivery::onePiece);
}

std::string ProcScan::readPath(const ScannedProcess& process) const {
    char target[4096];
    const ssize_t length = ::readlinkat(folder_.number(), ProcPath(process.pid, "exe").text, target, sizeof target);
    if (length > 0) {
        std::string_view path(target, static_cast<std::size_t>(length));
        constexpr std::string_view deleted = " (deleted)";
        if (path.ends_with(deleted))
            path.remove_suffix(deleted.size());
        return std::string(path);
    }
    const std::optional<std::string> text = readFile(process, "cmdline", 4096);
    return text ? std::string(pathInCommandLine(*text)) : std::string();
}

ScannedProcess* ProcScan::parentOf(const ScannedProcess& process) {
    ScannedProcess* const parent = process.parentPid > 1 ? find(process.parentPid) : nullptr;
    return parent != nullptr && (parent->readings != 0 || (!parent->ended && read(*parent))) ? parent : nullptr;
}

} // namespace vantoro
