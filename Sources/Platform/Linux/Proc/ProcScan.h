// All processes of /proc, read over and over at the least cost: one system call per process and round, and next to no
// work for a process that did nothing since the last one.
#pragma once

#include "Platform/AppIdentity.h"
#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Proc/ReapedWork.h"
#include "Platform/Linux/Reading/KeptFile.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantoro {

/// Raises this process's limit of open descriptors as far as it may go on its own.
void raiseDescriptorLimit();

/// How many descriptors of processes may be kept open: the present limit less 128 for everything else.
std::size_t descriptorBudget();

/// One process as it was when last read.
struct ScannedProcess {
    std::int32_t pid = 0;
    /// It is known to be gone; it leaves the list at the next listing.
    bool ended = false;
    char state = '?';
    std::int32_t parentPid = 0;
    std::int32_t groupPid = 0;
    std::int32_t sessionPid = 0;
    std::uint64_t flags = 0;
    std::uint64_t userTicks = 0;
    std::uint64_t systemTicks = 0;
    std::uint64_t startTicks = 0;
    std::uint64_t threads = 0;
    std::uint64_t residentPages = 0;
    /// CPU time of its ended children, as it stands.
    std::uint64_t childTicks = 0;
    /// CPU time since the reading before, its own and that of children who ended. At the first reading all of it where
    /// the process started since the last listing, else none.
    std::uint64_t spentTicks = 0;
    std::uint64_t reapedTicks = 0;
    /// Readings of this very process; a successor under the same pid starts over.
    std::uint64_t readings = 0;
    std::string name;

    /// What is asked for once and kept until the process becomes another program.
    std::optional<std::uint32_t> uid;
    bool uidSettled = false;
    std::optional<std::string> path;

    std::uint64_t totalTicks() const { return userTicks + systemTicks; }
    bool isKernelThread() const { return (flags & ProcessStat::kernelThreadFlag) != 0; }

private:
    friend class ProcScan;
    friend class ProcJobs;
    /// What was told of its origin, and the readings at which the group and all of it are to be asked for again.
    struct Told {
        ProcessOrigin origin;
        std::uint64_t nextGroup = 0;
        std::uint64_t next = 0;
        /// What it is by its name, and of a shell: no script and no command line that it was started for.
        enum class Role : std::uint8_t { unknown, program, shell, door } role = Role::unknown;
        std::optional<bool> takesCommands;
    };
    /// What the kept descriptor reads.
    enum class Kept : std::uint8_t { stat, schedule };

    std::unique_ptr<Told> told_;
    Descriptor descriptor_;
    Kept kept_ = Kept::stat;
    /// Readings in a row that found nothing changed, and how many of the last ones were spared.
    int quietReadings_ = 0;
    int sparedReadings_ = 0;
    /// The kernel does not count this process's time on a processor where it is asked for.
    bool hasNoSchedule_ = false;
    std::array<char, 64> schedule_;
    std::size_t scheduleBytes_ = 0;
    /// The bytes the figures were parsed from: as long as they come back unchanged there is nothing to do.
    std::array<char, 224> parsed_;
    std::size_t parsedBytes_ = 0;
};

class ProcScan {
public:
    /// `root` is the folder that holds proc; at most `descriptorBudget` descriptors are kept, processes beyond that are
    /// opened for each reading.
    ProcScan(const std::string& root, std::size_t descriptorBudget);
    ~ProcScan();

    /// Brings the list up to date and begins a round. `kernel` is what the kernel counted just before: while its count
    /// of processes ever started stands still no process can be new and the folder is not read again; without it the
    /// folder is always read. `bootTicks` is the time since boot, as processes' starts count; 0 where only the list is
    /// wanted. False when the folder cannot be read; the list is then empty.
    bool list(const std::optional<KernelStat>& kernel, std::uint64_t bootTicks);

    /// By rising pid. References hold until the next listing or the next `add`.
    std::span<ScannedProcess> processes() { return processes_; }
    /// How often it was listed.
    std::uint64_t rounds() const { return rounds_; }
    /// Those from this pid on: who is started later mostly has a greater one.
    std::span<ScannedProcess> processesFrom(std::int32_t pid);
    /// None when it is not in the list.
    ScannedProcess* find(std::int32_t pid);
    /// Puts a process into the list that came up since the last listing.
    ScannedProcess& add(std::int32_t pid);

    /// Reads /proc/PID/stat. False when the process is gone or cannot be read.
    ///
    /// Of a process with one thread that has long done nothing only /proc/PID/schedstat is read, a quarter of the
    /// kernel's work: while its time on a processor stands still, nothing else of it can have changed by its own doing.
    /// (What others do to it, such as paging it out, shows a few readings later.)
    bool read(ScannedProcess& process);
    /// The real owner; asked for when the process is new, soon after (a service may have laid down its privileges by
    /// then) and when the command name changes. None when it cannot be read.
    std::optional<std::uint32_t> uid(ScannedProcess& process);
    /// Full path of the executable, without the mark of a deleted file; where the link is refused, an absolute path
    /// that the process gives as its first argument; empty when unknown. Asked for once per program.
    const std::string& path(ScannedProcess& process);
    /// The contents of /proc/PID/`file`, cut at `limit` bytes.
    std::optional<std::string> readFile(const ScannedProcess& process, const char* file, std::size_t limit) const;
    /// The parent where it is in the list, read if it was not yet; the first process is nobody's.
    ScannedProcess* parentOf(const ScannedProcess& process);

    /// CPU time of this round that no process's own shows, since it is that of children who ended; with what the
    /// processes spent never more than the kernel was busy. To be asked once a round, when all were read.
    const std::vector<ReapedWork::Credit>& settle();
    /// One that ended in this round, as it was last read.
    ScannedProcess* findEnded(std::int32_t pid);

private:
    struct FolderCloser {
        void operator()(void* folder) const;
    };

    void keepOnly(const std::vector<std::int32_t>& pids);
    void forget(ScannedProcess& process);
    void bury(ScannedProcess& process);
    void take(ScannedProcess& process, const ProcessStat& stat);
    bool hasNotRun(ScannedProcess& process);
    void watchSchedule(ScannedProcess& process);
    std::ptrdiff_t readStat(ScannedProcess& process, char* buffer, std::size_t size);
    std::string readPath(const ScannedProcess& process) const;

    Descriptor folder_;
    std::unique_ptr<void, FolderCloser> listing_;
    std::size_t descriptorBudget_;
    std::size_t descriptorsKept_ = 0;
    std::optional<std::uint64_t> listedForks_;
    int listingsSkipped_ = 0;
    std::vector<ScannedProcess> processes_;
    std::vector<ScannedProcess> previous_;
    std::vector<std::int32_t> pids_;
    ReapedWork reaped_;
    bool isSettled_ = true;
    std::uint64_t rounds_ = 0;
    /// What this round's readings found: who ended, and how much all have spent.
    std::vector<ScannedProcess> ended_;
    std::uint64_t spentTicks_ = 0;
    /// The kernel's busy time, and how much of it fell between the last two listings; 0 where nobody knows.
    std::optional<std::uint64_t> busyTicks_;
    std::uint64_t busySince_ = 0;
    std::uint64_t bootTicks_ = 0;
    std::uint64_t previousBootTicks_ = 0;
};

} // namespace vantoro
