// The sensors that drivers announce under /sys/class/hwmon, found once. Layout: Documentation/hwmon/sysfs-interface.rst
// in the kernel's sources.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// In the files' units: thousandths of a degree Celsius, revolutions per minute, microwatts, microjoules (cumulative).
enum class HwmonQuantity { temperature, fan, power, energy };

/// One sensor: a path of its own for each file that is there, empty for those that are not.
struct HwmonSensor {
    /// The driver's name for its chip ("coretemp", "nct6775", "BAT0").
    std::string driver;
    /// Where the device sits, from the root on and without the numbers that hwmon deals out anew at each start.
    std::string devicePath;
    HwmonQuantity quantity = HwmonQuantity::temperature;
    /// The number in the files' names.
    int number = 0;
    /// What the driver calls it ("Package id 0"); empty when it has no name.
    std::string label;
    /// The reading itself: _input, or for power _average where there is one.
    std::string inputPath;
    /// A fan's floor, ceiling, set speed, and the duty of its motor (0 to 255).
    std::string minimumPath;
    std::string maximumPath;
    std::string targetPath;
    std::string dutyPath;
    /// Says by a number other than 0 that the reading is worth nothing.
    std::string faultPath;
    /// The device's power/runtime_status.
    std::string statusPath;
    /// The chip also measures a second supply voltage, as the graphics part of a processor does ("vddnb").
    bool hasSecondVoltage = false;

    bool operator==(const HwmonSensor&) const = default;
};

/// Every sensor, ordered by device path, then quantity, label and number: the same order after each start. A thermal
/// zone that no chip shows is a chip with one temperature. A folder without a name, a link that leads in circles or
/// nowhere and a file that cannot be read cost only themselves. Nothing is measured: only names are read, which wakes
/// no device. `root` is the folder that holds sys.
std::vector<HwmonSensor> discoverHwmon(const std::string& root);

/// What changes when a driver comes, goes or comes again: the chips' and supplies' names and where the chips sit.
std::string hwmonSignature(const std::string& root);

/// A file's name taken apart: "temp12_input" is "temp", 12, "input"; "pwm1" has no suffix.
struct HwmonFileName {
    std::string_view prefix;
    int number = 0;
    std::string_view suffix;

    bool operator==(const HwmonFileName&) const = default;
};
std::optional<HwmonFileName> parseHwmonFileName(std::string_view name);

/// "/devices/platform/coretemp.0/hwmon/hwmon3" without its last parts "hwmon/hwmon3".
std::string_view withoutHwmonNumber(std::string_view path);

} // namespace vantoro
