// vantoro_peers SECONDS VANTORO MACHINE: the CPU time and memory of `VANTORO --record` over some time, its stream
// program included, beside other monitors of the kind on a terminal of their own, all at 2 s. It records twice: with
// the sensors that this machine has, and with those of the unpacked recorded MACHINE; the dearer of the two is
// compared. One after the other, whole processes, start-up included; CPU time as the kernel accounts it for a process
// and the children it waited for.

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Cost {
    double cpuSeconds = 0;
    double pssMegabytes = 0;
    bool ran = false;
};

double pssKilobytes(pid_t pid) {
    std::ifstream rollup(fmt::format("/proc/{}/smaps_rollup", pid));
    std::string word;
    double kilobytes = 0;
    while (rollup >> word)
        if (word == "Pss:")
            rollup >> kilobytes;
    return kilobytes;
}

/// The process and all that descend from it.
double pssOfTree(pid_t pid) {
    double sum = pssKilobytes(pid);
    std::error_code error;
    for (const auto& task : std::filesystem::directory_iterator(fmt::format("/proc/{}/task", pid), error)) {
        std::ifstream children(task.path() / "children");
        pid_t child = 0;
        while (children >> child)
            sum += pssOfTree(child);
    }
    return sum;
}

/// Reads what the program draws, so that it never waits for its terminal.
void drain(int terminal, std::chrono::milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    std::array<char, 65536> bytes{};
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
        pollfd waiting{.fd = terminal, .events = POLLIN, .revents = 0};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now);
        if (::poll(&waiting, 1, static_cast<int>(left.count()) + 1) > 0 &&
            ::read(terminal, bytes.data(), bytes.size()) <= 0)
            return;
    }
}

Cost measure(const std::vector<std::string>& command, std::chrono::seconds time) {
    winsize size{.ws_row = 50, .ws_col = 160, .ws_xpixel = 0, .ws_ypixel = 0};
    int terminal = -1;
    const pid_t pid = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (pid == 0) {
        std::vector<char*> arguments;
        for (const std::string& argument : command)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    drain(terminal, time);
    const double kilobytes = pssOfTree(pid);
    ::kill(pid, SIGINT);
    drain(terminal, std::chrono::milliseconds(500));
    rusage usage{};
    bool reaped = ::wait4(pid, nullptr, WNOHANG, &usage) == pid;
    if (!reaped) {
        ::kill(pid, SIGTERM);
        reaped = ::wait4(pid, nullptr, 0, &usage) == pid;
    }
    ::close(terminal);
    const auto seconds = [](const timeval& value) {
        return static_cast<double>(value.tv_sec) + static_cast<double>(value.tv_usec) / 1e6;
    };
    return {.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime),
            .pssMegabytes = kilobytes / 1024,
            .ran = reaped && kilobytes > 0};
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: vantoro_peers SECONDS VANTORO MACHINE\n", stderr);
        return 2;
    }
    const std::chrono::seconds time(std::strtol(argv[1], nullptr, 10));
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / fmt::format("peers-{}", ::getpid());
    std::filesystem::create_directories(folder / "btop");
    std::ofstream(folder / "btop" / "btop.conf") << "update_ms = 2000\n";
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    ::setenv("TERM", "xterm-256color", 1);
    ::setenv("LANG", "C.UTF-8", 1);

    const auto print = [time](const std::string& name, const Cost& cost, const std::string& remark) {
        fmt::print("{:<18}{:>8.3f} s CPU in {} s{:>9.1f} MB PSS   {}\n", name, cost.cpuSeconds, time.count(),
                   cost.pssMegabytes, remark);
    };
    const auto record = [&](const std::string& name) {
        const std::filesystem::path file = folder / "recording.jsonl";
        const Cost cost = measure({argv[2], "--record", file}, time);
        std::filesystem::remove(file); // a recording is never written over
        print(name, cost,
              fmt::format("{:.3f} s CPU a minute", cost.cpuSeconds * 60 / static_cast<double>(time.count())));
        return cost;
    };
    const Cost plain = record("vantoro --record");
    ::setenv("VANTORO_SYSFS_ROOT", argv[3], 1);
    const Cost withSensors = record("  with sensors");
    const double own = std::max(plain.cpuSeconds, withSensors.cpuSeconds);
    struct Peer {
        std::vector<std::string> command;
        double limit;
    };
    const std::vector<Peer> peers{
        {{"top", "-d", "2"}, 0.55}, {{"htop", "-d", "20"}, 0.25}, {{"btop", "--utf-force"}, 0.55}};
    bool good = plain.ran && withSensors.ran;
    for (const Peer& peer : peers) {
        const Cost cost = measure(peer.command, time);
        const double ratio = cost.cpuSeconds > 0 ? own / cost.cpuSeconds : 0;
        good = good && cost.ran && ratio <= peer.limit;
        print(peer.command[0], cost,
              fmt::format("vantoro/{}: {:.2f} (at most {:.2f})", peer.command[0], ratio, peer.limit));
    }
    std::filesystem::remove_all(folder);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
