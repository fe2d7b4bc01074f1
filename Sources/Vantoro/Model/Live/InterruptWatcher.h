// Tells the event loop that somebody asked the program to stop (SIGINT or SIGTERM, or its terminal is gone: SIGHUP), so
// that it can finish what it holds.
#pragma once

#include "Platform/Posix/Descriptor.h"

#include <array>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace vantoro {

/// At most one at a time, on the main thread. Its destructor gives the signals their former meaning back.
class InterruptWatcher {
public:
    explicit InterruptWatcher(std::function<void()> onInterrupt);
    ~InterruptWatcher();
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

    /// Whether one of the signals has come to any watcher of this process, told by then or not.
    static bool wasInterrupted();

private:
    std::array<Descriptor, 2> pipe_;
    std::array<void (*)(int), 3> former_{};
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace vantoro
