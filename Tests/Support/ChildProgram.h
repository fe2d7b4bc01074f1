// Programs run as the shell runs them, and waited for without a guess at how long they take.
#pragma once

#include "Support/Folders.h"
#include "Support/Golden.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantoro::testing {

/// Whether the condition came to hold within the (generous) limit.
bool comesTrue(const auto& condition, std::chrono::seconds limit = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// A child process in this process's environment; killed when it is no longer needed.
class ChildProgram {
public:
    explicit ChildProgram(std::vector<std::string> command) {
        std::vector<char*> arguments;
        for (std::string& word : command)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        for (const auto& [number, name] : {std::pair{STDOUT_FILENO, "/output"}, {STDERR_FILENO, "/errors"}})
            ::posix_spawn_file_actions_addopen(&files, number, (folder_.path() + name).c_str(), O_CREAT | O_WRONLY,
                                               0600);
        EXPECT_EQ(::posix_spawn(&pid_, arguments[0], &files, nullptr, arguments.data(), environ), 0) << command[0];
        ::posix_spawn_file_actions_destroy(&files);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;
    ~ChildProgram() {
        signal(SIGKILL);
        wait();
    }

    pid_t pid() const { return pid_; }
    void signal(int number) const {
        if (!hasEnded_)
            ::kill(pid_, number);
    }

    /// Whether it has ended by now.
    bool hasEnded() {
        hasEnded_ = hasEnded_ || ::waitpid(pid_, &status_, WNOHANG) == pid_;
        return hasEnded_;
    }
    /// Its exit status; -1 when a signal ended it or it does not end.
    int wait() {
        return comesTrue([this] { return hasEnded(); }) && WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    }

    /// Where its output is kept, and whatever a test puts there.
    const std::string& outputFolder() const { return folder_.path(); }
    std::string output() const { return testing::fileText(folder_.path() + "/output"); }
    std::string errors() const { return testing::fileText(folder_.path() + "/errors"); }

private:
    TemporaryFolder folder_;
    pid_t pid_ = -1;
    int status_ = 0;
    bool hasEnded_ = false;
};

} // namespace vantoro::testing
