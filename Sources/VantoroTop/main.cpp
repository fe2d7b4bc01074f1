// The process stream, for a machine whose own `top` does not print in this format.
#include "Model/Text/TerminalText.h"
#include "Platform/Linux/Proc/ProcScan.h"
#include "VantoroTop/Arguments.h"
#include "VantoroTop/Sampler.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

using namespace vantoro;

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::int64_t nanoseconds(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

double seconds(clockid_t clock) {
    return static_cast<double>(nanoseconds(clock)) / static_cast<double>(nanosecondsPerSecond);
}

void sleepUntil(std::int64_t deadline) {
    const timespec time{.tv_sec = deadline / nanosecondsPerSecond, .tv_nsec = deadline % nanosecondsPerSecond};
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

/// False when no one reads any more, or nothing more fits: errno tells.
bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd room{.fd = file, .events = POLLOUT, .revents = 0};
            ::poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

/// A stream without a reader is a waste: it ends with the program that started it.
void endWithParent() {
    const pid_t parent = ::getppid();
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) // it ended before the call
        ::_exit(0);
}

bool printStream(const top::StreamRequest& request) {
    endWithParent();
    // Lets the kernel join this program's wake-ups with others' nearby.
    constexpr unsigned long slackNanoseconds = 20'000'000;
    ::prctl(PR_SET_TIMERSLACK, slackNanoseconds);

    const std::int64_t interval = request.intervalSeconds * nanosecondsPerSecond;
    top::Sampler sampler({.origins = request.origins});
    std::string block;
    std::int64_t next = nanoseconds(CLOCK_MONOTONIC);
    for (std::uint32_t sample = 0; request.samples == 0 || sample < request.samples;
         sample += request.samples == 0 ? 0 : 1) {
        sleepUntil(next);
        top::Moment moment;
        moment.monotonicSeconds = seconds(CLOCK_MONOTONIC);
        moment.bootSeconds = seconds(CLOCK_BOOTTIME);
        const std::time_t now = std::time(nullptr);
        ::localtime_r(&now, &moment.localTime);
        block.clear();
        sampler.appendBlock(block, moment, request.rows, request.columns);
        if (!writeAll(STDOUT_FILENO, block))
            return false;
        // By the schedule, whatever the sample took; whole intervals that were missed are left out.
        next += interval;
        if (const std::int64_t late = nanoseconds(CLOCK_MONOTONIC) - next; late > 0)
            next += late / interval * interval;
    }
    return true;
}

bool printPaths() {
    ProcScan scan("/", 0);
    scan.list({}, 0);
    std::string text;
    for (ScannedProcess& process : scan.processes()) {
        // The link first: a process that has one needs no further look.
        if (const std::string& path = scan.path(process); !path.empty())
            top::appendPathLine(text, process.pid, path);
        else if (scan.read(process))
            top::appendPathLine(text, process.pid,
                                process.isKernelThread() ? "[" + process.name + "]" : "(" + process.name + ")");
    }
    return writeAll(STDOUT_FILENO, text);
}

bool print(const top::Request& request) {
    if (const auto* text = std::get_if<top::TextRequest>(&request))
        return writeAll(STDOUT_FILENO, text->text);
    const auto* const stream = std::get_if<top::StreamRequest>(&request);
    return stream != nullptr ? printStream(*stream) : printPaths();
}

} // namespace

int main(int count, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    raiseDescriptorLimit();
    const top::Request request = top::parseArguments({arguments + 1, arguments + (count > 0 ? count : 1)});
    if (const auto* bad = std::get_if<top::BadRequest>(&request)) {
        writeAll(STDERR_FILENO, "vantoro-top: " + terminalText(bad->reason) + "\n");
        return 2;
    }
    // Who stops reading has what was wanted.
    return print(request) || errno == EPIPE ? 0 : 1;
}
