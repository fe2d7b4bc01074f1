// Sensors that lie, hang, vanish or come in thousands; and the arithmetic beneath.
#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Power/EnergyCounters.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Reading/LanedReading.h"
#include "Platform/Linux/Reading/SysfsText.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Linux/Sensors/SensorMachine.h"

#include <future>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

namespace vantoro {
namespace {

using testing::ask;
using ::testing::ElementsAre;
using testing::SensorMachine;
using testing::value;

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

TEST(LinuxSensorArithmetic, CountersAndCeilings) {
    SteadyCounter counter;
    EXPECT_EQ(counter.update(90, 100), 90);
    EXPECT_EQ(counter.update(5, 100), 105);
    EXPECT_EQ(counter.update(2), 105); // reset
    EXPECT_EQ(counter.update(4), 107);
}

} // namespace
} // namespace vantoro
