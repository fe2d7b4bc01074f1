// What strains a machine: waiting, slowing down, graphics.
#include "Platform/Linux/Power/LinuxStrain.h"

#include "Model/Readers/SensorDump.h"
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
using ::testing::Optional;
using testing::SensorMachine;
using enum ThrottleReason;
using Reasons = std::optional<std::vector<ThrottleReason>>;
using Files = std::map<std::string, std::string>;

const std::string card = "sys/class/drm/card0/";
const std::string throttling = "sys/devices/system/cpu/cpu0/thermal_throttle/";

/// A machine that is looked at every three seconds.
class Strained : public ::testing::Test {
protected:
    void write(const Files& files) {
        for (const auto& [file, text] : files)
            machine.write(file, text + "\n");
    }
    StrainReading look(const Files& before = {}) {
        write(before);
        machine.pass(3);
        if (!strain)
            strain = std::make_unique<LinuxStrain>(machine.root(), machine.lane(), nullptr,
                                                   std::make_shared<ThrottleCounters>(machine.root(), machine.lane()));
        return strain->read();
    }

    SensorMachine machine;
    std::unique_ptr<LinuxStrain> strain;
};

TEST_F(Strained, AMachineThatTellsNothingSaysNothing) {
    EXPECT_EQ(look(), StrainReading());
}

TEST_F(Strained, TellsWhatWorkWaitsFor) {
    const StrainReading reading = look({{"proc/pressure/cpu", "some avg10=0.07 avg60=9.00 avg300=0.00 total=1"},
                                        {"proc/pressure/memory", "some avg10=18.25 avg60=0.00 avg300=0.00 total=1\n"
                                                                 "full avg10=99.00 avg60=0.00 avg300=0.00 total=1"}});
    EXPECT_EQ(reading.stalls, (StallShares{.cpu = 0.07, .memory = 18.25}));
    EXPECT_EQ(parseStall("some avg10=100.00 "), 100);
    EXPECT_EQ(parseStall("some avg10=7"), 7);
    for (const char* text :
         {"", "full avg10=1.00", "some avg10=", "some avg10=x.1", "some avg10=1.x", "some avg10=-1.0"})
        EXPECT_EQ(parseStall(text), std::nullopt) << text;
}

// One touch of the limit, as any boost may have, said "slowed down" for as long as the counter stood.
TEST_F(Strained, HeatSlowsDownOnlyWhileItsCountersGoOn) {
    const std::string count = throttling + "package_throttle_count";
    const std::string time = throttling + "package_throttle_total_time_ms";
    EXPECT_THAT(look({{count, "900"}, {time, "5000"}}).throttle, Optional(IsEmpty())) << "long ago";
    EXPECT_THAT(look({{count, "901"}, {time, "5020"}}).throttle, Optional(IsEmpty())) << "a moment";
    EXPECT_THAT(look({{count, "940"}}).throttle, Optional(ElementsAre(temperature)));
    EXPECT_THAT(look().throttle, Optional(ElementsAre(temperature)));
    EXPECT_THAT(look().throttle, Optional(IsEmpty())) << "over";
    EXPECT_THAT(look({{count, "941"}, {time, "5900"}}).throttle, Optional(ElementsAre(temperature))) << "a third of it";
    machine.pass(3600);
    EXPECT_THAT(look({{count, "942"}}).throttle, Optional(IsEmpty())) << "it slept in between";
}

TEST_F(Strained, EverySourceHasItsReason) {
    const std::string cooling = "sys/class/thermal/cooling_device0/";
    const std::string i915 = card + "gt/gt0/";
    const std::string xe = card + "device/tile0/gt0/freq0/";
    struct Expected {
        const char* what;
        Files files;
        Reasons reasons;
    };
    const Expected table[] = {
        {"a processor cooled by its clock",
         {{cooling + "type", "thermal-cpufreq-0"}, {cooling + "cur_state", "3"}},
         {{temperature}}},
        {"injected idleness", {{cooling + "type", "intel_powerclamp"}, {cooling + "cur_state", "25"}}, {{temperature}}},
        {"none injected",
         {{cooling + "type", "intel_powerclamp"}, {cooling + "cur_state", "-1"}},
         Reasons(std::in_place)},
        {"a guest's processor has no steps",
         {{cooling + "type", "Processor"}, {cooling + "cur_state", "0"}, {cooling + "max_state", "0"}},
         {}},
        {"a fan cools without slowing", {{cooling + "type", "pwm-fan"}, {cooling + "cur_state", "3"}}, {}},
        {"limits of a package",
         {{i915 + "throttle_reason_status", "1"},
          {i915 + "throttle_reason_pl1", "1"},
          {i915 + "throttle_reason_prochot", "1"},
          {i915 + "throttle_reason_thermal", "0"}},
         {{power, firmware}}},
        {"limits of a part that sleeps",
         {{i915 + "throttle_reason_status", "1"},
          {i915 + "throttle_reason_pl1", "1"},
          {i915 + "rps_act_freq_mhz", "0"}},
         Reasons(std::in_place)},
        {"limits of another driver",
         {{xe + "throttle/status", "1"},
          {xe + "throttle/reason_vr_tdc", "1"},
          {xe + "throttle/reason_ratl", "1"},
          {xe + "act_freq", "1200"}},
         {{temperature, current}}},
        {"a board without enough voltage",
         {{"sys/devices/platform/soc/soc:firmware/get_throttled", "50005"}},
         {{power}}},
        {"a board that had none once",
         {{"sys/devices/platform/soc/soc:firmware/get_throttled", "50000"}},
         Reasons(std::in_place)},
        {"a profile that saves", {{"sys/firmware/acpi/platform_profile", "low-power"}}, {{profile}}},
        {"one that does not", {{"sys/firmware/acpi/platform_profile", "performance"}}, {}},
    };
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.what);
        Strained::machine.remove("sys");
        strain.reset();
        look(expected.files);
        EXPECT_EQ(look().throttle, expected.reasons);
    }
    EXPECT_EQ(look().profile, PowerProfile::performance);
}

TEST_F(Strained, TheDumpSaysWhatIsKnown) {
    std::string text;
    const auto dump = [&text](const std::vector<Core>& cores, const StrainReading& reading) {
        text.clear();
        SensorDump::strain(cores, reading, [&text](std::string_view line) { text += std::string(line) + '\n'; });
        return text;
    };
    EXPECT_EQ(
        dump({{.megahertz = 1400}, {}, {.isPerformance = true, .megahertz = 5100}},
             {.stalls = {.memory = 18.25}, .throttle = {{temperature, power}}, .gpuPercent = 92, .cpuWatts = 12.5}),
        "Cores: 3 (1 performance, 2 efficiency), clocks 1400 to 5100 MHz\n"
        "Processors draw 12.50 W  graphics busy 92%\n"
        "Work waits for processors unknown  memory 18.2%  disk unknown\n"
        "Slowed down by: temperature, power\n");
    EXPECT_TRUE(dump({{.megahertz = 1100.4}, {.megahertz = 1099.6}}, {}).starts_with("Cores: 2, clocks 1100 MHz\n"));
    EXPECT_EQ(SensorDump::graphicsWork({}), "unknown");
    EXPECT_EQ(SensorDump::graphicsWork(GraphicsShares{.programs = {{.pid = 7, .percent = 41.6}}, .hasAll = true}),
              "1 program, 42%");
    EXPECT_EQ(SensorDump::graphicsWork(GraphicsShares{.programs = {{.pid = 7, .percent = 5}, {8, 90}}}),
              "2 programs, the busiest 90% (as far as they are told)");
    EXPECT_EQ(dump({{.isPerformance = true}, {.isPerformance = true}}, {.throttle = Reasons(std::in_place)}),
              "Cores: 2, clocks unknown\n"
              "Processors draw unknown  graphics busy unknown\n"
              "Work waits for processors unknown  memory unknown  disk unknown\n"
              "Slowed down by: nothing\n");
}

std::string metrics(unsigned char format, unsigned char content, std::size_t at, std::uint64_t limiters,
                    unsigned celsius) {
    std::string bytes(128, '\0');
    bytes[2] = static_cast<char>(format);
    bytes[3] = static_cast<char>(content);
    bytes[6] = static_cast<char>(celsius & 0xFF);
    bytes[7] = static_cast<char>(celsius >> 8);
    for (std::size_t place = 0; place < 8; ++place)
        bytes[at + place] = static_cast<char>(limiters >> 8 * place & 0xFF);
    return bytes;
}

TEST_F(Strained, ReadsTheLimitersOfGraphicsDrivers) {
    const auto reasons = [](std::initializer_list<ThrottleReason> list) {
        ThrottleReasons all;
        for (const ThrottleReason reason : list)
            all.set(bitOf(reason));
        return all;
    };
    constexpr std::uint64_t one = 1;
    EXPECT_EQ(parseGpuMetrics(metrics(1, 3, 112, one << 1 | one << 16 | one << 36, 97)),
              reasons({power, current, temperature}));
    EXPECT_EQ(parseGpuMetrics(metrics(1, 3, 112, one << 36, 61)), reasons({})) << "a limiter far from any limit";
    EXPECT_EQ(parseGpuMetrics(metrics(2, 2, 120, one << 33 | one << 46, 9550)), reasons({temperature, firmware}));
    EXPECT_EQ(parseGpuMetrics(metrics(1, 3, 112, ~std::uint64_t{0}, 97)), std::nullopt);
    EXPECT_EQ(parseGpuMetrics(metrics(3, 0, 120, one, 97)), std::nullopt);
    const std::string whole = metrics(1, 3, 112, one, 97);
    for (std::size_t length = 0; length < 120; ++length)
        EXPECT_EQ(parseGpuMetrics(whole.substr(0, length)), std::nullopt);
    EXPECT_EQ(nvidiaReasons(0x1), reasons({})) << "idle";
    EXPECT_EQ(nvidiaReasons(0x4 | 0x20), reasons({power, temperature}));
    EXPECT_EQ(nvidiaReasons(0x8 | 0x40), reasons({temperature}));
    EXPECT_EQ(nvidiaReasons(0x8), reasons({firmware}));
}

TEST_F(Strained, ACardIsNeitherWokenNorKeptAwake) {
    const std::string device = card + "device/";
    const std::string busy = device + "gpu_busy_percent";
    write({{device + "power/control", "auto"}, {device + "power/runtime_status", "suspended"}, {busy, "77"}});
    EXPECT_EQ(look().gpuPercent, 0) << "asleep: what is in the file was not read";
    EXPECT_EQ(look({{device + "power/runtime_status", "active"}, {busy, "0"}}).gpuPercent, 0);
    EXPECT_EQ(look({{busy, "77"}}).gpuPercent, 0) << "idle a moment ago: it may fall asleep";
    machine.pass(30);
    EXPECT_EQ(look().gpuPercent, 77);
    EXPECT_EQ(look({{busy, "78"}}).gpuPercent, 78) << "its work keeps it awake";
    look({{busy, "0"}});
    EXPECT_EQ(look({{busy, "5"}}).gpuPercent, 0);
    // A picture does as well, and so does a person's word.
    machine.write("sys/class/drm/card0-DP-1/enabled", "enabled\n");
    strain.reset();
    look({{busy, "0"}});
    EXPECT_EQ(look({{busy, "6"}}).gpuPercent, 6);
    machine.remove("sys/class/drm/card0-DP-1");
    strain.reset();
    look({{device + "power/control", "on"}, {busy, "0"}});
    EXPECT_EQ(look({{busy, "7"}}).gpuPercent, 7);
    EXPECT_EQ(look({{busy, "65535"}}).gpuPercent, std::nullopt);
}

TEST_F(Strained, WhereNoBusyShareIsToldTheTimeAwakeIsKnown) {
    const std::string slept = card + "gt/gt0/rc6_residency_ms";
    const std::string media = card + "gt/gt1/rc6_residency_ms";
    EXPECT_EQ(look({{slept, "1000"}, {media, "5000"}}).gpuAwakePercent, std::nullopt) << "since when?";
    EXPECT_EQ(look({{slept, "3100"}, {media, "7970"}}).gpuAwakePercent, 30);
    EXPECT_EQ(look({{slept, "6200"}, {media, "10970"}}).gpuAwakePercent, 0) << "milliseconds are counted roughly";
    EXPECT_EQ(look({{slept, "0"}, {media, "10970"}}).gpuAwakePercent, 100) << "one began anew, the other never slept";
    EXPECT_EQ(look().gpuPercent, std::nullopt);
    strain.reset();
    machine.remove("sys/class/drm/card0/gt");
    const std::string xe = card + "device/tile0/gt0/gtidle/idle_residency_ms";
    write({{card + "device/power/control", "auto"}});
    look({{xe, "100"}, {card + "device/power/runtime_status", "active"}});
    machine.pass(30);
    look({{xe, "20000"}});
    EXPECT_EQ(look({{xe, "21500"}}).gpuAwakePercent, 50);
    EXPECT_EQ(look({{card + "device/power/runtime_status", "suspended"}, {xe, "0"}}).gpuAwakePercent, 0);
}

TEST_F(Strained, TheBusiestDeviceAndQueueCount) {
    const std::string head = "queue\ttimestamp\tjobs\truntime\n";
    look({{card + "device/gpu_stats", head + "bin\t1000\t1\t100\nrender\t1000\t1\t500"},
          {"sys/class/drm/card1/device/gpu_busy_percent", "30"}});
    EXPECT_EQ(look().gpuPercent, 30) << "no time went by for the queues";
    EXPECT_EQ(look({{card + "device/gpu_stats", head + "bin\t2000\t1\t200\nrender\t2000\t1\t1100"}}).gpuPercent, 60);
    EXPECT_EQ(look({{"sys/class/devfreq/17000000.ga10b/device/load", "875"}}).gpuPercent, 30) << "found at the start";
    strain.reset();
    EXPECT_EQ(look().gpuPercent, 87.5);
    EXPECT_EQ(parseBoardLoad("45@600000000Hz\n"), 45);
    EXPECT_EQ(parseBoardLoad("4500"), std::nullopt);
    EXPECT_EQ(parseBoardLoad("busy"), std::nullopt);
    EXPECT_EQ(busiestQueue({{.now = 5, .worked = 9}}, {{.now = 15, .worked = 3}}), std::nullopt) << "reset";
}

} // namespace
} // namespace vantoro
