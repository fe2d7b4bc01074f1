// All processes of /proc, read over and over at the least cost: one system call per process and round, and next to no
// work for a process that did nothing since the last one.
#pragma once

#include "Platform/AppIdentity.h"
#include "Platform/Linux/Proc/ProcStat.h"
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
    std::uint64_t flags = 0;
    std::uint64_t userTicks = 0;
    std::uint64_t systemTicks = 0;
    std::uint64_t startTicks = 0;
    std::uint64_t threads = 0;
    std::uint64_t residentPages = 0;
    /// CPU time at the reading before the last; meaningless before the second.
    std::uint64_t previousTicks = 0;
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
    /// What was told of its origin, and the readings at which the group and all of it are to be asked for again.
    struct Told {
        ProcessOrigin origin;
        std::uint64_t nextGroup = 0;
        std::uint64_t next = 0;
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

    /// Brings the list up to date. `forks` is the kernel's count of processes ever started, taken just before: while it
    /// stands still no process can be new and the folder is not read again; without it the folder is always read. False
    /// when the folder cannot be read; the list is then empty.
    bool list(std::optional<std::uint64_t> forks);

    /// By rising pid. References hold until the next listing or the next `add`.
    std::span<ScannedProcess> processes() { return processes_; }
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
    /// Where a process that was read comes from: its path or mark, what it runs, its control group and whether a shell
    /// of that group started it. Asked for when the process is new, soon after (by then it may have been placed in its
    /// group), then every eighth reading. Processes that are not in the list count as nobody's parents.
    const ProcessOrigin& origin(ScannedProcess& process);

private:
    struct FolderCloser {
        void operator()(void* folder) const;
    };

    void keepOnly(const std::vector<std::int32_t>& pids);
    void forget(ScannedProcess& process);
    bool hasNotRun(ScannedProcess& process);
    void watchSchedule(ScannedProcess& process);
    std::ptrdiff_t readStat(ScannedProcess& process, char* buffer, std::size_t size);
    std::string readPath(std::int32_t pid) const;
    const std::string& controlGroup(ScannedProcess& process);
    std::string readSubject(ScannedProcess& process);
    void askAncestors(ScannedProcess& process);
    ScannedProcess* parentOf(const ScannedProcess& process);

    Descriptor folder_;
    std::unique_ptr<void, FolderCloser> listing_;
    std::size_t descriptorBudget_;
    std::size_t descriptorsKept_ = 0;
    std::optional<std::uint64_t> listedForks_;
    int listingsSkipped_ = 0;
    std::vector<ScannedProcess> processes_;
    std::vector<ScannedProcess> previous_;
    std::vector<std::int32_t> pids_;
};

/// The executable's path in the text of /proc/PID/cmdline: the first argument if it is an absolute path, without the
/// arguments that a program may have written into the same text. Empty when there is none.
std::string_view pathInCommandLine(std::string_view text);

} // namespace vantoro
