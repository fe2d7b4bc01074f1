// Where processes come from, and which job they do the work of.
#pragma once

#include "Platform/Linux/Proc/ProcScan.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantoro {

/// A job is what somebody or something started in one piece: the process group below a shell that takes commands, below
/// what let a session in or starts things by the clock, however many groups of their own it divides itself into; with
/// none of these above, the process group. It is named for its leader, a pipeline for the member that works most, and
/// what only runs something else (sudo, timeout, a command line's shell) for what it runs.
class ProcJobs {
public:
    /// The scan must outlive it.
    explicit ProcJobs(ProcScan& scan) : scan_(scan) {}

    /// Where a process that was read comes from: its path or mark, what it runs, its control group, whether a shell of
    /// that group started it, and its job's name. Asked for when the process is new, soon after (by then it may have
    /// been placed in its group), then ever less often, at least every sixteenth reading. Processes that are not in the
    /// list count as nobody's parents. One that ended keeps what was told last.
    const ProcessOrigin& origin(ScannedProcess& process);

    /// CPU time of this round that no process's own shows, and whose row it belongs to: the job's leader's, who may
    /// have ended in this round itself (`ended`), else that of whoever waited for the ended. To be asked once a round,
    /// when all were read; holds until the next listing.
    struct Unseen {
        ScannedProcess* process = nullptr;
        std::uint64_t ticks = 0;
    };
    std::vector<Unseen> unseenWork();

private:
    using Role = ScannedProcess::Told::Role;
    struct Job {
        /// The topmost process of the job that lives; null for what is nobody's job.
        ScannedProcess* top = nullptr;
        /// What stands above it: nothing known, a shell that takes commands, a door, a shell that is gone.
        enum class Above : std::uint8_t { unknown, shell, door, formerShell };
        Above above = Above::unknown;
        /// The way up led past somebody who is gone.
        bool hasGap = false;
    };
    /// A job's name, by its process group: it stays when the leader ends.
    struct Name {
        std::string text;
        std::uint64_t leaderStart = 0;
        std::int32_t namesake = 0;
        std::uint64_t work = 0;
        bool isPreliminary = true;
        std::uint64_t next = 0;
        std::uint64_t lastRound = 0;
    };

    ScannedProcess::Told& told(ScannedProcess& process);
    const std::string& controlGroup(ScannedProcess& process);
    std::string readSubject(ScannedProcess& process);
    void askAncestors(ScannedProcess& process);
    Role roleOf(ScannedProcess& process);
    bool takesCommands(ScannedProcess& process);
    bool onlyRunsOthers(ScannedProcess& process);
    ScannedProcess* livingAt(std::int32_t pid);
    Job jobOf(ScannedProcess& process);
    ScannedProcess& doerOf(ScannedProcess& process);
    ScannedProcess& namesakeOf(const Job& job, bool isGroup);
    const std::string& nameOf(const Job& job);
    ScannedProcess* rowOf(const ReapedWork::Credit& credit);

    ProcScan& scan_;
    std::unordered_map<std::int32_t, Name> names_;
};

} // namespace vantoro
