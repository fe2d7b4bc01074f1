#include "CSensors/cpufreq.h"

#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

using testing::ScriptedStates;
using testing::ScriptedTables;

constexpr const char* efficiencyProperty = "voltage-states1-sram";
constexpr const char* performanceProperty = "voltage-states5-sram";

class CPUFreq : public ::testing::Test {
protected:
    CPUFreq() {
        tables->atPath = {{{efficiencyProperty, {600'000, 0, 972'500, 1'332'000, 2'064'000}},
                           {performanceProperty, {702'000, 948'000, 3'204'000}}}};
        cpufreq_use(tables, states);
    }
    ~CPUFreq() override { cpufreq_use(nullptr, nullptr); }

    struct Result {
        double megahertz = 0;
        bool isEfficiency = false;
        bool operator==(const Result&) const = default;
    };
    static std::vector<Result> sample(std::int32_t capacity = 32) {
        std::vector<double> megahertz(40, -1);
        std::vector<std::uint8_t> isEfficiency(40, 9);
        const std::int32_t count = cpufreq_sample(megahertz.data(), isEfficiency.data(), capacity);
        std::vector<Result> results;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
            results.push_back({megahertz[i], isEfficiency[i] == 1});
        EXPECT_EQ(megahertz[static_cast<std::size_t>(count)], -1) << "nothing beyond what is announced";
        return results;
    }

    std::shared_ptr<ScriptedTables> tables = std::make_shared<ScriptedTables>();
    std::shared_ptr<ScriptedStates> states = std::make_shared<ScriptedStates>();
};

TEST_F(CPUFreq, LoadsTablesFromThePathOrElseFromTheFirstEntryThatHasOne) {
    double table[32] = {};
    EXPECT_EQ(load_states(ScriptedTables::Entry(*tables->atPath), efficiencyProperty, table), 4) << "zeros are skipped";
    EXPECT_EQ(table[1], 972.5);
    EXPECT_EQ(load_states(ScriptedTables::Entry({}), efficiencyProperty, table), 0);
    const ScriptedTables::Entry full({{efficiencyProperty, std::vector<std::uint32_t>(40, 1000)}});
    EXPECT_EQ(load_states(full, efficiencyProperty, table), 32);

    ASSERT_EQ(cpufreq_init(), 1);
    EXPECT_EQ(cpufreq_max_efficiency(), 2064);
    EXPECT_EQ(cpufreq_max_performance(), 3204);

    tables->atPath = ScriptedTables::Properties{};
    tables->named = {{{}, {{performanceProperty, {5'000}}}, {{efficiencyProperty, {9'000}}}}};
    cpufreq_use(tables, states);
    ASSERT_EQ(cpufreq_init(), 1);
    EXPECT_EQ(cpufreq_max_performance(), 5);
    EXPECT_EQ(cpufreq_max_efficiency(), 0);
}

TEST_F(CPUFreq, EachGenerationOfChipsHasItsOwnTablesAndChannels) {
    const std::vector<std::uint32_t> slow{912'000, 2'748'000};
    const std::vector<std::uint32_t> middle{1'000'000, 4'300'000};
    const std::vector<std::uint32_t> fast{1'308'000, 4'600'000};
    const std::vector<std::uint32_t> graphics{338'000, 1'578'000};
    const auto table = [](int number) { return "voltage-states" + std::to_string(number) + "-sram"; };
    const std::string one = table(1), five = table(5), nine = table(9);
    const Result e{912, true}, m{1000, true}, p{1308, false};
    using Channels = std::vector<std::pair<const char*, Result>>;
    const auto expect = [&](const char* chip, bool middleTier, const ScriptedTables::Properties& found, double slowest,
                            const Channels& channels) {
        SCOPED_TRACE(chip);
        tables->atPath = found;
        tables->middleTier = middleTier;
        states->channels.clear();
        std::vector<Result> expected;
        for (const auto& [channel, result] : channels) {
            states->channels.push_back({channel, {{"V0", 0}}});
            expected.push_back(result);
        }
        cpufreq_use(tables, states);
        EXPECT_EQ(sample(), expected);
        EXPECT_EQ(cpufreq_max_efficiency(), slowest);
        EXPECT_EQ(cpufreq_max_performance(), 4600);
    };
    expect("one die", false, {{one, slow}, {five, fast}, {nine, graphics}}, 2748,
           {{"ECPU000", e}, {"PCPU000", p}, {"PCPU010", p}});
    expect("two dies", false, {{one, slow}, {five, fast}}, 2748,
           {{"ECPU0_DIE_0", e}, {"PCPU1_CPU0_DIE_0", p}, {"ECPU0_DIE_1", e}, {"PCPU1_CPU0_DIE_1", p}});
    expect("a second kind of performance cluster beside efficiency cores, of the same position", false,
           {{one, slow}, {five, fast}, {table(22), middle}}, 2748,
           {{"ECPU0_CPU0", e}, {"MCPU0_CPU0", p}, {"PCPU0_CPU0", p}});
    ScriptedTables::Properties named{
        {one, slow}, {five, fast}, {nine, graphics}, {table(14), middle}, {table(22), slow}};
    named["acc-clusters"] = {5, 0x10000, 9, 30, 14};
    expect("a middle tier, in the table that the clusters name", true, named, 4300,
           {{"MCPU0_CPU0", m}, {"PCPU0_CPU0", p}, {"MCPU1_CPU0", m}});
    expect("a middle tier, in the first of its usual tables", true,
           {{five, fast}, {table(22), middle}, {table(23), slow}}, 4300, {{"MCPU0_CPU0", m}, {"PCPU0_CPU0", p}});
    expect("a middle tier, in the second of its usual tables", true,
           {{five, fast}, {table(23), middle}, {"acc-clusters", {0, 1, 2}}}, 4300,
           {{"MCPU0_CPU0", m}, {"PCPU0_CPU0", p}});
    expect("a middle tier whose table is nowhere: nothing is claimed of it", true,
           {{one, slow}, {five, fast}, {table(22), graphics}}, 0, {{"MCPU0_CPU0", {0, true}}, {"PCPU0_CPU0", p}});
}

TEST_F(CPUFreq, EachThingThatIsMissingFailsAndMayComeLater) {
    states->loads = false;
    EXPECT_EQ(cpufreq_init(), 0);
    states->loads = true;
    states->subscribes = false;
    EXPECT_EQ(cpufreq_init(), 0);
    EXPECT_TRUE(sample().empty());
    states->subscribes = true;
    const auto good = std::exchange(tables->atPath, std::nullopt);
    EXPECT_EQ(cpufreq_init(), 0) << "the search fails";
    tables->named.emplace();
    EXPECT_EQ(cpufreq_init(), 0) << "the search finds nothing";
    tables->atPath = good;
    EXPECT_EQ(cpufreq_init(), 1);
    states->samples = false;
    EXPECT_TRUE(sample().empty());
    cpufreq_use(nullptr, states);
    EXPECT_EQ(cpufreq_init(), 0);
}

TEST_F(CPUFreq, WeighsFrequenciesByTheTimeSpentAtEach) {
    states->channels = {{"ECPU000", {{"IDLE", 5}, {"V0", 1000}, {"V3", 1000}}}, {"PCPU000", {{"V2", 7}}}};
    EXPECT_EQ(sample(), (std::vector<Result>{{600, true}, {702, false}})) << "the first reports the lowest";
    states->channels = {{"ECPU000", {{"IDLE", 900}, {"V0", 1100}, {"V3", 1300}}}, {"PCPU000", {{"V2", 7}}}};
    EXPECT_EQ(sample(), (std::vector<Result>{{1698, true}, {702, false}})) << "an idle core reports the lowest";
}

TEST_F(CPUFreq, BadStatesCountForNothing) {
    const std::vector<std::optional<std::string>> badNames{"V4", "V9", "V", "V-1", "W1", "v1", "", "V99999999999", {}};
    testing::StateChannel channel{.name = "ECPU0", .states = {{"V1", 0}}};
    for (const auto& name : badNames)
        channel.states.emplace_back(name, 0);
    states->channels = {channel};
    sample();
    for (auto& [name, residency] : states->channels[0].states)
        residency = 1000;
    EXPECT_EQ(sample(), (std::vector<Result>{{972.5, true}}));
    states->channels[0].states = {{"V1", 1400}, {"V2x", 1100}};
    EXPECT_EQ(sample()[0].megahertz, (400 * 972.5 + 100 * 1332) / 500) << "digits end where they end";
}

TEST_F(CPUFreq, CountersMayWrapAndGoBack) {
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    states->channels = {{"PCPU0", {{"V0", most - 4}, {"V1", 1000}, {"V2", 0}}}};
    sample();
    states->channels = {{"PCPU0", {{"V0", 4}, {"V1", 10}, {"V2", 10}}}};
    EXPECT_EQ(sample()[0].megahertz, (9 * 702 + 10 * 3204) / 19.0) << "9 ticks went over the end";
}

TEST_F(CPUFreq, ResidencyTablesGrowButNotBeyondThirtyTwoStatesOrCores) {
    states->channels = {{"PCPU0", {{"V0", 0}}}};
    sample();
    states->channels = {{"PCPU0", {{"V0", 0}, {"V2", 50}}}, {"PCPU1", {}}};
    EXPECT_EQ(sample(), (std::vector<Result>{{3204, false}, {702, false}})) << "a new state, a core without states";
    states->channels[0].states.assign(33, {"IDLE", 0});
    states->channels[0].states[32] = {"V2", 0};
    sample();
    states->channels[0].states[32] = {"V2", 50};
    EXPECT_EQ(sample()[0].megahertz, 702) << "the 33rd state is not seen";

    states->channels.clear();
    for (int i = 0; i < 35; ++i)
        states->channels.push_back({"PCPU" + std::to_string(i), {{"V0", 0}}});
    EXPECT_EQ(sample(40).size(), 32U);
    EXPECT_EQ(sample(3).size(), 3U);
    EXPECT_EQ(sample(0).size(), 0U);
    EXPECT_EQ(sample(-1).size(), 0U);
}

TEST_F(CPUFreq, OnlyNamedCoresAreTakenAndEachKeepsItsPlace) {
    const std::string longest = "PCPU" + std::string(27, 'x');
    states->channels = {{{}, {}}, {"GPU", {}}, {longest + "x", {}}, {"ECPU0", {}}, {longest, {}}, {"CPU0", {}}};
    EXPECT_EQ(sample(), (std::vector<Result>{{600, true}, {702, false}}));
    states->channels = {{longest, {}}};
    EXPECT_EQ(sample(), (std::vector<Result>{{0, true}, {702, false}})) << "a core that is left out holds its place";
    states->channels.clear();
    EXPECT_EQ(sample().size(), 2U);
}

} // namespace
} // namespace vantoro
