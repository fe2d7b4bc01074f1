// Which processes are alive, and ending them: by what a process is, not by a number that may be another's by now.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// A process that is alive. One that has ended and only waits to be asked for its status is not.
struct LivingProcess {
    std::int32_t pid = 0;
    std::int32_t parentPid = 0;
    /// The leaders of its process group and its session; 0 where not known.
    std::int32_t groupPid = 0;
    std::int32_t sessionPid = 0;
    /// When it started, in a unit of the platform's: with the pid, which process this is. 0 where not known.
    std::uint64_t birth = 0;
    /// The same as seconds since 1970; 0 where not known.
    double startedAt = 0;

    bool operator==(const LivingProcess&) const = default;
};

/// Whether a process is asked to end, which it may refuse or use to save its work, or is ended.
enum class QuitManner { ask, force };

enum class QuitAnswer {
    reached,
    gone,    ///< it has ended, whatever its number stands for now
    refused, ///< the system does not let this user end it
};

/// Used from one thread at a time.
class ProcessControl {
public:
    virtual ~ProcessControl() = default;

    /// This program's own.
    virtual std::int32_t ownPid() const = 0;
    /// Fills `alive` with every process that is; leaves it empty on failure.
    virtual void list(std::vector<LivingProcess>& alive) = 0;
    /// None when no living process has this number.
    virtual std::optional<LivingProcess> find(std::int32_t pid) = 0;
    /// The working folder of exactly this process; empty where it has ended or the system does not tell.
    virtual std::string folder(const LivingProcess& process) = 0;
    /// Asks or ends exactly this process; a successor with the same number is left alone.
    virtual QuitAnswer end(const LivingProcess& process, QuitManner manner) = 0;
};

} // namespace vantoro
