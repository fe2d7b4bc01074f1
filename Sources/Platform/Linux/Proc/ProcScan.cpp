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

/// After how many readings the origin is asked for again, at first and later.
constexpr std::uint64_t soon = 2;
constexpr std::uint64_t later = 8;
constexpr int mostAncestors = 64;

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

bool ProcScan::list(std::optional<std::uint64_t> forks) {
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
            forget(*known++);
        if (known != previous_.end() && known->pid == pid) {
            processes_.push_back(std::move(*known++));
            processes_.back().ended = false;
        } else {
            processes_.emplace_back().pid = pid;
        }
    }
    while (known != previous_.end())
        forget(*known++);
    previous_.clear();
}

ScannedProcess* ProcScan::find(std::int32_t pid) {
    const auto at =
        std::lower_bound(processes_.begin(), processes_.end(), pid,
                         [](const ScannedProcess& process, std::int32_t wanted) { return process.pid < wanted; });
    return at != processes_.end() && at->pid == pid ? &*at : nullptr;
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
    if (hasNotRun(process)) {
        process.previousTicks = process.totalTicks();
        ++process.readings;
        return true;
    }
    watchSchedule(process);
    char buffer[2048];
    const std::ptrdiff_t got = readStat(process, buffer, sizeof buffer);
    if (got <= 0)
        return false;
    process.previousTicks = process.totalTicks();
    const auto size = static_cast<std::size_t>(got);
    // The byte after the last figure is compared too, or a longer figure would pass for its beginning.
    if (process.parsedBytes_ != 0 && process.parsedBytes_ <= size &&
        std::memcmp(process.parsed_.data(), buffer, process.parsedBytes_) == 0) {
        ++process.readings;
        ++process.quietReadings_;
        return true;
    }
    const std::optional<ProcessStat> stat = parseProcessStat({buffer, size});
    if (!stat)
        return false;
    const bool isAnother = process.readings != 0 && process.startTicks != stat->startTicks;
    if (isAnother || process.readings == 0) {
        process.readings = 0;
        process.previousTicks = 0;
        process.hasNoSchedule_ = false;
    }
    if (isAnother || process.name != stat->name) {
        process.name.assign(stat->name);
        process.uid.reset();
        process.uidSettled = false;
        process.path.reset();
        process.told_.reset();
    }
    process.quietReadings_ = 0;
    process.state = stat->state;
    process.parentPid = stat->parentPid;
    process.flags = stat->flags;
    process.userTicks = stat->userTicks;
    process.systemTicks = stat->systemTicks;
    process.startTicks = stat->startTicks;
    process.threads = stat->threads;
    process.residentPages = stat->residentPages;
    ++process.readings;
    const std::size_t used = std::min(stat->usedBytes + 1, size);
    process.parsedBytes_ = used <= process.parsed_.size() ? used : 0;
    std::memcpy(process.parsed_.data(), buffer, process.parsedBytes_);
    return true;
}

std::optional<std::uint32_t> ProcScan::uid(ScannedProcess& process) {
    if (process.uid && (process.uidSettled || process.readings < 3))
        return process.uid;
    process.uidSettled = process.uid.has_value();
    // The line stands near the beginning; what comes after the first page is lists of groups and processors.
    const std::optional<std::string> text = readFileAt(folder_.number(), ProcPath(process.pid, "status").text, 4096);
    process.uid = text ? parseRealUid(*text) : std::nullopt;
    return process.uid;
}

const std::string& ProcScan::path(ScannedProcess& process) {
    if (!process.path)
        process.path = readPath(process.pid);
    return *process.path;
}

std::string ProcScan::readPath(std::int32_t pid) const {
    char target[4096];
    const ssize_t length = ::readlinkat(folder_.number(), ProcPath(pid, "exe").text, target, sizeof target);
    if (length > 0) {
        std::string_view path(target, static_cast<std::size_t>(length));
        constexpr std::string_view deleted = " (deleted)";
        if (path.ends_with(deleted))
            path.remove_suffix(deleted.size());
        return std::string(path);
    }
    const std::optional<std::string> text = readFileAt(folder_.number(), ProcPath(pid, "cmdline").text, 4096);
    return text ? std::string(pathInCommandLine(*text)) : std::string();
}

const ProcessOrigin& ProcScan::origin(ScannedProcess& process) {
    if (!process.told_)
        process.told_ = std::make_unique<ScannedProcess::Told>();
    ScannedProcess::Told& told = *process.told_;
    const bool isNew = told.next == 0;
    if (!isNew && (process.readings < told.next || process.isKernelThread()))
        return told.origin;
    told.next = process.readings + (isNew ? soon : later);
    if (process.isKernelThread()) {
        told.origin.path = "[" + process.name + "]";
        return told.origin;
    }
    told.origin.path = path(process);
    if (told.origin.path.empty())
        told.origin.path.append("(").append(process.name).append(")");
    told.origin.subject = readSubject(process);
    controlGroup(process);
    askAncestors(process);
    return told.origin;
}

const std::string& ProcScan::controlGroup(ScannedProcess& process) {
    if (!process.told_)
        process.told_ = std::make_unique<ScannedProcess::Told>();
    ScannedProcess::Told& told = *process.told_;
    if (process.readings >= told.nextGroup) {
        told.nextGroup = process.readings + (told.nextGroup == 0 ? soon : later);
        constexpr std::size_t mostBytes = 16'384;
        // One that has ended keeps the group that it was last seen in.
        if (const auto text = readFileAt(folder_.number(), ProcPath(process.pid, "cgroup").text, mostBytes))
            told.origin.controlGroup = parseControlGroup(*text);
    }
    return told.origin.controlGroup;
}

std::string ProcScan::readSubject(ScannedProcess& process) {
    const std::string& executable = path(process);
    const std::string_view program = executable.empty() ? std::string_view(process.name) : baseName(executable);
    constexpr std::size_t mostBytes = 65'536; // a class path can be long
    constexpr int mostGenerations = 4;
    std::string subject;
    ScannedProcess* each = hasSubject(program) ? &process : nullptr;
    for (int generation = 0; generation < mostGenerations && each != nullptr && subject.empty(); ++generation) {
        if (const auto text = readFileAt(folder_.number(), ProcPath(each->pid, "cmdline").text, mostBytes))
            subject = subjectOf(program, *text);
        // A script's workers are started with code of the interpreter's own.
        each = isShell(program) || executable.empty() ? nullptr : parentOf(*each);
        if (each != nullptr && path(*each) != executable)
            each = nullptr;
    }
    return subject;
}

ScannedProcess* ProcScan::parentOf(const ScannedProcess& process) {
    ScannedProcess* const parent = process.parentPid > 1 ? find(process.parentPid) : nullptr;
    return parent != nullptr && (parent->readings != 0 || read(*parent)) ? parent : nullptr;
}

void ProcScan::askAncestors(ScannedProcess& process) {
    ProcessOrigin& origin = process.told_->origin;
    origin.shell = ProcessOrigin::Shell::none;
    const bool isInPodman = origin.controlGroup.find("libpod-") != std::string::npos;
    bool isInside = true;
    ScannedProcess* each = &process;
    for (int generation = 0; generation < mostAncestors && each != nullptr && (isInside || isInPodman); ++generation) {
        ScannedProcess* const parent = parentOf(*each);
        const bool parentIsInside = parent != nullptr && controlGroup(*parent) == origin.controlGroup;
        // A script's own name stands in its shell's place, so this is a shell that takes commands.
        if (isInside && isShell(each->name) && origin.shell != ProcessOrigin::Shell::inner)
            origin.shell = parentIsInside ? ProcessOrigin::Shell::inner : ProcessOrigin::Shell::first;
        isInside = isInside && parentIsInside;
        // Podman's monitor was started with the container's name.
        if (isInPodman && each != &process && each->name == "conmon") {
            origin.container = readSubject(*each);
            break;
        }
        each = parent;
    }
}

std::string_view pathInCommandLine(std::string_view text) {
    std::string_view first = text.substr(0, text.find('\0'));
    if (!first.starts_with('/'))
        return {};
    // A program may lay its whole command line over the first argument.
    return first.substr(0, first.find(" -"));
}

} // namespace vantoro
