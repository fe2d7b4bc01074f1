#include "Platform/Linux/Proc/ProcStat.h"

#include "Support/Folders.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace vantoro {
namespace {

using namespace std::string_literals;

TEST(ParseProcessStat, SplitsTheNameAtTheLastParenthesis) {
    for (const std::string& name : {"cat"s, "Web Content"s, "a) R 1 (b"s, ") S 1 1 1 0 -1"s, ""s, "((("s, "line\nend"s,
                                    "\xFF\xFE"s, "kworker/u16:2-events_unbound"s}) {
        const std::string text = testing::processStat(42, name, 900, 77, 5);
        const auto stat = parseProcessStat(text);
        ASSERT_TRUE(stat) << name;
        EXPECT_EQ(stat->name, name);
        EXPECT_EQ(stat->state, 'S');
        EXPECT_EQ(stat->parentPid, 1);
        EXPECT_EQ(stat->groupPid, 1);
        EXPECT_EQ(stat->sessionPid, 1);
        EXPECT_EQ(stat->userTicks, 77u);
        EXPECT_EQ(stat->systemTicks, 5u);
        EXPECT_EQ(stat->threads, 2u);
        EXPECT_EQ(stat->startTicks, 900u);
        EXPECT_EQ(stat->residentPages, 5u);
        EXPECT_FALSE(stat->isKernelThread());
        EXPECT_EQ(text.substr(stat->usedBytes), " 18446744073709551615\n");
    }
}

TEST(ParseProcessStat, RefusesEveryTruncation) {
    const std::string text = testing::processStat(42, "a b", 900, 77, 5);
    const std::size_t complete = text.find(" 18446744073709551615");
    for (std::size_t length = 0; length < complete; ++length)
        EXPECT_FALSE(parseProcessStat(text.substr(0, length))) << length;
    EXPECT_TRUE(parseProcessStat(text.substr(0, complete)));
}

TEST(ParseProcessStat, RefusesNumbersThatAreNone) {
    const auto withUserTicks = [](const std::string& ticks) {
        return "1 (x) S 1 1 1 0 -1 64 1 0 0 0 " + ticks + " 5 0 0 20 0 2 0 900 4096 5 0\n";
    };
    EXPECT_EQ(parseProcessStat(withUserTicks("18446744073709551615"))->userTicks, 18446744073709551615u);
    EXPECT_EQ(parseProcessStat(withUserTicks("-3"))->userTicks, 0u);
    for (const std::string& bad : {"18446744073709551616"s, "99999999999999999999999"s, "nan"s, "1e3"s, "0x1"s, ""s,
                                   "-"s, "\0"s, "1\t"s, std::string(10'000'000, '7')})
        EXPECT_FALSE(parseProcessStat(withUserTicks(bad))) << bad.substr(0, 30);
}

TEST(ParseRealUid, ReadsTheFirstOfFour) {
    EXPECT_EQ(parseRealUid("Name:\tUid:\nUid:\t1000\t0\t0\t0\n"), 1000u);
    EXPECT_EQ(parseRealUid("Uid: 4294967294"), 4294967294u);
    for (const std::string& bad :
         {""s, "Uid:"s, "Uid:\t-1\n"s, "Uid:\t4294967296\n"s, "Gid:\t5\n"s, "xUid:\t5\n"s, "Uid\0:5"s})
        EXPECT_FALSE(parseRealUid(bad)) << bad;
}

TEST(ParseKernelStat, AddsInterruptsToSystemAndWaitingToIdle) {
    const auto stat =
        parseKernelStat("cpu  1 2 3 4 50 60 70 800 9 9\ncpu0 1 1 1 1\nintr 9 9\nprocesses 123\nprocs_running 1\n");
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->ticks, (HostTicks{.user = 1, .system = 133, .idle = 54, .nice = 2}));
    EXPECT_EQ(stat->forks, 123u);
}

TEST(ParseKernelStat, TakesWhatOldKernelsPrintAndNothingLess) {
    EXPECT_EQ(parseKernelStat("cpu 1 2 3 4")->ticks, (HostTicks{.user = 1, .system = 3, .idle = 4, .nice = 2}));
    EXPECT_FALSE(parseKernelStat("cpu 1 2 3 4\nprocesses nan\n")->forks);
    // Wraps at 32 bits.
    EXPECT_EQ(parseKernelStat("cpu 4294967297 2 3 4")->ticks.user, 1u);
    for (const std::string& bad : {""s, "cpu"s, "cpu 1 2 3"s, "cpu 1 2 x 4"s, "cpu0 1 2 3 4\n"s, "cpu -\0"s})
        EXPECT_FALSE(parseKernelStat(bad)) << bad;
    EXPECT_TRUE(parseKernelStat("cpu 1 2 3 4\nintr " + std::string(10'000'000, '0') + "\nprocesses 5\n")->forks);
}

TEST(ParseLoadAverages, WantsThreePlainDecimals) {
    EXPECT_EQ(parseLoadAverages("0.25 12.50 3 1/84 4496"), (LoadAverages{0.25, 12.5, 3}));
    for (const std::string& bad : {""s, "1"s, "1 2"s, "nan 1 1"s, "inf 1 1"s, "-1 1 1"s, "1e9 1 1"s, "1.2.3 1 1"s})
        EXPECT_FALSE(parseLoadAverages(bad)) << bad;
}

TEST(ParseMemoryInfo, LeavesOutWhatDoesNotRead) {
    const auto info =
        parseMemoryInfo("MemTotal: 100 kB\nUnevictable:-5 kB\nSUnreclaim: 7 kB\nPageTables: 1e3 kB\nZswap:");
    ASSERT_TRUE(info);
    EXPECT_EQ(*info, (MemoryInfo{.totalKiB = 100, .unreclaimableSlabKiB = 7}));
    for (const std::string& bad : {""s, "MemTotal"s, "MemTotal: kB"s, "XMemTotal: 5 kB"s,
                                   "MemTotal: 99999999999999999999 kB"s, std::string(10'000'000, ':')})
        EXPECT_FALSE(parseMemoryInfo(bad)) << bad.substr(0, 30);
}

TEST(ParseSmallFiles, GiveNoneForAnythingElse) {
    EXPECT_EQ(parseSwapCounts("pswpout 2\nxpswpin 9\npswpin 1"), (SwapCounts{1, 2}));
    EXPECT_FALSE(parseSwapCounts("pswpin 1\npswpout x\n"));
    EXPECT_FALSE(parseSwapCounts("pswpin 1\n"));
    EXPECT_EQ(parseZramUsedBytes("  1   2 61440000 0 5\n"), 61440000u);
    EXPECT_FALSE(parseZramUsedBytes("1 2\n"));
    EXPECT_EQ(parseControlGroup("4:memory:/a\n0::/user.slice/x.scope\n"), "/user.slice/x.scope");
    EXPECT_EQ(parseControlGroup("1:name=systemd:/user.slice/y.scope\n0::/\n"), "/user.slice/y.scope");
    EXPECT_EQ(parseControlGroup("garbage"), "");
}

} // namespace
} // namespace vantoro
