#include "Platform/Linux/Proc/LinuxProcessTable.h"

#include <ctime>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

std::uint64_t nanoseconds(std::uint64_t ticks, std::uint64_t ticksPerSecond) {
    constexpr std::uint64_t perSecond = 1'000'000'000;
    // In two steps, or two years of CPU time would overflow the product.
    return ticks / ticksPerSecond * perSecond + ticks % ticksPerSecond * perSecond / ticksPerSecond;
}

} // namespace

KernelUnits KernelUnits::ofThisMachine() {
    KernelUnits units;
    if (const long ticks = ::sysconf(_SC_CLK_TCK); ticks > 0)
        units.ticksPerSecond = static_cast<std::uint64_t>(ticks);
    if (const long bytes = ::sysconf(_SC_PAGESIZE); bytes > 0)
        units.pageBytes = static_cast<std::uint64_t>(bytes);
    return units;
}

std::uint32_t currentUid() {
    return ::getuid();
}

double bootSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

LinuxProcessTable::LinuxProcessTable(const Options& options)
    : options_(options), kernelStat_(options.root + "/proc/stat") {}

LinuxProcessTable::Reading& LinuxProcessTable::reading() {
    if (!reading_)
        reading_ = std::make_unique<Reading>(options_.root, options_.descriptorBudget);
    return *reading_;
}

void LinuxProcessTable::rest() {
    reading_.reset();
    justRead_ = 0;
}

void LinuxProcessTable::listPids(std::vector<std::int32_t>& pids) {
    pids.clear();
    justRead_ = 0;
    // The count is taken before the list: a process started in between makes the next listing a full one.
    const auto text = kernelStat_.read();
    const auto stat = text ? parseKernelStat(*text) : std::nullopt;
    const double bootTicks = options_.bootSeconds() * static_cast<double>(options_.units.ticksPerSecond);
    scan().list(stat, static_cast<std::uint64_t>(bootTicks));
    pids.reserve(scan().processes().size());
    for (const ScannedProcess& process : scan().processes())
        pids.push_back(process.pid);
}

std::optional<ShortProcessRecord> LinuxProcessTable::shortRecord(std::int32_t pid) {
    justRead_ = 0;
    if (pid < 1)
        return {};
    ScannedProcess& process = scan().add(pid);
    if (!scan().read(process))
        return {};
    const auto uid = scan().uid(process);
    if (!uid)
        return {};
    justRead_ = pid;
    return ShortProcessRecord{.name = process.name, .uid = *uid, .startTime = process.startTicks};
}

std::optional<TaskRecord> LinuxProcessTable::taskRecord(std::int32_t pid) {
    if (pid < 1)
        return {};
    ScannedProcess& process = scan().add(pid);
    const bool isRead = std::exchange(justRead_, 0) == pid || scan().read(process);
    if (!isRead || scan().uid(process) != options_.ownUid)
        return {};
    const std::uint64_t ticksPerSecond = options_.units.ticksPerSecond;
    return TaskRecord{.residentBytes = process.residentPages * options_.units.pageBytes,
                      .userNanoseconds = nanoseconds(process.userTicks, ticksPerSecond),
                      .systemNanoseconds = nanoseconds(process.systemTicks, ticksPerSecond)};
}

std::string LinuxProcessTable::path(std::int32_t pid) {
    if (pid < 1)
        return {};
    ScannedProcess& process = scan().add(pid);
    if (process.readings == 0 && !scan().read(process))
        return {};
    if (process.isKernelThread())
        return "[" + process.name + "]";
    return scan().path(process);
}

ProcessOrigin LinuxProcessTable::origin(std::int32_t pid) {
    ScannedProcess* const process = scan().find(pid);
    if (process != nullptr && (process->readings != 0 || scan().read(*process)))
        return reading().jobs.origin(*process);
    ScannedProcess* const ended = scan().findEnded(pid);
    return ended != nullptr ? reading().jobs.origin(*ended) : ProcessOrigin();
}

std::vector<UnseenWork> LinuxProcessTable::unseenWork() {
    std::vector<UnseenWork> unseen;
    const auto add = [&](ScannedProcess& process, std::uint64_t ticks) {
        if (scan().uid(process) == options_.ownUid)
            unseen.push_back({process.pid, nanoseconds(ticks, options_.units.ticksPerSecond)});
    };
    for (ScannedProcess& process : scan().processes())
        if (process.readings == 1 && process.spentTicks != 0)
            add(process, process.spentTicks);
    for (const ProcJobs::Unseen& each : reading().jobs.unseenWork())
        add(*each.process, each.ticks);
    return unseen;
}

std::optional<std::string> LinuxProcessTable::userName(std::uint32_t uid) {
    const auto known = userNames_.find(uid);
    if (known != userNames_.end())
        return known->second;
    return userNames_.emplace(uid, options_.accountName(uid)).first->second;
}

LinuxProcessStream::LinuxProcessStream(const std::string& programFolder, const std::optional<std::string>& override)
    : program_(programFolder + "/vantoro-top"), name_("vantoro-top") {
    if (override && !override->empty())
        program_ = name_ = *override;
}

ProgramCommand LinuxProcessStream::stream(int samples, int intervalSeconds, int rows) const {
    return {.program = program_, .arguments = topArguments(samples, intervalSeconds, rows, ",origin")};
}

ProgramCommand LinuxProcessStream::pathList() const {
    return {.program = program_, .arguments = {"--paths"}};
}

} // namespace vantoro
