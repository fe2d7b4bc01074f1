// Which processors machines have, and at which frequency each runs.
#include "Platform/Linux/Processor/LinuxProcessors.h"

#include "Model/Readers/CoreMonitor.h"
#include "Platform/Linux/Sensors/SensorMachine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace vantoro {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::SensorMachine;

const std::string cpus = "sys/devices/system/cpu/";
const std::string policies = cpus + "cpufreq/";

void writePolicy(const SensorMachine& machine, int number, const std::map<std::string, std::string>& files) {
    const std::string folder = policies + "policy" + std::to_string(number) + "/";
    if (!files.contains("related_cpus"))
        machine.write(folder + "related_cpus", std::to_string(number) + "\n");
    for (const auto& [name, text] : files)
        machine.write(folder + name, text + "\n");
}

std::vector<int> frequencies(const CoreMonitor& monitor) {
    std::vector<int> all;
    for (const Core& core : monitor.cores())
        all.push_back(static_cast<int>(core.megahertz + 0.5));
    return all;
}

TEST(LinuxProcessors, GiveTheirFrequencies) {
    struct Expected {
        std::string machine;
        std::map<std::string, std::string> later;
        double maxEfficiency, maxPerformance;
        std::vector<int> megahertz;
    };
    const Expected table[] = {
        // Efficiency cores first.
        {"intel-laptop", {}, 3500, 4700, {1235, 1235, 1235, 1235, 2500, 2500, 4700, 4700}},
        // Counted: 50 at 3.7 GHz and 150 at 2.8 GHz; a core that has told nothing yet; two processors without scaling.
        {"amd-desktop",
         {{policies + "policy0/stats/time_in_state", "3700000 150\n2800000 200\n2200000 1000\n"}},
         0,
         3700,
         {3025, 0, 0, 0}},
        {"arm-board",
         {{policies + "policy0/stats/time_in_state", "408000 500\n816000 120\n1416000 80\n"},
          {policies + "policy4/stats/time_in_state", "408000 60\n1800000 80\n"}},
         1416,
         1800,
         {816, 816, 816, 816, 1104, 1104}},
        {"server", {}, 0, 0, {0, 0}}};
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.machine);
        SensorMachine machine(expected.machine);
        machine.write("proc/stat", "cpu0 0 0 0 0\n");
        CoreMonitor monitor(std::make_shared<LinuxProcessors>(machine.root(), machine.lane()));
        EXPECT_EQ(monitor.maxEfficiencyMHz(), expected.maxEfficiency);
        EXPECT_EQ(monitor.maxPerformanceMHz(), expected.maxPerformance);
        monitor.sample();
        monitor.sample(); // the first to look at frequencies
        for (const auto& [file, text] : expected.later)
            machine.write(file, text);
        machine.pass(2);
        monitor.sample();
        EXPECT_EQ(frequencies(monitor), expected.megahertz);
        // Nobody looks: nothing is read, and nothing stays that was true once.
        monitor.setReadsClocks(false);
        monitor.sample();
        EXPECT_THAT(frequencies(monitor), ::testing::Each(0));
        monitor.setReadsClocks(true);
        machine.pass(100);
        monitor.sample();
        const bool isCounted = !expected.later.empty();
        EXPECT_EQ(frequencies(monitor), isCounted ? std::vector<int>(expected.megahertz.size()) : expected.megahertz);
    }
}

// Only 32 were read; those behind one without a policy had their neighbour's frequency; boost was cut off.
TEST(LinuxProcessors, EveryOneOf128HasAFrequencyOfItsOwn) {
    SensorMachine machine;
    machine.write(cpus + "online", "0-127\n");
    machine.write("proc/stat", "cpu0 0 0 0 0\n");
    std::vector<int> expected(128);
    for (int number = 0; number < 128; ++number) {
        if (number == 3) // taken offline and back: its policy is gone
            continue;
        expected[static_cast<std::size_t>(number)] = 2000 + number;
        writePolicy(machine, number,
                    {{"cpuinfo_max_freq", "3700000"},
                     {"cpuinfo_min_freq", "1200000"},
                     {"scaling_cur_freq", std::to_string((2000 + number) * 1000)}});
    }
    expected[9] = 5100;
    machine.write(policies + "policy9/scaling_cur_freq", "5100000\n");
    // Its states end at the base frequency, and time in them is what was asked for.
    expected[10] = 4400;
    writePolicy(machine, 10,
                {{"scaling_driver", "acpi-cpufreq"},
                 {"stats/time_in_state", "3700000 10\n2200000 10"},
                 {"scaling_cur_freq", "4400000"}});
    expected[11] = 0;
    machine.write(policies + "policy11/scaling_cur_freq", "<unknown>\n");
    expected[127] = 0;
    machine.write(policies + "policy127/scaling_cur_freq", "4294967295\n");
    CoreMonitor monitor(std::make_shared<LinuxProcessors>(machine.root(), machine.lane()));
    monitor.sample();
    monitor.sample();
    EXPECT_EQ(frequencies(monitor), expected);
    EXPECT_EQ(monitor.maxPerformanceMHz(), 3700);
}

TEST(LinuxProcessors, AMeanIsOfTheTimeSince) {
    const TimeInState before = {{1000, 10}, {3000, 10}};
    EXPECT_EQ(meanFrequency(before, {{1000, 40}, {3000, 20}}), 1500);
    EXPECT_EQ(meanFrequency(before, before), std::nullopt);
    EXPECT_EQ(meanFrequency(before, {{1000, 4}, {3000, 20}}), std::nullopt) << "reset";
    EXPECT_EQ(meanFrequency(before, {{2000, 40}, {3000, 20}}), std::nullopt) << "another table";
    EXPECT_EQ(meanFrequency({}, {{1000, 40}}), std::nullopt);
    EXPECT_THAT(parseTimeInState("1000 5\n\nx 1\n2000\n3000 -1\n4000 7"),
                ElementsAre(std::pair{1000, 5u}, std::pair{4000, 7u}));
}

TEST(LinuxProcessors, KeepTheirPlacesEfficientOnesFirst) {
    const SensorMachine machine("intel-laptop");
    LinuxProcessors processors(machine.root());
    std::vector<HostTicks> ticks;
    const auto users = [&ticks] {
        std::vector<std::uint32_t> all;
        for (const HostTicks& tick : ticks)
            all.push_back(tick.user);
        return all;
    };
    ASSERT_EQ(processors.readTicks(ticks), 0);
    EXPECT_THAT(users(), ElementsAre(14, 15, 16, 17, 10, 11, 12, 13));
    EXPECT_EQ(ticks[4], (HostTicks{.user = 10, .system = 23, .idle = 65, .nice = 1}));
    // One goes offline, one nobody knew comes: the others keep their places.
    machine.write("proc/stat", "cpu 0 0 0 0\ncpu1 91 0 0 0\ncpu5 95 0 0 0\ncpu8 98 0 0 0\n");
    ASSERT_EQ(processors.readTicks(ticks), 0);
    EXPECT_THAT(users(), ElementsAre(14, 95, 16, 17, 10, 91, 12, 13));
    EXPECT_NE(LinuxProcessors(SensorMachine().root()).readTicks(ticks), 0);
}

TEST(LinuxProcessors, FallIntoTheirKinds) {
    struct Expected {
        const char* what;
        std::map<std::string, std::string> files;
        std::vector<int> efficiency;
    };
    const std::string core = "sys/devices/cpu_core/cpus";
    const std::string atom = "sys/devices/cpu_atom/cpus";
    const std::string low = "sys/devices/cpu_lowpower/cpus";
    const auto capacity = [](int number) { return cpus + "cpu" + std::to_string(number) + "/cpu_capacity"; };
    const Expected table[] = {
        {"three kinds", {{core, "0-2"}, {atom, "3-4"}, {low, "5"}}, {3, 4, 5}},
        {"the low-power ones alone beside the performance ones", {{core, "0-3"}, {low, "4-5"}}, {4, 5}},
        {"lists that leave some out", {{core, "0-1"}, {atom, "2-3"}}, {}},
        {"one list", {{core, "0-5"}, {atom, ""}}, {}},
        {"lists that overlap", {{core, "0-5"}, {atom, "4-5"}}, {}},
        {"a favoured core", {{capacity(0), "1024"}, {capacity(1), "1000"}}, {}},
        {"three capacities part at the widest gap",
         {{capacity(0), "250"},
          {capacity(1), "250"},
          {capacity(2), "870"},
          {capacity(3), "870"},
          {capacity(4), "1024"},
          {capacity(5), "1024"}},
         {0, 1}},
    };
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.what);
        const SensorMachine machine;
        machine.write(cpus + "online", "0-5\n");
        for (const auto& [file, text] : expected.files)
            machine.write(file, text + "\n");
        const CpuTopology found = readCpuTopology(machine.root());
        EXPECT_EQ(found.efficiency, expected.efficiency);
        EXPECT_EQ(found.performance.size(), 6 - expected.efficiency.size());
    }
    EXPECT_THAT(splitByCapacity({{0, 1000}, {1, 1024}}).efficiency, IsEmpty());
}

} // namespace
} // namespace vantoro
