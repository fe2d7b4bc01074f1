// What the operating system says of each process.
#pragma once

#include "Platform/AppIdentity.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// What anyone may know of a process.
struct ShortProcessRecord {
    /// The command name as the kernel keeps it (short, possibly cut).
    std::string name;
    /// The real owner.
    std::uint32_t uid = 0;
    /// When it started, in a unit of the platform's: tells a reused pid from its predecessor. 0 where not known.
    std::uint64_t startTime = 0;

    bool operator==(const ShortProcessRecord&) const = default;
};

/// What the system may refuse for another user's process.
struct TaskRecord {
    std::uint64_t residentBytes = 0;
    /// Cumulative CPU time.
    std::uint64_t userNanoseconds = 0;
    std::uint64_t systemNanoseconds = 0;

    bool operator==(const TaskRecord&) const = default;
};

/// CPU time since the listing before that is not the difference of two readings of one process.
struct UnseenWork {
    std::int32_t pid = 0;
    std::uint64_t nanoseconds = 0;

    bool operator==(const UnseenWork&) const = default;
};

/// Used from one thread at a time. A process that ends between two calls costs only itself: the calls for it give none.
class ProcessTable {
public:
    virtual ~ProcessTable() = default;

    /// Fills `pids` with every process there is, in the system's order; leaves it empty on failure.
    virtual void listPids(std::vector<std::int32_t>& pids) = 0;
    virtual std::optional<ShortProcessRecord> shortRecord(std::int32_t pid) = 0;
    virtual std::optional<TaskRecord> taskRecord(std::int32_t pid) = 0;
    /// Full path of the executable; empty when unknown or refused.
    virtual std::string path(std::int32_t pid) = 0;
    /// All that it tells of where it comes from; here no more than its path.
    virtual ProcessOrigin origin(std::int32_t pid) { return {.path = path(pid)}; }
    /// After a round of readings, what they do not show: of processes that started since the listing before, and of
    /// children that ended, on the account of whoever they worked for, who may have ended as well.
    virtual std::vector<UnseenWork> unseenWork() { return {}; }
    /// The account's name; none when there is no such account.
    virtual std::optional<std::string> userName(std::uint32_t uid) = 0;
    /// Closes what is kept open from one reading to the next: nobody means to read soon. The next one starts anew.
    virtual void rest() {}
};

} // namespace vantoro
