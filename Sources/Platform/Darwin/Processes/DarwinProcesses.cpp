#include "Platform/Darwin/Processes/DarwinProcesses.h"

#include "Platform/Posix/Processes.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <libproc.h>
#include <mach/mach_time.h>
#include <sys/proc_info.h>
#include <sys/resource.h>
#include <unistd.h>

namespace vantoro {

namespace {

static_assert(sizeof(proc_bsdshortinfo) == 64 && sizeof(proc_taskinfo) == 96);

/// Room for processes that start between two calls.
constexpr std::size_t sparePids = 64;

std::optional<MachTimebase> readTimebase() {
    mach_timebase_info_data_t timebase{};
    if (mach_timebase_info(&timebase) != KERN_SUCCESS || timebase.denom == 0)
        return {};
    return MachTimebase{.numerator = timebase.numer, .denominator = timebase.denom};
}

/// One record of a process; none when the kernel refuses or gives another size.
template <typename Record>
std::optional<Record> readRecord(std::int32_t pid, int flavor) {
    Record record{};
    constexpr int size = sizeof record;
    if (::proc_pidinfo(pid, flavor, 0, &record, size) != size)
        return {};
    return record;
}

std::optional<rusage_info_v1> usage(int pid) {
    rusage_info_v1 info{};
    // The kernel's interface names a pointer to a pointer and means the record.
    if (::proc_pid_rusage(pid, RUSAGE_INFO_V1, static_cast<rusage_info_t*>(static_cast<void*>(&info))) != 0)
        return {};
    return info;
}

/// In Mach units.
std::uint64_t totalTime(const rusage_info_v1& info) {
    return info.ri_user_time + info.ri_system_time + info.ri_child_user_time + info.ri_child_system_time;
}

} // namespace

DarwinProcessTable::DarwinProcessTable() : timebase_(readTimebase()) {}

void DarwinProcessTable::listPids(std::vector<std::int32_t>& pids) {
    pids.clear();
    const int neededBytes = ::proc_listpids(PROC_ALL_PIDS, 0, nullptr, 0);
    if (neededBytes < 1)
        return;
    pids.resize(static_cast<std::size_t>(neededBytes) / sizeof(std::int32_t) + sparePids);
    const auto roomBytes = static_cast<int>(pids.size() * sizeof(std::int32_t));
    const int filledBytes = ::proc_listpids(PROC_ALL_PIDS, 0, pids.data(), roomBytes);
    pids.resize(filledBytes < 1 ? 0 : static_cast<std::size_t>(filledBytes) / sizeof(std::int32_t));
}

std::optional<ShortProcessRecord> DarwinProcessTable::shortRecord(std::int32_t pid) {
    const auto record = readRecord<proc_bsdshortinfo>(pid, PROC_PIDT_SHORTBSDINFO);
    if (!record)
        return {};
    const std::size_t nameLength = ::strnlen(record->pbsi_comm, sizeof record->pbsi_comm);
    return ShortProcessRecord{.name = std::string(record->pbsi_comm, nameLength), .uid = record->pbsi_uid};
}

std::optional<TaskRecord> DarwinProcessTable::taskRecord(std::int32_t pid) {
    const auto record = readRecord<proc_taskinfo>(pid, PROC_PIDTASKINFO);
    if (!record || !timebase_)
        return {};
    return TaskRecord{.residentBytes = record->pti_resident_size,
                      .userNanoseconds = machNanoseconds(record->pti_total_user, *timebase_),
                      .systemNanoseconds = machNanoseconds(record->pti_total_system, *timebase_)};
}

std::string DarwinProcessTable::path(std::int32_t pid) {
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    if (::proc_pidpath(pid, path.data(), path.size()) < 1)
        return {};
    return std::string(path.data(), ::strnlen(path.data(), path.size()));
}

std::optional<std::string> DarwinProcessTable::userName(std::uint32_t uid) {
    return accountName(uid);
}

DarwinOwnCost::DarwinOwnCost() : timebase_(readTimebase()) {}

std::vector<int> DarwinOwnCost::children() {
    constexpr std::size_t most = 64;
    std::vector<int> pids(most);
    const auto room = static_cast<int>(pids.size() * sizeof(int));
    const int filled = ::proc_listpids(PROC_PPID_ONLY, static_cast<std::uint32_t>(::getpid()), pids.data(), room);
    pids.resize(filled < 1 ? 0 : static_cast<std::size_t>(filled) / sizeof(int));
    return pids;
}

std::optional<OwnCost::ProcessorTime> DarwinOwnCost::processorTime() {
    const auto own = usage(::getpid());
    if (!own || !timebase_)
        return {};
    ProcessorTime time;
    std::uint64_t units = totalTime(*own);
    for (const int child : children()) {
        const auto childs = usage(child);
        units += childs ? totalTime(*childs) : 0;
        time.hasPrograms = time.hasPrograms && childs.has_value();
    }
    constexpr double perSecond = 1e9;
    time.seconds = static_cast<double>(machNanoseconds(units, *timebase_)) / perSecond;
    return time;
}

std::optional<std::uint64_t> DarwinOwnCost::memoryBytes() {
    const auto own = usage(::getpid());
    if (!own)
        return {};
    std::uint64_t bytes = own->ri_phys_footprint;
    for (const int child : children())
        if (const auto childs = usage(child))
            bytes += childs->ri_phys_footprint;
    return bytes;
}

} // namespace vantoro
