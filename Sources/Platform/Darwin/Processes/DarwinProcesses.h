// What libproc tells: the process table, and what this process and the programs that it runs take.
#pragma once

#include "Platform/Darwin/Portable/ChipNames.h"
#include "Platform/OwnCost.h"
#include "Platform/ProcessTable.h"

#include <optional>
#include <vector>

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

class DarwinOwnCost : public OwnCost {
public:
    DarwinOwnCost();

    /// proc_pid_rusage: user, system and waited-for children's time, and the same of the children that run. It is
    /// refused for a program with the rights of root.
    std::optional<ProcessorTime> processorTime() override;
    /// The physical footprint, of the children too where that is allowed.
    std::optional<std::uint64_t> memoryBytes() override;

private:
    static std::vector<int> children();

    std::optional<MachTimebase> timebase_;
};

} // namespace vantoro
