// The process table, from /proc, and the process stream, from this project's own small program.
#pragma once

#include "Platform/Linux/Proc/ProcJobs.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Posix/Processes.h"
#include "Platform/ProcessStream.h"
#include "Platform/ProcessTable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
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

/// Since boot, the time that the machine slept included, as processes' starts are counted.
double bootSeconds();

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
        double (*bootSeconds)() = vantoro::bootSeconds;
        std::optional<std::string> (*accountName)(std::uint32_t uid) = vantoro::accountName;
    };

    LinuxProcessTable() : LinuxProcessTable(Options{}) {}
    explicit LinuxProcessTable(const Options& options);

    void listPids(std::vector<std::int32_t>& pids) override;
    std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) override;
    std::optional<TaskRecord> taskRecord(std::int32_t pid) override;
    std::string path(std::int32_t pid) override;
    ProcessOrigin origin(std::int32_t pid) override;
    std::vector<UnseenWork> unseenWork() override;
    std::optional<std::string> userName(std::uint32_t uid) override;
    void rest() override;

private:
    struct Reading {
        Reading(const std::string& root, std::size_t descriptorBudget) : scan(root, descriptorBudget) {}
        ProcScan scan;
        ProcJobs jobs{scan};
    };
    Reading& reading();
    ProcScan& scan() { return reading().scan; }

    Options options_;
    KeptFile kernelStat_;
    /// Made by the first reading.
    std::unique_ptr<Reading> reading_;
    /// Whose reading the next task record is to come from; 0 for no one's.
    std::int32_t justRead_ = 0;
    std::unordered_map<std::uint32_t, std::optional<std::string>> userNames_;
};

class LinuxProcessStream : public ProcessStream {
public:
    /// `programFolder` is the folder of the running program, beside which vantoro-top lies; `override`, the value of
    /// the environment variable VANTORO_TOP, names another program instead (an empty one does not).
    LinuxProcessStream(const std::string& programFolder, const std::optional<std::string>& override);

    ProgramCommand stream(int samples, int intervalSeconds, int rows) const override;
    ProgramCommand pathList() const override;
    std::string streamName() const override { return name_; }
    std::string pathListName() const override { return name_ + " --paths"; }

private:
    std::string program_;
    /// Without the folder, where it is this project's own.
    std::string name_;
};

} // namespace vantoro
