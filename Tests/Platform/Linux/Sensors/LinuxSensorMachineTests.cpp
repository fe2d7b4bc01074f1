// What the readers make of each recorded machine.
#include "CSensors/ioreport.h"
#include "CSensors/smc.h"
#include "Model/Readers/GPUPowerSampler.h"
#include "Model/Readers/SensorDump.h"
#include "Model/Readers/SMCReader.h"
#include "Platform/Linux/Hwmon/HwmonFan.h"
#include "Platform/Linux/Power/LinuxEnergyReport.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Linux/Sensors/LinuxThermalState.h"
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

/// The reader over a machine's sensors.
class Reading {
public:
    explicit Reading(const SensorMachine& machine, const std::string& memory = "")
        : service_(std::make_shared<HwmonSMCService>(machine.root(), machine.lane(), nullptr, memory)) {
        smc_use(service_);
        reader_ = std::make_unique<SMCReader>(SMCReader::Options::of(service_, [](int) {}));
    }
    ~Reading() {
        reader_.reset();
        smc_use(nullptr);
    }
    SMCReader* operator->() { return reader_.get(); }
    SensorTrust trust() const { return service_->trust(); }

    static double number(const std::string& key) {
        double value = -1;
        smc_read_number(key.c_str(), &value);
        return value;
    }

private:
    std::shared_ptr<HwmonSMCService> service_;
    std::unique_ptr<SMCReader> reader_;
};

TEST(LinuxSensorMachines, GiveTheirTemperaturesAndFans) {
    struct Expected {
        std::string machine;
        SensorTrust trust;
        Temperatures temperatures;
        std::vector<FanReading> fans;
        Cooling cooling;
        std::vector<std::string> graphicsKeys;
        std::size_t enclosureKeys;
    };
    const Expected table[] = {
        // The embedded controller's copy of the processor's temperature and the firmware's zone count for nothing.
        {"intel-laptop",
         SensorTrust::fewAndHonest,
         {.soc = 67, .socMean = 370.0 / 6, .gpu = 0, .battery = 31.2, .enclosure = (38.85 + 45) / 2},
         {{.index = 0, .rpm = 3120, .targetRPM = 3120, .name = "Fan 1", .learnsLimits = true}},
         Cooling::heat,
         {"Tg00"},
         4},
        // The first fan of the board's has never turned though it is driven: nothing is plugged in.
        {"amd-desktop",
         SensorTrust::fewAndHonest,
         {.soc = 62.5, .socMean = 61.375, .gpu = 70, .battery = 0, .enclosure = 36},
         {{.index = 1, .rpm = 918, .targetRPM = 918, .name = "Fan 2", .learnsLimits = true},
          {.index = 2, .rpm = 0, .targetRPM = 0, .name = "Fan 3", .learnsLimits = true},
          {.index = 3, .rpm = 1150, .targetRPM = 1160, .name = "Graphics fan"}},
         Cooling::heat,
         {"Tg00", "Tg01", "Tg02", "Tg03"},
         3},
        {"arm-board",
         SensorTrust::fewAndHonest,
         {.soc = 52.777, .socMean = 52.777, .gpu = 49.444},
         {},
         Cooling::heat,
         {"Tg00"},
         0},
        // Small desktops mostly have a fan that no driver knows of.
        {"fanless-mini", SensorTrust::fewAndHonest, {.soc = 58, .socMean = 57}, {}, Cooling::heat, {}, 0},
        // The drive sleeps. What the board's chip states as the least speed is an alarm's.
        {"server",
         SensorTrust::fewAndHonest,
         {.soc = 61, .socMean = 58, .enclosure = 29},
         {{.index = 0, .rpm = 5400, .targetRPM = 5400, .name = "Fan 1", .learnsLimits = true},
          {.index = 1, .rpm = 5500, .targetRPM = 5500, .name = "Fan 2", .learnsLimits = true}},
         Cooling::heat,
         {},
         2},
        {"mac",
         SensorTrust::manyAndNoisy,
         {.soc = 56.03, .socMean = 52.015, .gpu = 46.73, .battery = 30.1, .enclosure = (29.5 + 33.85) / 2},
         {{.index = 0, .rpm = 2317, .minRPM = 2317, .maxRPM = 7826, .targetRPM = 2320, .name = "Fan 1"}},
         Cooling::fans,
         {"Tg0f", "Tg0j", "Tg0n", "Tg0r"},
         2}};
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.machine);
        const SensorMachine machine(expected.machine);
        Reading reading(machine);
        ASSERT_TRUE(reading->isAvailable());
        EXPECT_EQ(reading.trust(), expected.trust);
        EXPECT_EQ(reading->keys(SensorFamily::graphics), expected.graphicsKeys);
        EXPECT_EQ(reading->keys(SensorFamily::enclosure).size(), expected.enclosureKeys);
        const Temperatures got = reading->readTemperatures();
        constexpr double tolerance = 1e-4; // keys hold single precision
        EXPECT_NEAR(got.soc, expected.temperatures.soc, tolerance);
        EXPECT_NEAR(got.socMean, expected.temperatures.socMean, tolerance);
        EXPECT_NEAR(got.gpu, expected.temperatures.gpu, tolerance);
        EXPECT_NEAR(got.battery, expected.temperatures.battery, tolerance);
        EXPECT_NEAR(got.enclosure, expected.temperatures.enclosure, tolerance);
        EXPECT_EQ(reading->readFans(), expected.fans);
        EXPECT_EQ(reading->cooling(), expected.cooling);
    }
}

TEST(LinuxSensorMachines, GiveTheirPower) {
    struct Expected {
        std::string machine;
        /// What the counters gain in two seconds.
        std::map<std::string, std::string> twoSecondsLater;
        double system, adapter, battery;
    };
    const std::string zone = "sys/class/powercap/intel-rapl:";
    const Expected table[] = {{"intel-laptop", {}, 13.86, 0, 13.86},
                              // Plugged in: the platform's counter, which wraps, and what charges the battery.
                              {"intel-laptop",
                               {{"sys/class/power_supply/AC/online", "1\n"},
                                {"sys/class/power_supply/BAT0/status", "Charging\n"},
                                {zone + "1/energy_uj", "23671150\n"}},
                               12,
                               25.86,
                               13.86},
                              {"amd-desktop", {{zone + "0/energy_uj", "39389013\n"}}, 0, 0, 0},
                              {"arm-board", {}, 0, 0, 0},
                              {"server", {{zone + "0/energy_uj", "90000100\n"}}, 212, 0, 0},
                              {"mac", {}, 9.12, 61, 0}};
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.machine);
        SensorMachine machine(expected.machine);
        Reading reading(machine);
        reading->readPower();
        for (const auto& [file, text] : expected.twoSecondsLater)
            machine.write(file, text);
        machine.pass(2);
        const PowerReading power = reading->readPower();
        EXPECT_NEAR(power.systemWatts, expected.system, 1e-3);
        EXPECT_NEAR(power.adapterWatts, expected.adapter, 1e-3);
        EXPECT_NEAR(power.batteryWatts, expected.battery, 1e-3);
    }
}

TEST(LinuxSensorMachines, ASleepingCardIsNotReadAndUsesNothing) {
    SensorMachine machine("amd-desktop");
    const auto clock = [seconds = machine.seconds()] { return seconds->load(); };
    ior_use(std::make_shared<LinuxEnergyReport>(machine.root(), machine.lane(), nullptr));
    GPUPowerSampler sampler(clock);
    Reading reading(machine);
    sampler.sampleWatts();
    machine.pass(2);
    EXPECT_NEAR(sampler.sampleWatts(), 38, 1e-6); // the processor's own graphics give the package's power: left out
    EXPECT_NEAR(reading->readTemperatures().gpu, 70, 1e-4);

    machine.write("sys/devices/pci0000:00/0000:00:01.1/0000:03:00.0/power/runtime_status", "suspended\n");
    machine.pass(2);
    sampler.sampleWatts();
    machine.pass(2);
    EXPECT_EQ(sampler.sampleWatts(), 0);
    EXPECT_NEAR(reading->readTemperatures().gpu, 48, 1e-4);
    EXPECT_EQ(reading->readFans().back().name, "Fan 3");
    ior_use(nullptr);
}

TEST(LinuxSensorMachines, IntegratedGraphicsHaveAnEnergyCounter) {
    SensorMachine machine("intel-laptop");
    LinuxEnergyReport report(machine.root(), machine.lane(), nullptr);
    ASSERT_TRUE(report.load() && report.subscribe());
    const auto before = report.sample();
    EXPECT_EQ(before->channelCount(), 1);
    EXPECT_EQ(before->channelName(0), "GPU uncore intel-rapl:0:1");
    EXPECT_EQ(before->unitLabel(0), "uJ");
    machine.write("sys/class/powercap/intel-rapl:0:1/energy_uj", "400000\n"); // wrapped
    EXPECT_EQ(report.sample()->value(0) - before->value(0), 262143328850 - 500000 + 400000);
    const SensorMachine none("server");
    EXPECT_FALSE(LinuxEnergyReport(none.root(), none.lane(), nullptr).load());
}

TEST(LinuxSensorMachines, TheDumpTellsPowerThatOnlyCountersTell) {
    SensorMachine machine("intel-laptop");
    machine.write("sys/class/power_supply/BAT0/status", "Full\n");
    machine.remove("sys/class/power_supply/AC");
    smc_use(std::make_shared<HwmonSMCService>(machine.root(), machine.lane(), nullptr));
    std::string text;
    std::int64_t watts = 30;
    std::int64_t microjoules = 262143000000;
    const auto wait = [&](int milliseconds) {
        machine.pass(milliseconds / 1e3);
        microjoules += watts * milliseconds * 1000;
        machine.write("sys/class/powercap/intel-rapl:1/energy_uj", std::to_string(microjoules) + "\n");
    };
    const auto dump = [&] {
        SensorDump::run({.trust = SensorTrust::fewAndHonest, .pause = wait}, SensorDump::Unknown::said,
                        [&text](std::string_view line) { text += std::string(line) + '\n'; });
    };
    dump();
    EXPECT_NE(text.find("\nPower: system 30.00 W  adapter unknown\n"), std::string::npos) << text;
    text.clear();
    watts = 0;
    wait(400);
    dump();
    EXPECT_NE(text.find("\nPower: system unknown  adapter unknown\n"), std::string::npos) << text;
    smc_use(nullptr);
}

TEST(LinuxSensorMachines, SayHowHardHeatPresses) {
    SensorMachine board("arm-board");
    LinuxThermalState state(board.root(), board.lane(), std::make_shared<ThrottleCounters>(board.root(), board.lane()));
    for (const auto& [thousandths, expected] :
         std::map<int, int>{{52777, 0}, {69999, 0}, {70000, 1}, {75000, 2}, {90000, 2}, {95000, 3}, {255000, 0}}) {
        board.write("sys/class/thermal/thermal_zone0/temp", std::to_string(thousandths) + "\n");
        EXPECT_EQ(state.rawValue(), expected) << thousandths;
    }
    SensorMachine laptop("intel-laptop");
    LinuxThermalState throttled(laptop.root(), laptop.lane(),
                                std::make_shared<ThrottleCounters>(laptop.root(), laptop.lane()));
    std::vector<int> values;
    for (const int count : {9, 9, 12, 13, 14, 14}) {
        laptop.write("sys/devices/system/cpu/cpu0/thermal_throttle/package_throttle_count", std::to_string(count));
        laptop.pass(3);
        values.push_back(throttled.rawValue());
    }
    EXPECT_THAT(values, ElementsAre(0, 0, 1, 1, 2, 0));
    const SensorMachine mini("fanless-mini");
    EXPECT_EQ(LinuxThermalState(mini.root(), mini.lane(), std::make_shared<ThrottleCounters>(mini.root(), mini.lane()))
                  .rawValue(),
              1);
}

TEST(LinuxSensorMachines, AMachineWithoutSensorsHasNoController) {
    const SensorMachine machine;
    Reading reading(machine);
    EXPECT_FALSE(reading->isAvailable());
    EXPECT_THAT(reading->readFans(), IsEmpty());
    const SensorMachine other("server");
    EXPECT_EQ(HwmonSMCService(other.root(), other.lane(), nullptr).open("AppleBMC"), 0u);
}

} // namespace
} // namespace vantoro
