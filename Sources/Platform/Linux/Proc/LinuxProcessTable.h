// The process table, from /proc.
#pragma once

#include "Platform/Linux/Proc/ProcScan.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Posix/Processes.h"
#include "Platform/ProcessTable.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// What the kernel's figures are counted in.
struct KernelUnits {
    std::uint64_t ticksPerSecond = 100;
    std::uint64_t pageBytes = 4096;

    /// This machine's.
    static KernelUnits ofThisMachine();
};

/// This process's own (real) user.
std::uint32_t currentUid();

/// One system call per process and sample: `shortRecord` reads /proc/PID/stat through a descriptor that is kept open,
/// and the `taskRecord` that follows it takes its figures from the same reading. The start time is in clock ticks after
/// boot. The kernel would let everybody read everybody's figures; a task record is given of one's own processes only,
/// for this is what stands in where only one's own are to be listed.
class LinuxProcessTable : public ProcessTable {
public:
    struct Options {
        /// The folder that holds proc.
        std::string root = "/";
        KernelUnits units = KernelUnits::ofThisMachine();
        /// How many descriptors may be kept open.
        std::size_t descriptorBudget = vantoro::descriptorBudget();
        /// Whose processes may be looked into.
        std::uint32_t ownUid = currentUid();
        std::optional<std::string> (*accountName)(std::uint32_t uid) = vantoro::accountName;
    };

    LinuxProcessTable() : LinuxProcessTable(Options{}) {}
    explicit LinuxProcessTable(const Options& options);

    void listPids(std::vector<std::int32_t>& pids) override;
    std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) override;
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override;
    std::string path(std::int32_t pid) override;
    std::optional<std::string> userName(std::uint32_t uid) override;
    void rest() override;

private:
    ProcScan& scan();

    Options options_;
    KeptFile kernelStat_;
    /// Made by the first reading.
    std::optional<ProcScan> scan_;
    /// Whose reading the next task record is to come from; 0 for no one's.
    std::int32_t justRead_ = 0;
    std::unordered_map<std::uint32_t, std::optional<std::string>> userNames_;
};

} // namespace vantoro
