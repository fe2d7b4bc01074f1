// Folders that the platform tests read: recorded machines, and machines made up in passing.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <system_error>

namespace vantoro::testing {

inline std::string recordedMachine(std::string_view name) {
    return VANTORO_FIXTURES "/linux/" + std::string(name);
}

/// A folder that is gone when the test is over.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vantoro-XXXXXX").string();
        path_ = ::mkdtemp(pattern.data()) != nullptr ? pattern : "";
        EXPECT_FALSE(path_.empty());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }

    void write(const std::string& name, std::string_view text) const {
        const std::filesystem::path file = path_ + "/" + name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }

    void remove(const std::string& name) const { std::filesystem::remove_all(path_ + "/" + name); }

private:
    std::string path_;
};

/// The text of /proc/PID/stat.
inline std::string processStat(int pid, std::string_view name, unsigned long start, unsigned long userTicks,
                               unsigned long residentPages = 10) {
    return std::to_string(pid) + " (" + std::string(name) + ") S 1 1 1 0 -1 4194304 1 0 0 0 " +
           std::to_string(userTicks) + " 5 0 0 20 0 2 0 " + std::to_string(start) + " 4096 " +
           std::to_string(residentPages) + " 18446744073709551615\n";
}

/// A process among its relatives.
struct Relative {
    int pid = 0;
    int parent = 1;
    int group = 1;
    int session = 1;
    std::string name;
    /// Words with blanks between them; "~" is a blank of a word's own.
    std::string arguments;
    unsigned long ticks = 0;
    unsigned long childTicks = 0;
    unsigned long start = 100;
    std::string controlGroup = "/";
};

/// Writes it below `folder`/proc, as this user's.
inline void writeRelative(const TemporaryFolder& folder, const Relative& relative) {
    const std::string place = "proc/" + std::to_string(relative.pid);
    const auto text = [](auto number) { return std::to_string(number) + " "; };
    folder.write(place + "/stat", text(relative.pid) + "(" + relative.name + ") S " + text(relative.parent) +
                                      text(relative.group) + text(relative.session) + "0 -1 4194304 1 0 0 0 " +
                                      text(relative.ticks) + "0 " + text(relative.childTicks) + "0 20 0 2 0 " +
                                      text(relative.start) + "4096 10 18446744073709551615\n");
    folder.write(place + "/status", "Name:\tx\nUid:\t1000\t0\t0\t0\n");
    std::string words = relative.arguments;
    for (char& each : words)
        each = each == ' ' ? '\0' : each == '~' ? ' ' : each;
    folder.write(place + "/cmdline", words + '\0');
    folder.write(place + "/cgroup", "0::" + relative.controlGroup + "\n");
}

/// A made-up process under `folder`/proc.
inline void writeProcess(const TemporaryFolder& folder, int pid, std::string_view name, unsigned long start,
                         unsigned long userTicks, unsigned uid = 1000) {
    const std::string place = "proc/" + std::to_string(pid);
    folder.write(place + "/stat", processStat(pid, name, start, userTicks));
    folder.write(place + "/status", "Name:\tx\nUid:\t" + std::to_string(uid) + "\t0\t0\t0\n");
}

} // namespace vantoro::testing
