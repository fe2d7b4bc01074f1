// The process table, from libproc.
#pragma once

#include "Platform/Darwin/Portable/MachTime.h"
#include "Platform/ProcessTable.h"

#include <optional>

namespace vantoro {

class DarwinProcessTable : public ProcessTable {
public:
    DarwinProcessTable();

    /// proc_listpids.
    void listPids(std::vector<std::int32_t>& pids) override;
    /// PROC_PIDT_SHORTBSDINFO; it does not say when the process started.
    std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) override;
    /// PROC_PIDTASKINFO; refused for another user's process.
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override;
    /// proc_pidpath.
    std::string path(std::int32_t pid) override;
    std::optional<std::string> userName(std::uint32_t uid) override;

private:
    /// None when the kernel does not say: then no time can be told.
    std::optional<MachTimebase> timebase_;
};

} // namespace vantoro
