#include "Platform/Linux/Hwmon/SensorFamilies.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vantoro {

namespace {

char lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

template <std::size_t Count>
bool isOneOf(std::string_view text, const std::array<std::string_view, Count>& list) {
    return std::ranges::find(list, text) != list.end();
}

template <std::size_t Count>
bool holdsOneOf(std::string_view text, const std::array<std::string_view, Count>& list) {
    return std::ranges::any_of(list,
                               [text](std::string_view part) { return text.find(part) != std::string_view::npos; });
}

constexpr std::array<std::string_view, 9> processorDrivers = {
    "coretemp", "k8temp", "k10temp", "zenpower", "via_cputemp", "cputemp", "pvt", "zhaoxin_cputemp", "fam15h_power"};
constexpr std::array<std::string_view, 4> graphicsDrivers = {"amdgpu", "radeon", "nouveau", "xe"};
/// Firmware that speaks for the whole chip, its graphics part included.
constexpr std::array<std::string_view, 2> firmwareDrivers = {"scpi_sensors", "scmi_sensors"};

/// Names of zones, as parts of them: what a person can touch or pull out; and a processor's.
constexpr std::array<std::string_view, 14> touchableZones = {"skin",  "board", "case", "ambient", "chassis",
                                                             "shell", "quiet", "pcb",  "iwlwifi", "nvme",
                                                             "ssd",   "pch",   "wifi", "outlet"};
constexpr std::array<std::string_view, 12> processorZones = {"cpu",         "core",       "cluster", "package",
                                                             "soc",         "bcm2835",    "mpu",     "brcmstb",
                                                             "imx_thermal", "ap_thermal", "main0",   "apollo"};
/// Zones of x86 firmware and the kernel that show a processor which has a driver of its own as well.
constexpr std::array<std::string_view, 3> processorCopies = {"x86_pkg_temp", "tcpu", "b0d4"};

/// Thermal zones become chips named for them, with '_' for '-'. Of a system on a chip nearly all of them lie on the
/// die.
SensorRole roleOfZone(std::string_view driver) {
    if (isOneOf(driver, processorCopies))
        return {.family = SensorFamily::chip, .isCopy = true};
    if (driver.starts_with("acpitz"))
        return {};
    if (driver.find("gpu") != std::string_view::npos)
        return {.family = SensorFamily::graphics};
    if (driver.find("batt") != std::string_view::npos)
        return {.family = SensorFamily::battery};
    if (holdsOneOf(driver, touchableZones))
        return {.family = SensorFamily::enclosure};
    if (holdsOneOf(driver, processorZones) || driver.starts_with("tj_") || driver.starts_with("tj-"))
        return {.family = SensorFamily::chip};
    return {};
}

bool isPowerSupply(const HwmonSensor& sensor, std::string_view driver) {
    return sensor.devicePath.find("/power_supply/") != std::string::npos || sensor.driver.starts_with("BAT") ||
           sensor.driver.starts_with("CMB") || driver.find("battery") != std::string_view::npos;
}

/// The label's words, at anything but letters and digits.
std::vector<std::string_view> wordsOf(std::string_view label) {
    const auto isPart = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); };
    std::vector<std::string_view> words;
    while (!label.empty()) {
        const auto end = std::ranges::find_if_not(label, isPart);
        const auto length = static_cast<std::size_t>(end - label.begin());
        if (length > 0)
            words.push_back(label.substr(0, length));
        label.remove_prefix(std::min(label.size(), length + 1));
    }
    return words;
}

/// Embedded controllers and boards' chips measure all over the machine, and say where as they please.
SensorRole roleOfLabel(std::string_view label) {
    static constexpr std::array<std::string_view, 7> beside = {"vrm", "vr", "ambient", "amb", "skin", "mos", "water"};
    static constexpr std::array<std::string_view, 6> onDie = {"npu", "nsp", "center", "virtual", "mem", "calibration"};
    static constexpr std::array<std::string_view, 6> processor = {"apu",  "peci", "package",
                                                                  "tctl", "tdie", "smbusmaster"};
    const std::vector<std::string_view> words = wordsOf(label);
    const auto any = [&words](const auto& isSuch) { return std::ranges::any_of(words, isSuch); };
    if (any([](std::string_view word) { return isOneOf(word, beside); }))
        return {.family = SensorFamily::enclosure};
    // A thermistor beside the socket; on many boards it is not even there.
    if (any([](std::string_view word) { return word == "cputin" || isOneOf(word, onDie) || word.starts_with("tzts"); }))
        return {};
    if (any([](std::string_view word) {
            return word.starts_with("cpu") || isOneOf(word, processor) || (word.starts_with("tsi") && word.size() <= 5);
        }))
        return {.family = SensorFamily::chip, .isCopy = true};
    if (any([](std::string_view word) { return word.starts_with("gpu") || word == "dgpu"; }))
        return {.family = SensorFamily::graphics};
    if (any([](std::string_view word) { return word.starts_with("batt"); }))
        return {.family = SensorFamily::battery};
    return {.family = SensorFamily::enclosure};
}

} // namespace

std::string loweredText(std::string_view text) {
    std::string low(text);
    std::ranges::transform(low, low.begin(), lowered);
    return low;
}

bool isGraphicsDriver(std::string_view driver) {
    const std::string low = loweredText(driver);
    return isOneOf(low, graphicsDrivers) || low.starts_with("i915");
}

SensorRole roleOf(const HwmonSensor& sensor) {
    const std::string driver = loweredText(sensor.driver);
    const std::string label = loweredText(sensor.label);
    if (isGraphicsDriver(driver))
        return {.family = SensorFamily::graphics};
    if (isOneOf(driver, processorDrivers))
        return {.family = SensorFamily::chip};
    if (driver == "rp1_adc") // the die of a chip beside the processor
        return {};
    if (driver.starts_with("peci_cputemp"))
        return {.family = SensorFamily::chip, .isCopy = true};
    if (isOneOf(driver, firmwareDrivers))
        return {.family = label.find("gpu") != std::string::npos ? SensorFamily::graphics : SensorFamily::chip};
    if (isPowerSupply(sensor, driver))
        return {.family = SensorFamily::battery};
    if (sensor.devicePath.find("/thermal_zone") != std::string::npos || driver.ends_with("_thermal") ||
        driver.ends_with("-thermal") || driver.starts_with("acpitz"))
        return roleOfZone(driver);
    return roleOfLabel(label);
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

std::optional<std::uint32_t> SensorKeys::next(SensorFamily family) {
    constexpr std::string_view characters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int base = static_cast<int>(characters.size());
    int& used = used_.at(placeOf(family));
    while (used < base * base) {
        const auto number = static_cast<std::size_t>(used++);
        const std::string key = std::string(sensorFamilies.at(placeOf(family)).keyPrefix) + characters[number / base] +
                                characters[number % base];
        if (take(keyCode(key)))
            return keyCode(key);
    }
    return {};
}

std::optional<double> credibleCelsius(std::int64_t thousandths, SensorFamily family) {
    constexpr std::int64_t coldest = -40'000;
    static constexpr std::array<std::int64_t, sensorFamilies.size()> hottest = {125'000, 125'000, 90'000, 110'000};
    if (thousandths < coldest || thousandths > hottest.at(placeOf(family)))
        return {};
    return static_cast<double>(thousandths) / 1000;
}

} // namespace vantoro
