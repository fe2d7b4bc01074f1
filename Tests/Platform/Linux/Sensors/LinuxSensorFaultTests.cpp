// Sensors that lie, hang, vanish or come in thousands; and the arithmetic beneath.
#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Power/EnergyCounters.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Reading/LanedReading.h"
#include "Platform/Linux/Reading/SysfsText.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Linux/Sensors/SensorMachine.h"

#include <bit>
#include <chrono>
#include <filesystem>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace vantoro {
namespace {

using ::testing::ElementsAre;
using testing::SensorMachine;

SMCKeyData ask(SMCService& service, SMCCommand command, std::string_view key, std::uint32_t index = 0) {
    SMCKeyData request;
    request.key = keyCode(key);
    request.data8 = static_cast<std::uint8_t>(command);
    request.data32 = index;
    SMCKeyData reply;
    EXPECT_TRUE(service.call(service.open("AppleSMC"), request, reply));
    return reply;
}

std::optional<double> value(SMCService& service, std::string_view key) {
    const SMCKeyData reply = ask(service, SMCCommand::readBytes, key);
    if (reply.result != 0)
        return {};
    std::uint32_t word = 0;
    for (int place = 3; place >= 0; --place)
        word = word << 8 | reply.bytes[static_cast<std::size_t>(place)];
    return std::bit_cast<float>(word);
}

TEST(LinuxSensorFaults, ABadSensorCostsOnlyItself) {
    const SensorMachine machine;
    const std::string chip = "sys/class/hwmon/hwmon0/";
    machine.write(chip + "name", "board\n");
    const std::vector<std::pair<std::string, std::optional<double>>> files = {{"41000\n", 41.0},
                                                                              {"", {}},
                                                                              {"warm\n", {}},
                                                                              {"1000000000\n", {}},
                                                                              {"-128000\n", {}},
                                                                              {"127500\n", {}},
                                                                              {"255000\n", {}},
                                                                              {"-62000\n", {}},
                                                                              {"-40000\n", -40.0},
                                                                              {"4100 0\n", {}},
                                                                              {"99999999999999999999\n", {}}};
    int number = 0;
    for (const auto& [text, expected] : files)
        machine.write(chip + "temp" + std::to_string(++number) + "_input", text);
    const std::string folder = machine.root() + "/" + chip;
    std::filesystem::create_directory(folder + "temp12_input"); // reading a folder is an error like a driver's
    ASSERT_EQ(::mkfifo((folder + "temp13_input").c_str(), 0600), 0);
    std::filesystem::create_symlink("temp14_input", folder + "temp14_input");
    machine.write(chip + "temp15_input", "1");
    machine.write(chip + "fan1_input", "900\n");
    std::filesystem::create_directory(folder + "fan2_input");
    // Chips that are none: without a name, a circle, a link to nowhere, a file; and one that keeps its files elsewhere.
    const std::string hwmon = machine.root() + "/sys/class/hwmon/";
    machine.write("sys/class/hwmon/hwmon1/temp1_input", "40000\n");
    std::filesystem::create_symlink("hwmon2", hwmon + "hwmon2");
    std::filesystem::create_symlink("../hwmon", hwmon + "hwmon3");
    std::filesystem::create_symlink("../../nowhere", hwmon + "hwmon4");
    machine.write("sys/class/hwmon/hwmon5", "x");
    machine.write("sys/devices/old/name", "coretemp\n");
    machine.write("sys/devices/old/temp1_input", "50000\n");
    std::filesystem::create_directory(hwmon + "hwmon6");
    std::filesystem::create_symlink("../../../devices/old", hwmon + "hwmon6/device");

    HwmonSMCService service(machine.root(), machine.lane(), nullptr);
    ASSERT_NE(service.open("AppleSMC"), 0u);
    machine.remove(chip + "temp15_input"); // vanishes between discovery and reading
    for (std::size_t place = 0; place < files.size(); ++place)
        EXPECT_EQ(value(service, std::string("Ts0") + "0123456789A"[place]), files[place].second) << place;
    for (const char* key : {"Ts0B", "Ts0C", "Ts0D", "Ts0E", "F1Ac"}) {
        EXPECT_EQ(ask(service, SMCCommand::readKeyInfo, key).result, 0) << key;
        EXPECT_FALSE(value(service, key)) << key;
    }
    EXPECT_EQ(value(service, "F0Ac"), 900.0);
    EXPECT_EQ(value(service, "Tp00"), 50.0);
    EXPECT_FALSE(value(service, "Ts0F"));
    // #KEY, FNum, four keys of each fan, fifteen and one temperatures.
    EXPECT_EQ(ask(service, SMCCommand::readBytes, "#KEY").bytes[3], 26);
    EXPECT_EQ(ask(service, SMCCommand::getKeyAtIndex, "", 0).key, keyCode("#KEY"));
    EXPECT_NE(ask(service, SMCCommand::getKeyAtIndex, "", 26).result, 0);
}

TEST(LinuxSensorFaults, KeysDoNotDependOnHwmonsNumbers) {
    const auto machineWith = [](const std::string& first, const std::string& second) {
        auto machine = std::make_unique<SensorMachine>();
        for (const auto& [device, hwmon] : {std::pair("b.10", first), std::pair("b.9", second)}) {
            const std::string chip = std::string("sys/devices/") + device + "/hwmon/" + hwmon;
            machine->write(chip + "/name", "coretemp");
            machine->write(chip + "/temp1_label", "Core 10");
            machine->write(chip + "/temp1_input", "10");
            machine->write(chip + "/temp2_label", "Core 9");
            machine->write(chip + "/temp2_input", "9");
            std::filesystem::create_directories(machine->root() + "/sys/class/hwmon");
            std::filesystem::create_symlink("../../../" + chip, machine->root() + "/sys/class/hwmon/" + hwmon);
        }
        return machine;
    };
    for (const auto& machine : {machineWith("hwmon0", "hwmon1"), machineWith("hwmon7", "hwmon3")}) {
        std::vector<std::string> order;
        for (const HwmonSensor& sensor : discoverHwmon(machine->root()))
            order.push_back(sensor.devicePath + " " + sensor.label);
        EXPECT_THAT(order, ElementsAre("/devices/b.9 Core 9", "/devices/b.9 Core 10", "/devices/b.10 Core 9",
                                       "/devices/b.10 Core 10"));
    }
}

TEST(LinuxSensorFaults, FiveThousandSensorsAreFoundAndStayOpen) {
    const SensorMachine machine;
    for (int chip = 0; chip < 10; ++chip) {
        const std::string folder = "sys/class/hwmon/hwmon" + std::to_string(chip) + "/";
        machine.write(folder + "name", chip < 5 ? "coretemp" : "board");
        for (int number = 1; number <= 500; ++number)
            machine.write(folder + "temp" + std::to_string(number) + "_input", "45000\n");
    }
    HwmonSMCService service(machine.root(), machine.lane(), nullptr);
    ASSERT_NE(service.open("AppleSMC"), 0u);
    EXPECT_EQ(ask(service, SMCCommand::getKeyAtIndex, "", 1).key, keyCode("Tp00")); // after #KEY
    EXPECT_EQ(ask(service, SMCCommand::getKeyAtIndex, "", 5000).result, 0);
    EXPECT_NE(ask(service, SMCCommand::getKeyAtIndex, "", 5001).result, 0);
    const auto readAll = [&service](double expected) {
        int right = 0;
        for (std::uint32_t index = 0; index < 300; ++index) {
            const std::uint32_t code = ask(service, SMCCommand::getKeyAtIndex, "", index + 1).key;
            std::string key;
            for (int shift = 24; shift >= 0; shift -= 8)
                key += static_cast<char>(code >> shift);
            right += value(service, key) == expected;
        }
        return right;
    };
    EXPECT_EQ(readAll(45), 300);
    // Files of the same names take their places; who keeps the old ones open reads on as before.
    std::filesystem::rename(machine.root() + "/sys/class/hwmon", machine.root() + "/aside");
    EXPECT_EQ(readAll(45), 300);
}

TEST(LinuxSensorFaults, ASlowSensorMovesOutOfTheWay) {
    SensorMachine machine;
    const auto seconds = machine.seconds();
    auto takes = std::make_shared<std::atomic<double>>(0.0);
    auto reads = std::make_shared<std::atomic<int>>(0);
    LanedReading<int> reading(machine.lane(), [=] {
        *seconds = *seconds + *takes;
        return std::optional(++*reads);
    });
    const auto settle = [&](int count) {
        std::promise<void> reached; // by the lane's one worker, when it is done with what was handed over before
        machine.lane()->submit([&] { reached.set_value(); });
        reached.get_future().wait();
        EXPECT_EQ(*reads, count);
    };
    EXPECT_EQ(reading.read(), 1);
    EXPECT_EQ(reading.read(), 2);
    *takes = 0.03;
    EXPECT_EQ(reading.read(), 3); // the one that shows it: read here
    EXPECT_EQ(reading.read(), 3); // from now on: what the one before gave
    settle(4);
    EXPECT_EQ(reading.read(), 4);
    settle(5);
    machine.pass(31);
    EXPECT_EQ(reading.read(), std::nullopt); // too old to be told
    settle(6);
    *takes = 0;
    for (int count = 7; count < 15; ++count) {
        reading.read();
        settle(count);
    }
    const int before = *reads;
    EXPECT_EQ(reading.read(), before + 1); // eight quick ones brought it back
}

TEST(LinuxSensorFaults, AStuckDriverHoldsUpNobody) {
    const auto lane = std::make_shared<SlowLane>([] { return 100.0; });
    std::promise<void> release;
    const std::shared_future<void> released(release.get_future());
    std::vector<LanedReading<int>> stuck;
    for (int count = 0; count < 3; ++count)
        stuck.emplace_back(lane, [released] {
            released.wait();
            return std::optional(1);
        });
    for (auto& reading : stuck)
        EXPECT_EQ(reading.read(), std::nullopt);
    LanedReading<int> sound(lane, [] { return std::optional(2); });
    for (int tries = 0; tries < 500 && !sound.read(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(sound.read(), 2);
    release.set_value();
}

class ScriptedNvml : public Nvml {
public:
    bool open() override {
        opened += !isOpen;
        return isOpen = true;
    }
    void close() override { isOpen = false; }
    std::optional<NvmlReading> read(const std::string& address) override {
        asked.push_back(address);
        return NvmlReading{.celsius = 66, .totalMillijoules = 5000, .milliwatts = 21000};
    }

    bool isOpen = false;
    int opened = 0;
    std::vector<std::string> asked;
};

TEST(LinuxSensorFaults, ASleepingNvidiaCardIsLeftAlone) {
    SensorMachine machine;
    const std::string driver = "sys/bus/pci/drivers/nvidia/";
    const std::string card = driver + "0000:01:00.0/";
    machine.write(card + "class", "0x030000\n");
    machine.write(card + "power/control", "on\n");
    machine.write(card + "power/runtime_status", "suspended\n");
    machine.write(driver + "0000:01:00.1/class", "0x040300\n");
    const auto nvml = std::make_shared<ScriptedNvml>();
    NvidiaGPUs gpus(machine.root(), nvml, machine.lane());
    const auto celsius = [&] {
        machine.pass(1);
        const auto& readings = gpus.readings();
        return readings.at(0) ? readings[0]->celsius : std::nullopt;
    };
    for (int tries = 0; tries < 3; ++tries)
        EXPECT_FALSE(celsius());
    EXPECT_EQ(nvml->opened, 0);
    machine.write(card + "power/runtime_status", "active\n");
    EXPECT_EQ(celsius(), 66);
    EXPECT_EQ(celsius(), 66);
    EXPECT_TRUE(nvml->isOpen); // it cannot sleep: the library stays open
    EXPECT_EQ(nvml->opened, 1);
    machine.write(card + "power/control", "auto\n");
    nvml->asked.clear();
    for (int second = 0; second < 60; ++second)
        EXPECT_EQ(celsius(), 66);
    EXPECT_EQ(nvml->asked.size(), 2u);
    EXPECT_FALSE(nvml->isOpen);
    machine.write(card + "power/runtime_status", "suspended\n");
    EXPECT_FALSE(celsius());
    EXPECT_EQ(nvml->asked, (std::vector<std::string>{"0000:01:00.0", "0000:01:00.0"}));
}

TEST(LinuxSensorFaults, AnIdleCardIsLeftToFallAsleep) {
    SensorMachine machine;
    const std::string chip = "sys/class/hwmon/hwmon0/";
    const std::string power = chip + "device/power/";
    machine.write(chip + "name", "xe\n");
    machine.write(chip + "temp1_input", "40000\n");
    machine.write(chip + "energy1_input", "0\n");
    machine.write(power + "control", "auto\n");
    machine.write(power + "runtime_status", "active\n");
    machine.write(power + "autosuspend_delay_ms", "5000\n");
    const std::vector<HwmonSensor> sensors = discoverHwmon(machine.root());
    HwmonReading temperature = sensorReading(sensors[0], sensors[0].inputPath, machine.lane());
    HwmonReading energy = sensorReading(sensors[1], sensors[1].inputPath, machine.lane());
    EXPECT_EQ(temperature.read(), 40000);
    EXPECT_EQ(energy.read(), 0) << "all files of a moment are one look";
    std::int64_t microjoules = 0;
    std::vector<std::int64_t> seen;
    const auto watch = [&](int seconds, int watts, std::int64_t celsius) {
        for (int second = 0; second < seconds; ++second) {
            machine.pass(1);
            microjoules += watts * 1'000'000;
            machine.write(chip + "energy1_input", std::to_string(microjoules) + "\n");
            machine.write(chip + "temp1_input", std::to_string(celsius * 1000) + "\n");
            seen.push_back(energy.read().value_or(-1));
        }
        return temperature.read();
    };
    EXPECT_EQ(watch(12, 5, 50), 40000) << "longer than it waits before it sleeps";
    EXPECT_EQ(watch(1, 5, 51), 51000) << "something else keeps it awake";
    EXPECT_EQ(watch(50, 30, 70), 70000);
    watch(60, 30, 70);
    for (std::size_t at = 20; at < seen.size(); ++at) // looked at or not, its power is told evenly
        EXPECT_EQ(seen[at] - seen[at - 1], 30'000'000) << at;
    machine.write(power + "runtime_status", "suspended\n");
    EXPECT_EQ(watch(1, 0, 30), std::nullopt);
    machine.write(power + "control", "on\n");
    machine.write(power + "runtime_status", "active\n");
    for (const int celsius : {31, 32, 33})
        EXPECT_EQ(watch(1, 0, celsius), celsius * 1000) << "it never sleeps";
}

TEST(LinuxSensorFaults, ADriveThatRestsIsNotWoken) {
    SensorMachine machine;
    const std::string chip = "sys/class/hwmon/hwmon0/";
    machine.write(chip + "name", "drivetemp\n");
    machine.write(chip + "temp1_input", "35000\n");
    machine.write(chip + "device/power/runtime_status", "active\n");
    machine.write(chip + "device/block/sda/queue/rotational", "1\n");
    int requests = 0;
    HwmonReading reading = [&] {
        const HwmonSensor sensor = discoverHwmon(machine.root()).front();
        return sensorReading(sensor, sensor.inputPath, machine.lane());
    }();
    const auto after = [&](double seconds, bool works) {
        machine.pass(seconds);
        requests += works ? 1 : 0;
        machine.write(chip + "device/block/sda/stat", "    " + std::to_string(requests) + "  0 0 0\n");
        return reading.read();
    };
    EXPECT_EQ(after(2, false), std::nullopt) << "whether it turns is not known";
    EXPECT_EQ(after(2, false), std::nullopt);
    EXPECT_EQ(after(2, true), 35000);
    machine.write(chip + "temp1_input", "41000\n");
    EXPECT_EQ(after(200, true), 35000) << "once in five minutes";
    EXPECT_EQ(after(101, true), 41000);
    EXPECT_EQ(after(310, false), 41000);
    EXPECT_EQ(after(310, false), std::nullopt) << "too old";
    EXPECT_EQ(after(2, true), 41000);
    machine.write(chip + "device/power/runtime_status", "suspended\n");
    EXPECT_EQ(after(2, true), std::nullopt);
}

TEST(LinuxSensorFaults, ADriverThatComesAgainIsFoundWithinTenSeconds) {
    SensorMachine machine;
    const auto plug = [&](const std::string& hwmon, const std::string& driver, int celsius) {
        const std::string chip = "sys/devices/" + driver + "/hwmon/" + hwmon;
        machine.write(chip + "/name", driver + "\n");
        machine.write(chip + "/temp1_input", std::to_string(celsius * 1000) + "\n");
        std::filesystem::create_directories(machine.root() + "/sys/class/hwmon");
        std::filesystem::create_symlink("../../../" + chip, machine.root() + "/sys/class/hwmon/" + hwmon);
    };
    plug("hwmon0", "coretemp", 60);
    HwmonSMCService service(machine.root(), machine.lane(), nullptr);
    EXPECT_EQ(value(service, "Tp00"), 60.0);
    const std::uint64_t before = service.generation();
    machine.pass(10);
    EXPECT_EQ(service.generation(), before);
    // Two drivers change places: the number alone tells nothing.
    std::filesystem::remove(machine.root() + "/sys/class/hwmon/hwmon0");
    std::filesystem::remove_all(machine.root() + "/sys/devices/coretemp");
    plug("hwmon0", "nct6799", 35);
    plug("hwmon1", "coretemp", 61);
    machine.pass(10);
    EXPECT_NE(service.generation(), before);
    EXPECT_EQ(value(service, "Tp00"), 61.0);
    EXPECT_EQ(value(service, "Ts00"), 35.0);
}

TEST(LinuxSensorFaults, ZonesThatNoChipShowsGiveTheChipsTemperature) {
    struct Case {
        /// Type of each zone, degrees.
        std::vector<std::pair<const char*, int>> zones;
        std::optional<double> chip, graphics, enclosure;
    };
    const Case table[] = {
        {{{"CPU-therm", 44}, {"GPU-therm", 41}, {"PLL-therm", 43}, {"PMIC-Die", 100}, {"Tboard_tegra", 35}},
         44,
         41,
         35},
        {{{"cpu-thermal", 48}, {"gpu-thermal", 44}, {"tj-thermal", 49}}, 48, 44, {}},
        {{{"cpu0-thermal", 51}, {"nspss-0-thermal", 70}, {"skin-temp-thermal", 33}}, 51, {}, 33},
        {{{"acpitz", 27}, {"INT3400 Thermal", 20}, {"x86_pkg_temp", 63}}, 63, {}, {}},
        {{{"acpitz", 27}}, {}, {}, {}}};
    for (const Case& each : table) {
        SensorMachine machine;
        int number = 0;
        for (const auto& [type, celsius] : each.zones) {
            const std::string zone = "sys/class/thermal/thermal_zone" + std::to_string(number++) + "/";
            machine.write(zone + "type", std::string(type) + "\n");
            machine.write(zone + "temp", std::to_string(celsius * 1000) + "\n");
        }
        HwmonSMCService service(machine.root(), machine.lane(), nullptr);
        const std::string first = each.zones.front().first;
        EXPECT_EQ(service.open("AppleSMC") != 0, each.chip.has_value()) << first;
        if (!each.chip)
            continue;
        EXPECT_EQ(value(service, "Tp00"), each.chip) << first;
        EXPECT_EQ(value(service, "Tg00"), each.graphics) << first;
        EXPECT_EQ(value(service, "Ts00"), each.enclosure) << first;
    }
}

TEST(LinuxSensorFaults, OnlyTheTruestOfAProcessorsTemperaturesCount) {
    const SensorMachine machine;
    const auto chip = [&](int number, const char* driver,
                          const std::vector<std::pair<const char*, int>>& temperatures) {
        const std::string folder = "sys/class/hwmon/hwmon" + std::to_string(number) + "/";
        machine.write(folder + "name", driver);
        int sensor = 0;
        for (const auto& [label, celsius] : temperatures) {
            const std::string stem = folder + "temp" + std::to_string(++sensor);
            machine.write(stem + "_label", label);
            machine.write(stem + "_input", std::to_string(celsius * 1000));
        }
    };
    chip(0, "k10temp", {{"Tctl", 95}, {"Tccd1", 68}});
    chip(1, "nct6799", {{"SYSTIN", 34}, {"CPUTIN", 90}, {"TSI0_TEMP", 95}, {"AUXTIN0", 127}, {"AUXTIN1", -62}});
    chip(2, "asusec", {{"CPU", 80}, {"VRM", 50}});
    machine.write("sys/class/hwmon/hwmon1/temp6_input", "99000\n");
    machine.write("sys/class/hwmon/hwmon1/temp6_fault", "1\n");
    HwmonSMCService service(machine.root(), machine.lane(), nullptr);
    EXPECT_EQ(value(service, "Tp00"), 68.0);
    EXPECT_FALSE(value(service, "Tp01"));
    std::vector<double> enclosure;
    for (const char digit : std::string("0123456789"))
        if (const auto celsius = value(service, std::string("Ts0") + digit))
            enclosure.push_back(*celsius);
    EXPECT_THAT(enclosure, ::testing::UnorderedElementsAre(34, 50));
}

TEST(LinuxSensorFaults, TheGraphicsOnAProcessorsDieSpeakForItWhereNothingElseDoes) {
    const SensorMachine machine;
    const std::string card = "sys/class/hwmon/hwmon0/";
    machine.write(card + "name", "amdgpu\n");
    machine.write(card + "temp1_input", "46000\n");
    const auto chip = [&machine](const char* key = "Tp00") {
        HwmonSMCService service(machine.root(), machine.lane(), nullptr);
        return value(service, key);
    };
    EXPECT_FALSE(chip()) << "a card's is its own";
    machine.write(card + "in1_input", "655\n");
    EXPECT_EQ(chip(), 46.0);
    machine.write("sys/class/hwmon/hwmon1/name", "k10temp\n");
    machine.write("sys/class/hwmon/hwmon1/temp1_input", "48000\n");
    EXPECT_EQ(chip(), 48.0);
    EXPECT_FALSE(chip("Tp01"));
}

TEST(LinuxSensorFaults, WhoLooksOnlyOnceWaitsForASlowDriver) {
    const auto lane = std::make_shared<SlowLane>(
        [] { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); });
    lane->waitAlways(10);
    int value = 0;
    LanedReading<int> reading(lane, [&value] {
        std::this_thread::sleep_for(std::chrono::milliseconds(70));
        return std::optional(++value);
    });
    EXPECT_EQ(reading.read(), 1);
    EXPECT_EQ(reading.read(), 2) << "not what was read before";
}

TEST(LinuxSensorArithmetic, TakesTextsApart) {
    EXPECT_THAT(parseCpuList("0-2,8,x,5-4,7\n"), ElementsAre(0, 1, 2, 7, 8));
    EXPECT_THAT(parseCpuList("0-99999999999"), ::testing::IsEmpty());
    EXPECT_EQ(parseHwmonFileName("temp12_input"), (HwmonFileName{"temp", 12, "input"}));
    EXPECT_EQ(parseHwmonFileName("pwm1"), (HwmonFileName{"pwm", 1, ""}));
    for (const char* name : {"name", "1temp", "temp1x_input", "temp99999999_input", ""})
        EXPECT_FALSE(parseHwmonFileName(name)) << name;
    EXPECT_EQ(withoutHwmonNumber("/devices/nvme0/hwmon1"), "/devices/nvme0");
    EXPECT_EQ(withoutHwmonNumber("/devices/x/hwmon/hwmon1"), "/devices/x");
}

TEST(LinuxSensorArithmetic, SortsDriversIntoFamilies) {
    struct Case {
        SensorRole role;
        /// A driver, and behind a slash a label.
        std::vector<std::string> sensors;
    };
    const SensorRole chip{SensorFamily::chip};
    const Case table[] = {
        {chip,
         {"coretemp/Package id 1", "k10temp/Tctl", "zenpower/Tdie", "cpu_thermal", "soc_thermal", "bigcore0_thermal",
          "CPU_therm", "tj_thermal", "cpu_1_0_thermal", "cpuss0_thermal", "cluster1_thermal", "cpu_l_thermal_zone",
          "bcm2835_thermal", "imx_thermal_zone", "package_thermal", "scmi_sensors/CPU"}},
        {{SensorFamily::chip, true},
         {"thinkpad/CPU", "dell_smm/CPU", "nct6799/PECI Agent 0", "nct6799/TSI0_TEMP", "nct6775/SMBUSMASTER 0",
          "asusec/CPU Package", "cros_ec/apu_f75303@4d", "nct6775/PCH_CPU_TEMP", "x86_pkg_temp", "TCPU",
          "peci_cputemp.cpu0/Die", "asus_wmi_sensors/CPU Socket Temperature"}},
        {{SensorFamily::graphics},
         {"amdgpu/mem", "nouveau", "i915", "xe/pkg", "gpu_thermal", "GPU_therm", "gpuss_0_thermal", "scpi_sensors/GPU",
          "thinkpad/GPU"}},
        {{SensorFamily::battery}, {"BAT1", "battery_thermal", "cros_ec/battery_temp@b"}},
        {{SensorFamily::enclosure},
         {"nvme/Composite", "nct6799/SYSTIN", "iwlwifi_1", "pch_cannonlake", "drivetemp", "asusec/VRM",
          "asus_wmi_sensors/CPU VRM Temperature", "skin_temp_thermal", "cros_ec/gpu_amb_f75303@4d", "jc42",
          "quiet_therm", "dell_smm/Ambient"}},
        {{},
         {"acpitz", "nct6775/CPUTIN", "nct6799/Virtual_TEMP", "center_thermal", "npu_thermal", "nspss_0_thermal",
          "mem_thermal", "tzts1_thermal", "AO_therm", "ddr_thermal", "INT3400 Thermal", "asusec/npu",
          "nct6799/PECI Agent 0 Calibration"}}};
    for (const Case& each : table)
        for (const std::string& sensor : each.sensors) {
            const std::string driver = sensor.substr(0, sensor.find('/'));
            const bool isZone = sensor.find('/') == std::string::npos && driver != "nouveau" && driver != "i915" &&
                                driver != "drivetemp" && driver != "jc42" && driver != "BAT1";
            const HwmonSensor found{.driver = driver,
                                    .devicePath = isZone ? "/devices/virtual/thermal/thermal_zone7" : "/devices/x",
                                    .label = sensor.substr(std::min(sensor.size(), driver.size() + 1))};
            EXPECT_EQ(roleOf(found), each.role) << sensor;
        }
}

TEST(LinuxSensorArithmetic, CountersAndCeilings) {
    SteadyCounter counter;
    EXPECT_EQ(counter.update(90, 100), 90);
    EXPECT_EQ(counter.update(5, 100), 105);
    EXPECT_EQ(counter.update(2), 105); // reset
    EXPECT_EQ(counter.update(4), 107);
}

} // namespace
} // namespace vantoro
