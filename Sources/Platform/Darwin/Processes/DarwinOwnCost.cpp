#include "Platform/Darwin/Processes/DarwinOwnCost.h"

#include <cstddef>
#include <libproc.h>
#include <mach/mach_time.h>
#include <sys/proc_info.h>
#include <sys/resource.h>
#include <unistd.h>

namespace vantoro {

namespace {

std::optional<MachTimebase> readTimebase() {
    mach_timebase_info_data_t timebase{};
    if (mach_timebase_info(&timebase) != KERN_SUCCESS || timebase.denom == 0)
        return {};
    return MachTimebase{.numerator = timebase.numer, .denominator = timebase.denom};
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
