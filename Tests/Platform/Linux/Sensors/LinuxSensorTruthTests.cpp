// What is true of a machine among all that its drivers tell: whose temperature it is, and when it is not to be read.
#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Linux/Sensors/SensorMachine.h"

namespace vantoro {
namespace {

using testing::SensorMachine;
using testing::value;

TEST(LinuxSensorTruth, EachTemperatureCountsAsWhatItIsOf) {
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

TEST(LinuxSensorTruth, AnIdleCardIsLeftToFallAsleep) {
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

TEST(LinuxSensorTruth, ADriveThatRestsIsNotWoken) {
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

TEST(LinuxSensorTruth, ADriverThatComesAgainIsFoundWithinTenSeconds) {
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

} // namespace
} // namespace vantoro
