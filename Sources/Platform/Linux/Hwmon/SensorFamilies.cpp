#include "Platform/Linux/Hwmon/SensorFamilies.h"

#include <algorithm>
#include <array>

namespace vantoro {

namespace {

char lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

std::string loweredText(std::string_view text) {
    std::string low(text);
    std::ranges::transform(low, low.begin(), lowered);
    return low;
}

template <std::size_t Count>
bool isOneOf(std::string_view text, const std::array<std::string_view, Count>& list) {
    return std::ranges::find(list, text) != list.end();
}

constexpr std::array<std::string_view, 8> processorDrivers = {"coretemp",    "k8temp",  "k10temp", "zenpower",
                                                              "via_cputemp", "cputemp", "pvt",     "peci_cputemp"};
constexpr std::array<std::string_view, 4> graphicsDrivers = {"amdgpu", "radeon", "nouveau", "xe"};
/// Firmware that speaks for the whole chip, its graphics part included.
constexpr std::array<std::string_view, 2> firmwareDrivers = {"scpi_sensors", "scmi_sensors"};

/// Thermal zones of device trees become chips named for them, with '_' for '-': "cpu_thermal", "soc_thermal",
/// "cpu0_thermal", "bigcore_thermal", "littlecore_thermal", "package_thermal".
HwmonFamily familyOfZone(std::string_view driver) {
    const auto names = [driver](std::string_view part) { return driver.find(part) != std::string_view::npos; };
    if (names("gpu"))
        return HwmonFamily::graphics;
    if (names("cpu") || names("soc") || names("core") || names("cluster") || names("package"))
        return HwmonFamily::chip;
    if (names("batt"))
        return HwmonFamily::battery;
    return HwmonFamily::enclosure;
}

bool isPowerSupply(const HwmonSensor& sensor, std::string_view driver) {
    return sensor.devicePath.find("/power_supply/") != std::string::npos || sensor.driver.starts_with("BAT") ||
           sensor.driver.starts_with("CMB") || driver.find("battery") != std::string_view::npos;
}

} // namespace

HwmonFamily familyOf(const HwmonSensor& sensor) {
    const std::string driver = loweredText(sensor.driver);
    const std::string label = loweredText(sensor.label);
    if (isOneOf(driver, graphicsDrivers) || driver.starts_with("i915"))
        return HwmonFamily::graphics;
    if (isOneOf(driver, processorDrivers))
        return HwmonFamily::chip;
    if (isOneOf(driver, firmwareDrivers))
        return label.find("gpu") != std::string::npos ? HwmonFamily::graphics : HwmonFamily::chip;
    if (isPowerSupply(sensor, driver))
        return HwmonFamily::battery;
    if (driver.ends_with("_thermal") || driver.ends_with("-thermal"))
        return familyOfZone(driver);
    // Embedded controllers of laptops measure all over the machine and say where.
    if (label == "cpu")
        return HwmonFamily::chip;
    if (label == "gpu")
        return HwmonFamily::graphics;
    return label.find("battery") != std::string::npos ? HwmonFamily::battery : HwmonFamily::enclosure;
}

std::string_view keyPrefix(HwmonFamily family) {
    switch (family) {
    case HwmonFamily::chip:
        return "Tp";
    case HwmonFamily::graphics:
        return "Tg";
    case HwmonFamily::battery:
        return "TB";
    case HwmonFamily::enclosure:
        break;
    }
    return "Ts";
}

bool isMacController(std::string_view driver) {
    return driver == "applesmc" || driver.starts_with("macsmc");
}

std::optional<std::uint32_t> controllerKey(std::string_view label) {
    const auto isPlain = [](char character) {
        return (character >= '0' && character <= '9') || (lowered(character) >= 'a' && lowered(character) <= 'z');
    };
    if (label.size() != 4 || (label.front() != 'T' && label.front() != 'P') || !std::ranges::all_of(label, isPlain))
        return {};
    return keyCode(label);
}

std::optional<std::uint32_t> SensorKeys::next(HwmonFamily family) {
    constexpr std::string_view characters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int base = static_cast<int>(characters.size());
    int& used = used_[static_cast<int>(family)];
    while (used < base * base) {
        const auto number = static_cast<std::size_t>(used++);
        const std::string key = std::string(keyPrefix(family)) + characters[number / base] + characters[number % base];
        if (take(keyCode(key)))
            return keyCode(key);
    }
    return {};
}

std::optional<double> credibleCelsius(std::int64_t thousandths) {
    if (thousandths == -128000 || thousandths == 127000 || thousandths == 255000 || thousandths < -40000 ||
        thousandths > 200000)
        return {};
    return static_cast<double>(thousandths) / 1000;
}

} // namespace vantoro
