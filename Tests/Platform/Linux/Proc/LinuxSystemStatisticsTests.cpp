#include "Platform/Linux/Proc/LinuxSystemStatistics.h"

#include "Support/Folders.h"

namespace vantoro {
namespace {

TEST(LinuxSystemStatistics, ReadsARecordedLaptop) {
    LinuxSystemStatistics statistics(testing::recordedMachine("laptop"));
    EXPECT_EQ(statistics.hostTicks(), (HostTicks{.user = 100200, .system = 40670, .idle = 2001300, .nice = 300}));
    EXPECT_EQ(statistics.loadAverages(), (LoadAverages{1.52, 0.98, 0.75}));
    EXPECT_EQ(statistics.physicalMemory(), (PhysicalMemory{.totalBytes = 16656486400u, .availableBytes = 9424908288u}));
    // Compressed: 50,000 KiB in the swap cache, 60,000 and 4,000 KiB on two compressed devices.
    EXPECT_EQ(statistics.virtualMemory(), (VirtualMemory{.pageBytes = 1024,
                                                         .wiredPages = 400000,
                                                         .compressorPages = 114000,
                                                         .internalPages = 4000000,
                                                         .swapIns = 1200,
                                                         .swapOuts = 27431}));
}

TEST(LinuxSystemStatistics, ReadsAnOldBoardWithoutSwap) {
    LinuxSystemStatistics statistics(testing::recordedMachine("board"));
    EXPECT_EQ(statistics.hostTicks(), (HostTicks{.user = 10, .system = 30, .idle = 40, .nice = 20}));
    EXPECT_EQ(statistics.virtualMemory(), (VirtualMemory{.pageBytes = 1024, .internalPages = 64000}));
    EXPECT_FALSE(statistics.kernelStat()->forks);
}

TEST(LinuxSystemStatistics, GivesNothingForFilesThatAreMissingAndRecovers) {
    const testing::TemporaryFolder folder;
    LinuxSystemStatistics statistics(folder.path());
    EXPECT_FALSE(statistics.hostTicks());
    EXPECT_FALSE(statistics.virtualMemory());
    EXPECT_FALSE(statistics.loadAverages());
    EXPECT_EQ(statistics.physicalMemory(), PhysicalMemory());
    folder.write("proc/meminfo", "MemTotal: 100 kB\nMemAvailable: 700 kB\n");
    EXPECT_EQ(statistics.physicalMemory().availableBytes, 102400u) << "no more than there is";
    folder.write("proc/loadavg", "1 2 3");
    EXPECT_TRUE(statistics.loadAverages());
    // A kept file gives what it holds now, also when it outgrows the first buffer.
    folder.write("proc/stat", "cpu 1 2 3 4\n");
    EXPECT_EQ(statistics.hostTicks()->user, 1u);
    folder.write("proc/stat", "cpu 5 2 3 4\nintr " + std::string(300'000, '1') + "\nprocesses 6\n");
    EXPECT_EQ(statistics.kernelStat()->ticks.user, 5u);
    EXPECT_EQ(statistics.kernelStat()->forks, 6u);
}

} // namespace
} // namespace vantoro
