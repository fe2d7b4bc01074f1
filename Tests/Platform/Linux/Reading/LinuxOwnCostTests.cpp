// This program's own accounts.
#include "Platform/Linux/Reading/LinuxOwnCost.h"

#include "Support/Folders.h"

#include <unistd.h>

namespace vantoro {
namespace {

using testing::TemporaryFolder;

std::string stat(const std::string& name, int user, int system, int childUser, int childSystem) {
    return "7 (" + name + ") S 1 1 1 0 -1 4194304 9 9 9 9 " + std::to_string(user) + " " + std::to_string(system) +
           " " + std::to_string(childUser) + " " + std::to_string(childSystem) + " 20 0 2 0 55 4096 10\n";
}

TEST(LinuxOwnCostTests, CountsItsProgramsRunningAndEnded) {
    const TemporaryFolder folder;
    const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
    folder.write("proc/7/stat", stat("van) S 1", 100, 50, 30, 20));
    folder.write("proc/7/smaps_rollup", "00-ff ---p 0 00:00 0 [rollup]\nRss: 900 kB\nPss:      300 kB\n");
    LinuxOwnCost cost(folder.path(), "7");
    auto time = cost.processorTime();
    ASSERT_TRUE(time.has_value());
    EXPECT_DOUBLE_EQ(time->seconds * ticks, 200);
    EXPECT_FALSE(time->hasPrograms) << "this kernel does not list them";
    EXPECT_EQ(cost.memoryBytes(), 300U * 1024);

    folder.write("proc/7/task/7/children", "");
    folder.write("proc/7/task/12/children", "31 32 ");
    folder.write("proc/31/stat", stat("top", 40, 0, 0, 5));
    folder.write("proc/31/smaps_rollup", "x\nPss: 24 kB\n");
    folder.write("proc/31/task/31/children", "40 ");
    folder.write("proc/40/stat", stat("below", 1000, 0, 0, 0));
    time = cost.processorTime();
    EXPECT_DOUBLE_EQ(time->seconds * ticks, 1245) << "32 has ended";
    EXPECT_TRUE(time->hasPrograms);
    EXPECT_EQ(cost.memoryBytes(), 324U * 1024);

    for (const char* text : {"", "7 (x", "7 (x) S 1 2 3", "7 (x) S 1 1 1 0 -1 0 9 9 9 9 -5 1 1 1"}) {
        folder.write("proc/7/stat", text);
        EXPECT_EQ(cost.processorTime(), std::nullopt) << text;
    }
    for (const char* text : {"", "Pss: 4 kB", "x\nPss: 4", "x\nPss: -4 kB", "x\nPss: many kB"})
        EXPECT_EQ(parseProportionalBytes(text), std::nullopt) << text;
}

TEST(LinuxOwnCostTests, ReadsTheAccountsOfTheProcessThatAsks) {
    LinuxOwnCost cost;
    const auto before = cost.processorTime();
    ASSERT_TRUE(before.has_value());
    volatile double sum = 0;
    while (cost.processorTime()->seconds < before->seconds + 0.03)
        for (int i = 0; i < 100000; ++i)
            sum = sum + i;
    EXPECT_GT(cost.memoryBytes().value_or(1), 0U);
}

} // namespace
} // namespace vantoro
