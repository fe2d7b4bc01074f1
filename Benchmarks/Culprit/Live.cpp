// Each load is started as a user would: typed into an interactive shell on a terminal of its own. The truth is the
// kernel's account of that session, living and reaped, read four times a second, and wait4's for the whole of it.
#include "Tables.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace culprit {

namespace {

namespace files = std::filesystem;
constexpr int watchedSeconds = 46;
constexpr int loadSeconds = watchedSeconds + 14;

struct Load {
    const char* name;
    /// What it must be called.
    const char* job;
    const char* typed;
    /// What the file of the job's name does, PARTS times at once; null when there is no such file.
    const char* script;
};

/// Works for so many microseconds.
constexpr const char* burn =
    "#!/bin/bash\ne=$((${EPOCHREALTIME/./} + $1))\nwhile ((${EPOCHREALTIME/./} < e)); do :; done\n";
constexpr const char* wholeScript = "#!/bin/bash\nwork() {\n$WORK\n}\n"
                                    "for ((i = 1; i < PARTS; ++i)); do work & done\nwork\nwait\n";
constexpr std::array<Load, 9> loads{{
    {"steady", "steady.sh", "./steady.sh", "while ((SECONDS < LONG)); do :; done"},
    {"fork storm", "storm.sh", "./storm.sh", "while ((SECONDS < LONG)); do /bin/true; done"},
    {"0.3 s jobs", "quick.sh", "./quick.sh", "while ((SECONDS < LONG)); do ./burn 300000; done"},
    {"3 s jobs", "slow.sh", "./slow.sh", "while ((SECONDS < LONG)); do ./burn 3000000; done"},
    {"build", "make", "make -j$((2 * PARTS))", nullptr},
    {"pool", "pool.sh", "./pool.sh", "for i in 1 2 3 4; do ./burn LONG000000 & done; wait"},
    {"nice 19", "tidy.sh", "nice -n 19 ./tidy.sh", "while ((SECONDS < LONG)); do :; done"},
    {"bursts", "bursts.sh", "./bursts.sh",
     "while ((SECONDS < LONG)); do ./burn 5000000 & ./burn 5000000; sleep 2; done"},
    {"disk", "copy.sh", "./copy.sh",
     "f=copied$i; while ((SECONDS < LONG)); do dd if=/dev/zero of=$f bs=1M count=300 conv=fsync; cat $f >$f.again; "
     "done"},
}};

double now() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void write(const files::path& path, const std::string& text) {
    std::ofstream(path) << text;
    files::permissions(path, files::perms::owner_all);
}

std::string filled(std::string text, const std::string& word, const std::string& by) {
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + by.size()))
        text.replace(at, word.size(), by);
    return text;
}

std::string filled(std::string text, int parts) {
    return filled(filled(std::move(text), "LONG", std::to_string(loadSeconds)), "PARTS", std::to_string(parts));
}

/// Enough small sources to keep two compilers busy for long.
void makeSources(const files::path& folder) {
    std::string makefile = "all: $(addsuffix .o,$(basename $(wildcard *.c)))\n%.o: %.c\n\tcc -O2 -c -o $@ $<\n";
    write(folder / "Makefile", makefile);
    for (int i = 0; i < 600; ++i) {
        std::string source;
        for (int j = 0; j < 90; ++j)
            source += fmt::format("int f{0}(int *a, int n) {{ int s = {1}; for (int i = 0; i < n; ++i) {{ s += a[i] * "
                                  "(i ^ {0}); if (s & {0}) s ^= a[n - 1 - i]; }} return s; }}\n",
                                  j, i);
        std::ofstream(folder / fmt::format("part{}.c", i)) << source;
    }
}

/// An interactive shell on a terminal of its own.
class Terminal {
public:
    explicit Terminal(const files::path& folder) : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0)
            throw std::runtime_error("no terminal to be had");
        const std::string name = ::ptsname(master_);
        shell_ = ::fork();
        if (shell_ == 0) {
            ::setsid();
            const int terminal = ::open(name.c_str(), O_RDWR);
            ::ioctl(terminal, TIOCSCTTY, 0);
            for (const int standard : {0, 1, 2})
                ::dup2(terminal, standard);
            if (::chdir(folder.c_str()) == 0)
                ::execlp("bash", "bash", "--norc", "--noprofile", "-i", nullptr);
            std::_Exit(127);
        }
        reader_ = std::thread([this] {
            std::array<char, 4096> bytes{};
            pollfd waiting{.fd = master_, .events = POLLIN, .revents = 0};
            while (!isDone_)
                if (::poll(&waiting, 1, 100) > 0 && ::read(master_, bytes.data(), bytes.size()) <= 0)
                    return;
        });
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() { close(); }

    void type(const std::string& line) const {
        const std::string text = line + "\n";
        if (::write(master_, text.data(), text.size()) < 0)
            throw std::runtime_error("the terminal is gone");
    }
    pid_t shell() const { return shell_; }

    /// Ends whatever runs; the processor seconds of the shell and all that it and its children waited for.
    double close() {
        if (shell_ <= 0)
            return 0;
        type("\x03");
        type("\x03");
        type("exit");
        type("exit");
        rusage usage{};
        int status = 0;
        const double patience = now() + 5;
        while (::wait4(shell_, &status, WNOHANG, &usage) == 0) {
            if (now() > patience)
                ::kill(shell_, SIGHUP);
            if (now() > patience + 2)
                ::kill(shell_, SIGKILL);
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        isDone_ = true;
        reader_.join();
        ::close(master_);
        shell_ = 0;
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

private:
    int master_ = -1;
    pid_t shell_ = 0;
    std::atomic<bool> isDone_ = false;
    std::thread reader_;
};

/// Processor seconds of all of the session's processes and of what they waited for.
double sessionSeconds(pid_t session) {
    double ticks = 0;
    for (const auto& entry : files::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        std::string text;
        if (!std::getline(file, text))
            continue;
        std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
        std::string state;
        long parent = 0;
        long group = 0;
        long itsSession = 0;
        fields >> state >> parent >> group >> itsSession;
        if (itsSession != session)
            continue;
        std::string skipped;
        for (int i = 0; i < 7; ++i)
            fields >> skipped;
        std::array<double, 4> its{};
        for (double& figure : its)
            fields >> figure;
        for (const double figure : its)
            ticks += figure;
    }
    return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// Processor seconds over time.
class Account {
public:
    explicit Account(pid_t session)
        : reader_([this, session] {
            while (!isDone_) {
                {
                    const std::lock_guard lock(mutex_);
                    // A child that is just being reaped can be in neither sum for a moment.
                    const double before = readings_.empty() ? 0 : readings_.back().second;
                    readings_.emplace_back(now(), std::max(before, sessionSeconds(session)));
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(250));
            }
        }) {}
    Account(const Account&) = delete;
    Account& operator=(const Account&) = delete;
    ~Account() {
        isDone_ = true;
        reader_.join();
    }

    /// Per cent of one core from then to then.
    double percent(double from, double to) {
        const std::lock_guard lock(mutex_);
        return (at(to) - at(from)) / (to - from) * 100;
    }

private:
    double at(double time) const {
        for (std::size_t i = 1; i < readings_.size(); ++i)
            if (readings_[i].first >= time) {
                const auto& [t0, s0] = readings_[i - 1];
                const auto& [t1, s1] = readings_[i];
                return s0 + (s1 - s0) * std::clamp((time - t0) / (t1 - t0), 0.0, 1.0);
            }
        return readings_.empty() ? 0 : readings_.back().second;
    }

    std::mutex mutex_;
    std::vector<std::pair<double, double>> readings_;
    std::atomic<bool> isDone_ = false;
    std::thread reader_;
};

std::string outputOf(const std::string& command) {
    FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr)
        throw std::runtime_error("cannot run " + command);
    std::string text;
    std::array<char, 65536> bytes{};
    for (std::size_t count = 0; (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0;)
        text.append(bytes.data(), count);
    ::pclose(pipe);
    return text;
}

bool tryLoad(const Load& load, const Options& options, const files::path& folder) {
    // A quarter of the machine is the least that anybody would notice.
    const int parts =
        options.parts > 0 ? options.parts : std::max(1, static_cast<int>(std::thread::hardware_concurrency()) / 2);
    if (load.script != nullptr)
        write(folder / load.job, filled(filled(wholeScript, "$WORK", load.script), parts));
    else
        makeSources(folder);
    Terminal terminal(folder);
    Account account(terminal.shell());
    std::this_thread::sleep_for(std::chrono::seconds(1));
    terminal.type(filled(load.typed, parts));
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const std::string text =
        outputOf(fmt::format("{} --explain --json --seconds {} 2>/dev/null", options.program, watchedSeconds));
    const double ended = now();
    const nlohmann::json report = nlohmann::json::parse(text);
    const nlohmann::json& verdict = report["verdict"];
    const nlohmann::json& suspect = verdict["suspect"];
    const std::string headline = verdict["headline"];
    const std::string state = verdict["state"];
    double from = ended - watchedSeconds + 2;
    double to = ended - 15;
    double stated = 0;
    bool isNamed = false;
    if (!suspect.is_null()) {
        isNamed = suspect["key"] == load.job &&
                  headline.find(suspect["friendlyName"].get<std::string>()) != std::string::npos && state != "idle" &&
                  state != "light";
        stated = suspect["totalCPU"];
        // A row speaks of the two seconds before it.
        for (const nlohmann::json& member : suspect["members"]) {
            from = std::min(from, member["firstSeen"].get<double>());
            to = std::max(to, member["lastSeen"].get<double>());
        }
    }
    const double cores = static_cast<double>(std::thread::hardware_concurrency());
    const double truth = account.percent(from, to);
    const double error = std::abs(stated - truth) / cores;
    const double seen = account.percent(ended - watchedSeconds, ended);
    fmt::print("| {} | {} | {} | {:.1f} | {:.1f} | {:.1f} | {} |\n", load.name, load.job, isNamed ? "yes" : "NO",
               truth / cores, isNamed ? stated / cores : NAN, isNamed ? error : NAN, headline);
    std::fflush(stdout);
    const double whole = terminal.close();
    if (options.showsMisses)
        fmt::print(stderr, "{}: {}\n  wait4 {:.1f} s; over the whole explanation {:.1f} s\n", load.name,
                   verdict["detail"].get<std::string>(), whole, seen / 100 * watchedSeconds);
    return isNamed && error <= 5;
}

} // namespace

int live(const Options& options) {
    const files::path folder = files::temp_directory_path() / fmt::format("culprit-{}", ::getpid());
    files::create_directories(folder);
    write(folder / "burn", burn);
    fmt::print("## Beside real loads on this machine ({} processors, {} s each)\n\n| load | job | named | its share, % "
               "of the machine | stated | "
               "error, points | headline |\n|---|---|---|---|---|---|---|\n",
               std::thread::hardware_concurrency(), watchedSeconds);
    int named = 0;
    int tried = 0;
    for (const Load& load : loads) {
        if (std::string(load.name).find(options.family) == std::string::npos)
            continue;
        ++tried;
        named += tryLoad(load, options, folder) ? 1 : 0;
    }
    files::remove_all(folder);
    fmt::print("\n{} of {} named with an error of at most 5 points.\n", named, tried);
    return named == tried ? 0 : 1;
}

} // namespace culprit
