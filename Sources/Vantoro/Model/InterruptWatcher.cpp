#include "Model/InterruptWatcher.h"

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

// Writing a byte is one of the few things a signal handler may do.
void writeByte(int /*signal*/) {
    hasCome = true;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writeEnd.load(), &byte, 1);
}

} // namespace

InterruptWatcher::InterruptWatcher(std::function<void()> onInterrupt) {
    if (::pipe(pipe_.data()) != 0)
        return;
    for (const int descriptor : pipe_)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, handler = std::move(onInterrupt)] {
        char byte = 0;
        [[maybe_unused]] const ssize_t count = ::read(pipe_[0], &byte, 1);
        handler();
    });
    writeEnd = pipe_[1];
    std::signal(SIGINT, writeByte);
    std::signal(SIGTERM, writeByte);
}

InterruptWatcher::~InterruptWatcher() {
    if (!notifier_)
        return;
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    writeEnd = -1;
    notifier_.reset();
    for (const int descriptor : pipe_)
        ::close(descriptor);
}

bool InterruptWatcher::wasInterrupted() {
    return hasCome;
}

} // namespace vantoro
