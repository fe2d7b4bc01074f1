// The running processes and the machine's figures, kept up to date: preferably from one long-lived program that prints
// the process stream, else (refused, silent, dead, or by the user's choice) from the system's own process interfaces.
#pragma once

#include "Model/Records/Telemetry.h"
#include "Platform/Platform.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

class ProcessMonitorThread;

/// Lives on the main thread, which must run a Qt event loop. Streaming, parsing and sampling happen on a thread of its
/// own ("vantoro.top"); what crosses over is finished. Destroying the monitor ends all of it, the child processes
/// included.
class ProcessMonitor {
public:
    using SystemLine = vantoro::SystemLine;

    /// Which source is in use.
    struct Source {
        enum class Kind {
            ownProcessesOnly, ///< the system's process interfaces
            starting,         ///< nothing confirmed yet; also after stop
            system            ///< the process stream has delivered
        };
        Kind kind = Kind::starting;
        /// With ownProcessesOnly: the user or the environment asked for it.
        bool byChoice = false;

        bool operator==(const Source&) const = default;
    };

    enum class Mode { automatic, unprivileged };

    /// The mode asked for: "auto" or "unprivileged" in the environment wins, then "unprivileged" in the setting; any
    /// other text asks for nothing.
    static Mode mode(std::optional<std::string_view> environment, std::string_view setting);

    /// The time limits. A test may shorten them; the program never does.
    struct Timing {
        std::chrono::milliseconds watchdogFloor{10'000};
        /// The watchdog waits for this many intervals, but never less than its floor.
        int watchdogIntervals = 3;
        std::chrono::milliseconds firstFallbackSample{700};
        std::chrono::milliseconds fallbackSecond{1000};
        std::chrono::milliseconds pathListAge{12'000};
        std::chrono::milliseconds pathListPause{3'000};
        /// How long a program may take to print the path list, and to go after it was asked to.
        std::chrono::milliseconds pathListLimit{2'000};
        std::chrono::milliseconds terminationGrace{500};

        /// How long the stream may take to deliver its first block at this interval.
        std::chrono::milliseconds watchdog(int intervalSeconds) const;
    };

    /// Asks for the mode at each start.
    using ModeReader = std::function<Mode()>;

    ProcessMonitor(const Platform& platform, ModeReader currentMode, const Timing& timing);
    ~ProcessMonitor();
    ProcessMonitor(const ProcessMonitor&) = delete;
    ProcessMonitor& operator=(const ProcessMonitor&) = delete;

    /// Called on the main thread for every sample. Set before start.
    std::function<void(const std::vector<ProcessSample>&, const SystemLine&)> onUpdate;
    /// Called on the main thread, after the fact, for every change of source. Set before start.
    std::function<void(Source)> onSourceChange;

    /// (Re)starts: a sample every `intervalSeconds` (at least 1), of the `rows` busiest processes where the stream is
    /// the source.
    void start(int intervalSeconds, int rows);
    /// From the next sample on these processes are listed however little they do, while they live.
    void alsoList(std::vector<std::int32_t> pids);
    /// Ends all child processes and timers; the source is `starting` again.
    void stop();

    Source source() const { return source_; }
    /// Processes that could not be read; 0 while the stream is the source.
    int unreadableCount() const { return unreadableCount_; }

private:
    friend class ProcessMonitorThread;
    void setSource(Source source);
    void deliver(const std::vector<ProcessSample>& processes, const SystemLine& system, int hidden);

    Source source_;
    int unreadableCount_ = 0;
    ModeReader currentMode_;
    /// Tells the results of this start from those of one before that were still on their way.
    std::uint64_t generation_ = 0;
    std::unique_ptr<ProcessMonitorThread> thread_;
};

} // namespace vantoro
