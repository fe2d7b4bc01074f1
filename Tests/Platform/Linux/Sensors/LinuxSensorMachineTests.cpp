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
#include "Support/Golden.h"

#include <array>
#include <fmt/ranges.h>
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

// Of the laptop's, the embedded controller's copy of the processor's temperature and the firmware's zone count for
// nothing; the desktop's first fan has never turned though it is driven: nothing is plugged in; small desktops mostly
// have a fan that no driver knows of; the server's drive sleeps, and what its board states as the least speed is an
// alarm's.
TEST(LinuxSensorMachines, GiveTheirTemperaturesAndFans) {
    std::string all;
    for (const char* const name : {"intel-laptop", "amd-desktop", "arm-board", "fanless-mini", "server", "mac"}) {
        const SensorMachine machine(name);
        Reading reading(machine);
        ASSERT_TRUE(reading->isOpen());
        const Temperatures got = reading->readTemperatures();
        all +=
            fmt::format("{}: chip {:.3f}, mean {:.3f}, graphics {:.3f} ({}), battery {:.3f}, enclosure {:.3f} ({})\n",
                        name, got.soc, got.socMean, got.gpu, fmt::join(reading->keys(SensorFamily::graphics), " "),
                        got.battery, got.enclosure, reading->keys(SensorFamily::enclosure).size());
        for (const FanReading& fan : reading->readFans())
            all += fmt::format("  fan {} \"{}\": {} rpm of {} to {}, told {}{}\n", fan.index, fan.name, fan.rpm,
                               fan.minRPM, fan.maxRPM, fan.targetRPM, fan.learnsLimits ? ", learns" : "");
        reading->readFans();
        constexpr std::array coolings = {"fans", "passive", "heat", "load"};
        all += fmt::format("  goes by {}, {} sensors\n", coolings.at(static_cast<std::size_t>(reading->cooling())),
                           reading.trust() == SensorTrust::fewAndHonest ? "honest" : "noisy");
    }
    testing::expectGolden("linux-sensors/readings.golden", all);
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
    EXPECT_FALSE(reading->isOpen());
    EXPECT_THAT(reading->readFans(), IsEmpty());
    const SensorMachine other("server");
    EXPECT_EQ(HwmonSMCService(other.root(), other.lane(), nullptr).open("AppleBMC"), 0u);
}

} // namespace
} // namespace vantoro
