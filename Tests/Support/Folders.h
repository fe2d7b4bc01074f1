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

/// A made-up process under `folder`/proc.
inline void writeProcess(const TemporaryFolder& folder, int pid, std::string_view name, unsigned long start,
                         unsigned long userTicks, unsigned uid = 1000) {
    const std::string place = "proc/" + std::to_string(pid);
    folder.write(place + "/stat", processStat(pid, name, start, userTicks));
    folder.write(place + "/status", "Name:\tx\nUid:\t" + std::to_string(uid) + "\t0\t0\t0\n");
}

} // namespace vantoro::testing
