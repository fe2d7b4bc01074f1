#include "Model/Live/InterruptWatcher.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <QSocketNotifier>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

std::atomic<int> writeEnd{-1};
std::atomic<bool> hasCome{false};

constexpr std::array stopSignals{SIGINT, SIGTERM, SIGHUP};

// Writing a byte is one of the few things a signal handler may do.
void writeByte(int /*signal*/) {
    hasCome = true;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writeEnd.load(), &byte, 1);
}

} // namespace

InterruptWatcher::InterruptWatcher(std::function<void()> onInterrupt) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return;
    for (std::size_t i = 0; i < ends.size(); ++i) {
        pipe_[i] = Descriptor(ends[i]);
        ::fcntl(ends[i], F_SETFD, FD_CLOEXEC);
    }
    notifier_ = std::make_unique<QSocketNotifier>(pipe_[0].number(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, handler = std::move(onInterrupt)] {
        char byte = 0;
        pipe_[0].read(&byte, 1);
        handler();
    });
    writeEnd = pipe_[1].number();
    for (std::size_t i = 0; i < stopSignals.size(); ++i)
        former_[i] = std::signal(stopSignals[i], writeByte);
    // Who was told to outlive its terminal (nohup) does.
    if (former_.back() == SIG_IGN)
        std::signal(SIGHUP, SIG_IGN);
}

InterruptWatcher::~InterruptWatcher() {
    if (!notifier_)
        return;
    for (std::size_t i = 0; i < stopSignals.size(); ++i)
        std::signal(stopSignals[i], former_[i]);
    writeEnd = -1;
}

bool InterruptWatcher::wasInterrupted() {
    return hasCome;
}

} // namespace vantoro
