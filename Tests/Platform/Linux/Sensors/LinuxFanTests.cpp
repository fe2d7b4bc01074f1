// Fans as their drivers really give them: whose they are, what they are called, and what is known of their reach.
#include "Platform/Linux/Hwmon/FanLimits.h"
#include "Platform/Linux/Hwmon/HwmonFan.h"
#include "Platform/Linux/Sensors/SensorMachine.h"

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace vantoro {
namespace {

using ::testing::ElementsAre;
using testing::SensorMachine;

constexpr double day = 86'400;

/// The first fan of a chip with these files.
class Chip {
public:
    explicit Chip(const std::string& driver, const std::map<std::string, std::string>& files = {}) {
        machine.write(folder + "name", driver + "\n");
        machine.write(folder + "fan1_input", "0\n");
        for (const auto& [name, text] : files)
            machine.write(folder + name, text);
    }

    HwmonFan& fan() {
        if (!memory)
            memory = std::make_shared<FanMemory>(memoryPath, machine.lane()->clock());
        if (!fan_)
            fan_ = std::make_unique<HwmonFan>(discoverHwmon(machine.root()).front(), machine.lane(), memory);
        return *fan_;
    }
    void set(const std::string& file, double value) {
        machine.write(folder + file, std::to_string(static_cast<long>(value)) + "\n");
    }
    /// Runs at this speed for so long, looked at every two seconds.
    std::optional<FanLimits> run(double rpm, double seconds = 30) {
        set("fan1_input", rpm);
        for (double passed = 0; passed < seconds; passed += 2) {
            machine.pass(2);
            fan().speed();
        }
        return fan().limits();
    }
    /// The same with a duty.
    std::optional<FanLimits> run(double rpm, int duty) {
        set("pwm1", duty);
        return run(rpm);
    }
    void restart() {
        fan_.reset();
        memory.reset();
    }

    SensorMachine machine;
    std::string folder = "sys/class/hwmon/hwmon0/";
    std::string memoryPath = machine.root() + "/state/vantoro/fans";
    std::shared_ptr<FanMemory> memory;

private:
    std::unique_ptr<HwmonFan> fan_;
};

TEST(LinuxFans, TheirReachIsNeverThePresentSpeed) {
    for (const char* driver : {"thinkpad", "hp", "asus", "asusec", "it8686", "nct6799", "surface_fan", "cros_ec",
                               "gpd_fan", "oxp_ec", "steamdeck_hwmon", "applesmc", "f71882fg"}) {
        Chip chip(driver, {{"pwm1", "128\n"}, {"fan1_target", "3000\n"}});
        for (const double rpm : {0, 1435, 2600, 4800, 2600})
            EXPECT_EQ(chip.run(rpm), std::nullopt) << driver << ' ' << rpm;
    }
}

TEST(LinuxFans, WhatIsStatedIsBelievedUnlessItFollows) {
    Chip mac("macsmc_hwmon", {{"fan1_min", "2317\n"}, {"fan1_max", "7826\n"}});
    EXPECT_EQ(mac.run(7826), (FanLimits{.floorRPM = 2317, .ceilingRPM = 7826}));
    EXPECT_EQ(mac.run(0), (FanLimits{.floorRPM = 2317, .ceilingRPM = 7826}));

    Chip laptop("dell_smm", {{"fan1_min", "1000\n"}, {"fan1_max", "4900\n"}});
    EXPECT_EQ(laptop.run(4850), std::nullopt) << "as yet it might be the present speed";
    EXPECT_EQ(laptop.run(2400), (FanLimits{.floorRPM = 1000, .ceilingRPM = 4900}));
    EXPECT_EQ(laptop.run(4950), (FanLimits{.floorRPM = 1000, .ceilingRPM = 4900})) << "a little beyond is no lie";
    EXPECT_EQ(laptop.run(5600), std::nullopt);

    Chip follower("hp", {{"fan1_min", "1000\n"}, {"fan1_max", "3000\n"}});
    follower.run(2000);
    for (const double rpm : {3000, 3400, 3800}) {
        follower.set("fan1_max", rpm);
        follower.run(rpm);
    }
    EXPECT_EQ(follower.run(2000), std::nullopt);

    Chip alarm("nct6776", {{"fan1_min", "300\n"}, {"fan1_max", "12000\n"}});
    EXPECT_EQ(alarm.run(5400), std::nullopt) << "a board's chip raises an alarm below its least speed";
    Chip stops("dell_smm", {{"fan1_min", "0\n"}, {"fan1_max", "4900\n"}});
    EXPECT_EQ(stops.run(2400), std::nullopt) << "that it may stop says nothing of its slowest turning";
    EXPECT_EQ(stops.run(0), (FanLimits{.floorRPM = 0, .ceilingRPM = 4900}));
    EXPECT_EQ(stops.run(2400), (FanLimits{.floorRPM = 2400, .ceilingRPM = 4900}));
    EXPECT_EQ(stops.run(3500), (FanLimits{.floorRPM = 2400, .ceilingRPM = 4900}));
    Chip works("dell_smm", {{"fan1_min", "0\n"}, {"fan1_max", "4900\n"}});
    EXPECT_EQ(works.run(4600), (FanLimits{.floorRPM = 2450, .ceilingRPM = 4900}));
}

TEST(LinuxFans, ADutyIsRealWhereItMovesWithTheSpeed) {
    Chip stale("it8686", {{"pwm1", "96\n"}});
    for (const double rpm : {900, 1200, 1500, 1800, 2100})
        EXPECT_EQ(stale.run(rpm), std::nullopt);
    Chip against("asus", {{"pwm1", "0\n"}});
    for (const int duty : {85, 120, 170, 255})
        EXPECT_EQ(against.run(3000 - duty * 4.0, duty), std::nullopt) << "the slower the more it is told";

    Chip board("nct6799", {{"pwm1", "60\n"}});
    EXPECT_EQ(board.run(700, 60), std::nullopt);
    EXPECT_EQ(board.run(900, 90), std::nullopt);
    EXPECT_EQ(board.run(1100, 120), std::nullopt);
    const auto proven = board.run(1300, 150);
    ASSERT_TRUE(proven);
    EXPECT_EQ(proven->source, FanLimitSource::duty);
    EXPECT_NEAR(proven->ceilingRPM, 2000, 1) << "300 and a fifteenth of 255";
    EXPECT_NEAR(proven->floorRPM, 600, 1);
    EXPECT_NEAR(board.run(450, 60)->floorRPM, 450, 1) << "slower than they are built for, but seen";

    Chip known("pwmfan", {{"pwm1", "0\n"}, {"fan1_input", "0\n"}});
    known.machine.write(known.folder + "device/of_node/cooling-levels",
                        std::string("\0\0\0\0\0\0\0\x4b\0\0\0\x7d\0\0\0\xfa", 16));
    EXPECT_EQ(known.run(0, 0), std::nullopt);
    EXPECT_EQ(known.run(2400, 75), (FanLimits{.floorRPM = 2400, .ceilingRPM = 8160, .source = FanLimitSource::duty}));
    EXPECT_EQ(known.run(0, 0), (FanLimits{.floorRPM = 2400, .ceilingRPM = 8160, .source = FanLimitSource::duty}));
    Chip cooler("kraken2023", {{"pwm1", "255\n"}});
    EXPECT_EQ(cooler.run(1800, 255), (FanLimits{.floorRPM = 0, .ceilingRPM = 1800, .source = FanLimitSource::duty}));
}

TEST(LinuxFans, ADayOfWatchingTeachesTheirReachForGood) {
    Chip chip("thinkpad", {{"pwm1", "255\n"}});
    chip.run(2600, day / 2);
    chip.run(6400, 10.0); // too short to count
    EXPECT_EQ(chip.run(5000, day / 4), std::nullopt);
    EXPECT_EQ(chip.fan().limitSource(), FanLimitSource::learning);
    chip.restart();
    struct stat status {};
    ASSERT_EQ(::stat(chip.memoryPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(status.st_size < 200
                  ? std::distance(std::filesystem::directory_iterator(chip.machine.root() + "/state/vantoro"),
                                  std::filesystem::directory_iterator())
                  : 0,
              1);
    chip.run(0, 60.0);
    const auto learned = chip.run(3000, day / 4);
    EXPECT_EQ(learned, (FanLimits{.floorRPM = 2600, .ceilingRPM = 5000, .source = FanLimitSource::learned}));
    EXPECT_EQ(chip.run(5300, 4.0)->ceilingRPM, 5300) << "no fan runs beyond its ceiling";

    Chip steady("thinkpad");
    EXPECT_EQ(steady.run(2600, day) ? 1 : 0, 0);
    EXPECT_EQ(steady.run(2800, day / 10), std::nullopt) << "trembling is no range";
    EXPECT_EQ(steady.fan().limitSource(), std::nullopt) << "nothing is promised any more";
    // Another fan is not taken for it, and a machine that slept was not watched.
    Chip slept("thinkpad");
    slept.run(2600);
    slept.machine.pass(2 * day);
    slept.run(5000);
    EXPECT_EQ(slept.run(2600), std::nullopt);
}

TEST(LinuxFans, AMemoryThatIsNoneIsDoneWithout) {
    const FanRanges ranges = {{"thinkpad /devices/platform/x fan1 ", {2600, 5000, 90000}}, {"a b c", {1, 2, 3}}};
    EXPECT_EQ(parseFanRanges(printFanRanges(ranges)), ranges);
    for (const std::string text : {"", "\n\n", "1 2 3", "1 2 3 ", "5 4 3 fan", "-1 2 3 fan", "1e3 2 3 fan",
                                   "nan nan nan fan", "1 999999999 3 fan", "99999999999999999999 1 1 fan", "\xff\xfe"})
        EXPECT_TRUE(parseFanRanges(text).empty()) << text;
    EXPECT_EQ(parseFanRanges("rubbish\n1 2 3 fan\n" + std::string(100'000, 'x')).size(), 1u);
    std::string many;
    for (int fan = 0; fan < 1000; ++fan)
        many += "1 2 3 fan" + std::to_string(fan) + "\n";
    EXPECT_EQ(parseFanRanges(many).size(), 128u);

    Chip chip("thinkpad");
    chip.machine.write("state", "a file where a folder should be\n");
    chip.run(2600, 900.0);
    chip.restart();
    EXPECT_FALSE(std::filesystem::exists(chip.memoryPath));
    EXPECT_EQ(fanMemoryPath("/state", "/home/me"), "/state/vantoro/fans");
    EXPECT_EQ(fanMemoryPath("relative", "/home/me"), "/home/me/.local/state/vantoro/fans");
    EXPECT_EQ(fanMemoryPath(nullptr, nullptr), "");
}

TEST(LinuxFans, AStoppedFanIsOneAtRestAndAFaultyOneIsNone) {
    Chip laptop("thinkpad", {{"pwm1", "255\n"}});
    EXPECT_EQ(laptop.fan().speed(), 0.0) << "it repeats what was asked for last";
    Chip header("nct6799", {{"pwm1", "153\n"}});
    EXPECT_EQ(header.fan().speed(), std::nullopt) << "nothing is plugged in";
    header.set("fan1_input", 800);
    EXPECT_EQ(header.fan().speed(), 800.0);
    header.set("fan1_input", 0);
    EXPECT_EQ(header.fan().speed(), 0.0) << "it has turned";
    header.set("fan1_input", 65535);
    EXPECT_EQ(header.fan().speed(), std::nullopt);
    Chip faulty("ibmpowernv", {{"fan1_input", "5000\n"}, {"fan1_fault", "1\n"}});
    EXPECT_EQ(faulty.fan().speed(), std::nullopt);
}

TEST(LinuxFans, AreNamedByTheirDriversAndKnownByWhoseTheyAre) {
    struct Case {
        const char* driver;
        const char* label;
        int number;
        FanKind kind;
        const char* name;
    };
    std::vector<std::string> taken;
    for (const auto& [driver, label, number, kind, name] :
         {Case{"nct6799", "", 2, FanKind::machine, "Fan 2"}, Case{"it8686", "", 2, FanKind::machine, "Fan 3"},
          Case{"asus", "cpu_fan", 1, FanKind::machine, "CPU fan"},
          Case{"asus", "gpu_fan", 2, FanKind::machine, "GPU fan"},
          Case{"applesmc", "Left side", 1, FanKind::machine, "Left side"},
          Case{"dell_smm", "Processor Fan", 1, FanKind::machine, "Processor Fan"},
          Case{"dell_smm", "Processor Fan", 2, FanKind::machine, "Processor Fan 2"},
          Case{"dell_smm", "Power Supply Fan", 3, FanKind::powerSupply, "Power Supply Fan"},
          Case{"amdgpu", "", 1, FanKind::graphics, "Graphics fan"},
          Case{"xe", "", 1, FanKind::graphics, "Graphics fan 2"},
          Case{"corsairpsu", "psu fan", 1, FanKind::powerSupply, "PSU fan"},
          Case{"x53", "Pump speed", 1, FanKind::pump, "Pump speed"},
          Case{"kraken2023", "Fan speed", 2, FanKind::machine, "Fan speed"},
          Case{"asus_wmi_sensors", "AIO Pump", 4, FanKind::pump, "AIO Pump"},
          Case{"asusec", "Water_Flow", 2, FanKind::flow, "Water Flow"},
          Case{"d5next", "Flow speed [dL/h]", 3, FanKind::flow, "Flow speed [dL/h]"}}) {
        const HwmonSensor sensor{.driver = driver, .quantity = HwmonQuantity::fan, .number = number, .label = label};
        EXPECT_EQ(fanKindOf(sensor), kind) << name;
        taken.push_back(fanName(sensor, taken));
        EXPECT_EQ(taken.back(), name);
    }
    Chip card("amdgpu", {{"fan1_min", "0\n"}, {"fan1_max", "3300\n"}, {"pwm1", "89\n"}});
    EXPECT_EQ(card.run(1150), std::nullopt) << "how hard a card's own fan works says nothing of the machine's";
}

TEST(LinuxFans, OnlyWhatIsBuiltWithoutThemHasNone) {
    struct Case {
        const char* name;
        bool isFanless;
        const char* chassis = nullptr;
        /// What its tree says that it is, and its model.
        std::string compatible = {}, model = "A";
        std::map<std::string, std::string> also = {};
    };
    const std::string tree = "sys/firmware/devicetree/base/";
    const std::string board = std::string("raspberrypi,4-model-b\0brcm,bcm2711\0", 35);
    const std::map<std::string, std::string> stated{{tree + "cooling_fan/compatible", "pwm-fan"}};
    std::map<std::string, std::string> leftOut = stated;
    leftOut[tree + "cooling_fan/status"] = std::string("disabled\0", 9);
    for (const Case& each :
         {Case{"nothing is known", false},
          Case{"desktop", false, "3"},
          Case{"laptop", false, "10"},
          Case{"server", false, "23"},
          Case{"mini", false, "35"},
          Case{"tablet", true, "30"},
          Case{"tablet with a keyboard", false, "32"},
          Case{"handheld", true, "11"},
          Case{"tablet that drives one", false, "30", {}, {}, {{"sys/class/hwmon/hwmon0/pwm1", "60\n"}}},
          Case{"tablet whose firmware has one", false, "30", {}, {}, {{"sys/bus/acpi/devices/PNP0C0B:00/path", "x\n"}}},
          Case{"board", true, nullptr, board},
          Case{"board with a driven fan",
               false,
               nullptr,
               board,
               "A",
               {{"sys/class/thermal/cooling_device0/type", "pwm-fan"}}},
          Case{"board with a fan that nothing drives", false, nullptr, board, "A", stated},
          Case{"board whose fan is left out", true, nullptr, board, "A", leftOut},
          Case{"laptop by its tree", false, nullptr, "pine64,pinebook-pro", "A", {{tree + "chassis-type", "laptop"}}},
          Case{"telephone", true, nullptr, "pine64,pinephone", "A", {{tree + "chassis-type", "handset"}}},
          Case{"notebook without fans", true, nullptr, "apple,j413", "Apple MacBook Air (13-inch, M2, 2022)"},
          Case{"notebook with fans", false, nullptr, "apple,j314s", "Apple MacBook Pro (14-inch, M1 Pro, 2021)"},
          Case{"server with a tree", false, nullptr, "ibm,powernv", "8335-GTH"},
          Case{"virtual machine", false, nullptr, "linux,dummy-virt", "linux,dummy-virt"}}) {
        const SensorMachine machine;
        if (each.chassis != nullptr)
            machine.write("sys/class/dmi/id/chassis_type", std::string(each.chassis) + "\n");
        if (!each.compatible.empty()) {
            machine.write(tree + "compatible", each.compatible);
            machine.write(tree + "model", each.model);
        }
        for (const auto& [file, text] : each.also)
            machine.write(file, text);
        EXPECT_EQ(isFanless(readFanEvidence(machine.root(), {})), each.isFanless) << each.name;
    }
}

} // namespace
} // namespace vantoro
