#include "Platform/Darwin/Portable/ChipNames.h"
#include "Platform/Darwin/Portable/DarwinProcessStream.h"
#include "Platform/Darwin/Portable/GraphicsTimes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace vantoro {
namespace {

TEST(DarwinNames, CoreChannelsBeginWithTheirCluster) {
    const struct {
        const char* reported;
        const char* expected;
    } cases[] = {
        {"ECPU0", "ECPU0"},
        {"PCPU1_CPU0", "PCPU1_CPU0"},
        {"DIE_0_PCPU1_CPU0", "PCPU1_CPU0_DIE_0"},
        {"DIE_12_ECPU0", "ECPU0_DIE_12"},
        {"DIE_1_MCPU0_CPU1", "MCPU0_CPU1_DIE_1"},
        // No die, or nothing after it.
        {"DIE_PCPU0", "DIE_PCPU0"},
        {"DIE_0PCPU0", "DIE_0PCPU0"},
        {"DIE_0_", "DIE_0_"},
        {"DIE_0", "DIE_0"},
        {"", ""},
    };
    for (const auto& [reported, expected] : cases)
        EXPECT_EQ(coreChannelName(reported), expected) << reported;
}

TEST(DarwinGraphicsTimes, SharesAreOfTheTimeSinceTheReadingBefore) {
    using Programs = std::vector<GraphicsShares::Program>;
    constexpr std::uint64_t second = 1'000'000'000;
    GraphicsTimes times;
    EXPECT_FALSE(times.shares({{.entry = 1, .pid = 50, .nanoseconds = 90 * second}}, 10));
    EXPECT_EQ(times.shares({{1, 50, 91 * second}, {2, 50, second / 2}, {3, 40, 0}}, 12)->programs,
              (Programs{{40, 0}, {50, 75}}))
        << "a client opened in between";
    EXPECT_EQ(times.shares({{2, 50, second / 4}, {3, 40, second}}, 14)->programs, (Programs{{40, 50}, {50, 0}}))
        << "one has closed, and a counter went back";
    EXPECT_EQ(times.shares({{2, 50, second * 9 / 2}, {3, 40, 5 * second}}, 16)->programs,
              (Programs{{40, 50}, {50, 50}}))
        << "frames overlap: no more than there is";
    EXPECT_FALSE(times.shares({}, 16));
    EXPECT_EQ(creatorPid("pid 533, WindowServer"), 533);
    for (const char* other :
         {"", "pid ", "pid x, y", "533, WindowServer", "pid 12b", "pid -4, a", "pid 99999999999, a"})
        EXPECT_EQ(creatorPid(other), std::nullopt) << other;
}

TEST(DarwinNames, TiersAreCalledWhatTheSystemCallsThem) {
    const struct {
        std::optional<std::string> level0, level1;
        ProcessorTiers expected;
        bool hasMiddle;
    } cases[] = {
        {"Performance", "Efficiency", {}, false},
        {{}, {}, {}, false},
        {"Performance", {}, {}, false},
        {"Super", "Performance", {"super", "performance"}, true},
        {"Super", "Efficiency", {"super", "efficiency"}, false},
    };
    for (const auto& [level0, level1, expected, hasMiddle] : cases) {
        const ProcessorTiers tiers = tiersNamed(level0, level1);
        EXPECT_EQ(tiers, expected) << tiers.performance << tiers.efficiency;
        EXPECT_EQ(hasMiddleTier(tiers), hasMiddle);
    }
}

std::vector<std::uint8_t> tableOf(std::initializer_list<std::uint32_t> words) {
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t word : words) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(word >> shift));
        bytes.insert(bytes.end(), {0xFF, 0xFF, 0xFF, 0xFF});
    }
    return bytes;
}

TEST(DarwinNames, FrequenciesInHertzBecomeKilohertz) {
    auto table = tableOf({600'000'000, 99'999'999, 100'000'000, 3'228'000'500, 4'294'967'295, 2'064'000, 0});
    rewriteInKilohertz(table);
    EXPECT_EQ(table, tableOf({600'000, 99'999'999, 100'000, 3'228'001, 4'294'967, 2'064'000, 0}));

    auto cutShort = tableOf({600'000'000});
    cutShort.pop_back();
    const auto before = cutShort;
    rewriteInKilohertz(cutShort);
    EXPECT_EQ(cutShort, before);
}

TEST(DarwinNames, MachTimeIsNanosecondsWithoutOverflow) {
    constexpr MachTimebase appleSilicon{.numerator = 125, .denominator = 3};
    EXPECT_EQ(machNanoseconds(24'000'000, appleSilicon), 1'000'000'000U);
    EXPECT_EQ(machNanoseconds(1, appleSilicon), 41U);
    EXPECT_EQ(machNanoseconds(7, MachTimebase{}), 7U);
    // A century of CPU time.
    constexpr std::uint64_t seconds = 3'155'760'000;
    EXPECT_EQ(machNanoseconds(seconds * 24'000'000, appleSilicon), seconds * 1'000'000'000);
}

TEST(DarwinNames, TheSystemsOwnProgramsPrintTheStream) {
    const ProgramCommand expected{.program = "/usr/bin/top",
                                  .arguments = {"-l", "0", "-s", "2", "-n", "40", "-o", "cpu", "-stats",
                                                "pid,command,cpu,mem,power,user", "-ncols", "220"}};
    EXPECT_EQ(DarwinProcessStream({}).stream(0, 2, 40), expected);
    EXPECT_EQ(DarwinProcessStream("").stream(0, 2, 40), expected);
    EXPECT_EQ(DarwinProcessStream("/opt/top").stream(2, 1, 40).program, "/opt/top");
    const ProgramCommand paths{.program = "/bin/ps", .arguments = {"-Ao", "pid=,comm="}};
    EXPECT_EQ(DarwinProcessStream("/opt/top").pathList(), paths);
}

} // namespace
} // namespace vantoro
