// The engine, and the trial of what it installs: a new version is on trial until a window of it was seen. What happens
// when it fails happens in a signal handler, since nothing else of a program that crashed or hangs can be relied on:
// everything it needs is made ready beforehand, and it calls nothing but the kernel.
#include "Platform/Linux/Updates/AppcastEngine.h"
#include "Platform/Linux/Updates/Copy/InstalledCopy.h"
#include "Platform/UpdateEngine.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr int mostStarts = 2;
/// The alarm rings when no window was seen in time.
constexpr std::array failures{SIGALRM, SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

struct Trial {
    UpdateFolder folder;
    std::string installed;
    /// Where the old copy lies.
    std::string previous;
    std::string program;
    std::vector<std::string> words;
    std::vector<char*> arguments;
    Descriptor installedFolder;
    std::array<struct sigaction, failures.size()> before = {};
    /// Where the handler runs when it is the stack that has overflowed.
    std::vector<char> stack;
};

/// Of this process. The handler takes it away, so that it acts once.
std::atomic<Trial*> current{nullptr};

std::string ownProgram() {
    std::array<char, PATH_MAX> path = {};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

/// Gives the old copy its place back, unless the copy has been replaced again or is about to be.
bool giveWay(const Trial& trial) {
    struct stat opened = {};
    struct stat named = {};
    if (::flock(trial.installedFolder.number(), LOCK_EX | LOCK_NB) != 0 ||
        ::fstat(trial.installedFolder.number(), &opened) != 0 || ::stat(trial.installed.c_str(), &named) != 0 ||
        opened.st_ino != named.st_ino || opened.st_dev != named.st_dev)
        return false;
    return ::renameat2(AT_FDCWD, trial.previous.c_str(), AT_FDCWD, trial.installed.c_str(), RENAME_EXCHANGE) == 0;
}

void setAlarm(double seconds) {
    struct itimerval timer = {};
    timer.it_value.tv_sec = static_cast<time_t>(seconds);
    timer.it_value.tv_usec = static_cast<suseconds_t>((seconds - std::floor(seconds)) * 1e6);
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

/// Starts what now lies in the copy's place instead of this program. Comes back only when that fails.
void startAnew(const Trial& trial) {
    setAlarm(0);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    constexpr unsigned firstOwnDescriptor = 3;
    ::close_range(firstOwnDescriptor, ~0U, CLOSE_RANGE_CLOEXEC);
    ::execv(trial.program.c_str(), trial.arguments.data());
}

void failed(int signal) {
    Trial* const trial = current.exchange(nullptr);
    if (trial != nullptr && (trial->folder.record().starts < mostStarts || giveWay(*trial)))
        startAnew(*trial);
    // A late alarm is nothing to end for.
    if (signal == SIGALRM)
        return;
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void watch(Trial& trial, double patience) {
    current = &trial;
    trial.stack.resize(static_cast<std::size_t>(SIGSTKSZ) * 2);
    const stack_t stack{.ss_sp = trial.stack.data(), .ss_flags = 0, .ss_size = trial.stack.size()};
    ::sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_handler = failed;
    action.sa_flags = SA_ONSTACK | SA_RESTART;
    for (std::size_t i = 0; i < failures.size(); ++i)
        ::sigaction(failures[i], &action, &trial.before[i]);
    setAlarm(patience);
}

/// Ends the watch; the trial, where this process is on one.
std::unique_ptr<Trial> unwatched() {
    std::unique_ptr<Trial> trial(current.exchange(nullptr));
    if (!trial)
        return nullptr;
    setAlarm(0);
    for (std::size_t i = 0; i < failures.size(); ++i)
        ::sigaction(failures[i], &trial->before[i], nullptr);
    const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
    ::sigaltstack(&none, nullptr);
    return trial;
}

} // namespace

std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup) {
    // Of this copy, not of the one that may have taken its place by then.
    std::string preparer = setup.program.substr(0, setup.program.rfind('/') + 1) + "vantoro-update";
    return std::make_shared<AppcastEngine>(std::move(setup), std::move(preparer),
                                           [source = std::mt19937(std::random_device()())]() mutable {
                                               return std::uniform_real_distribution<double>(0, 1)(source);
                                           });
}

std::optional<std::string> beginStart(const ProgramStart& start) {
    const InstalledCopy copy(ownProgram());
    const auto installed = manifestIn(copy.folder());
    if (!installed || installed->build != start.build)
        return std::nullopt;
    std::optional<std::string> gaveWay;
    for (UpdateFolder& folder : copy.idleFolders()) {
        UpdateRecord record = folder.record();
        if (record.from == start.build && record.starts >= mostStarts)
            gaveWay = record.version;
        const auto previous = record.to == start.build ? manifestOfWholeCopy(folder.copy()) : std::nullopt;
        if (!previous || previous->build != record.from)
            continue;
        auto trial = std::make_unique<Trial>();
        trial->installed = copy.folder();
        trial->previous = folder.copy();
        trial->program = copy.program();
        trial->words = start.arguments;
        for (std::string& word : trial->words)
            trial->arguments.push_back(word.data());
        trial->arguments.push_back(nullptr);
        trial->installedFolder = Descriptor(::open(copy.folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        // Each of the starts that were allowed has ended before its time, and not by a signal that could be handled.
        if (record.starts >= mostStarts) {
            trial->folder = std::move(folder);
            if (giveWay(*trial))
                startAnew(*trial);
            return std::nullopt;
        }
        ++record.starts;
        // What cannot be counted would start again for ever.
        if (!folder.setRecord(record))
            return std::nullopt;
        trial->folder = std::move(folder);
        watch(*trial.release(), start.patience);
        return std::nullopt;
    }
    return gaveWay;
}

void startSucceeded() {
    unwatched();
}

void startEnded() {
    const std::unique_ptr<Trial> trial = unwatched();
    if (!trial)
        return;
    UpdateRecord record = trial->folder.record();
    --record.starts;
    trial->folder.setRecord(record);
}

} // namespace vantoro
