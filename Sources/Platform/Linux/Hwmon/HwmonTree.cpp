#include "Platform/Linux/Hwmon/HwmonTree.h"

#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <tuple>
#include <unistd.h>
#include <unordered_set>

namespace vantoro {

namespace {

bool exists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : "";
}

std::optional<HwmonQuantity> quantityOf(std::string_view prefix) {
    if (prefix == "temp")
        return HwmonQuantity::temperature;
    if (prefix == "fan")
        return HwmonQuantity::fan;
    if (prefix == "power")
        return HwmonQuantity::power;
    if (prefix == "energy")
        return HwmonQuantity::energy;
    return {};
}

/// The chip whose sensors lie in one folder.
struct Chip {
    std::string folder;
    std::string driver;
    std::string devicePath;
    std::string statusPath;
};

std::optional<Chip> findChip(const std::string& link, std::string_view realRoot) {
    // Drivers that never followed the change of the interface keep their files in the device's own folder.
    for (const std::string& folder : {link, link + "/device"}) {
        auto name = readTrimmed(folder + "/name");
        if (!name || name->empty())
            continue;
        Chip chip{.folder = folder, .driver = std::move(*name)};
        std::string device = realPath(link + "/device");
        if (device.empty())
            device = withoutHwmonNumber(realPath(link));
        chip.devicePath = device.starts_with(realRoot) ? device.substr(realRoot.size()) : device;
        if (std::string status = link + "/device/power/runtime_status"; exists(status))
            chip.statusPath = std::move(status);
        return chip;
    }
    return {};
}

void addSensors(const Chip& chip, std::vector<HwmonSensor>& sensors) {
    const std::vector<std::string> names = namesIn(chip.folder);
    const std::unordered_set<std::string_view> present(names.begin(), names.end());
    const bool hasSecondVoltage = present.contains("in1_input");
    const auto pathOf = [&](const std::string& name) {
        return present.contains(name) ? chip.folder + "/" + name : std::string();
    };
    for (const std::string& name : names) {
        const auto parts = parseHwmonFileName(name);
        const auto quantity = parts ? quantityOf(parts->prefix) : std::nullopt;
        if (!quantity || (parts->suffix != "input" && parts->suffix != "average"))
            continue;
        const std::string stem = std::string(parts->prefix) + std::to_string(parts->number);
        // The mean of a while says more of a power than a moment does.
        if (parts->suffix == "average" ? *quantity != HwmonQuantity::power
                                       : *quantity == HwmonQuantity::power && present.contains(stem + "_average"))
            continue;
        HwmonSensor sensor{.driver = chip.driver,
                           .devicePath = chip.devicePath,
                           .quantity = *quantity,
                           .number = parts->number,
                           .inputPath = chip.folder + "/" + name,
                           .statusPath = chip.statusPath,
                           .hasSecondVoltage = hasSecondVoltage};
        sensor.faultPath = pathOf(stem + "_fault");
        if (const std::string label = pathOf(stem + "_label"); !label.empty())
            sensor.label = readTrimmed(label).value_or("");
        if (*quantity == HwmonQuantity::fan) {
            sensor.minimumPath = pathOf(stem + "_min");
            sensor.maximumPath = pathOf(stem + "_max");
            sensor.targetPath = pathOf(stem + "_target");
            sensor.dutyPath = pathOf("pwm" + std::to_string(parts->number));
        }
        sensors.push_back(std::move(sensor));
    }
}

/// Zones that their drivers do not show as chips, as many boards' do not. Zones of one type share a chip.
void addZones(const std::string& root, std::vector<HwmonSensor>& sensors) {
    std::unordered_set<std::string> chips;
    for (const HwmonSensor& sensor : sensors)
        chips.insert(sensor.driver);
    const std::string thermal = root + "/sys/class/thermal/";
    for (const std::string& name : namesIn(thermal)) {
        auto type = name.starts_with("thermal_zone") ? readTrimmed(thermal + name + "/type") : std::nullopt;
        if (!type || type->empty() || !exists(thermal + name + "/temp"))
            continue;
        std::ranges::replace(*type, '-', '_');
        if (!chips.contains(*type) && readTrimmed(thermal + name + "/mode") != "disabled")
            sensors.push_back({.driver = std::move(*type),
                               .devicePath = "/devices/virtual/thermal/" + name,
                               .number = 1,
                               .inputPath = thermal + name + "/temp"});
    }
}

bool isBefore(const HwmonSensor& left, const HwmonSensor& right) {
    if (left.devicePath != right.devicePath)
        return naturallyBefore(left.devicePath, right.devicePath);
    if (left.quantity != right.quantity)
        return left.quantity < right.quantity;
    if (left.label != right.label)
        return naturallyBefore(left.label, right.label);
    return std::tie(left.driver, left.number) < std::tie(right.driver, right.number);
}

} // namespace

std::vector<HwmonSensor> discoverHwmon(const std::string& root) {
    std::vector<HwmonSensor> sensors;
    const std::string folder = root + "/sys/class/hwmon";
    std::string realRoot = realPath(root + "/sys");
    for (const std::string& name : namesIn(folder))
        if (const auto chip = findChip(folder + "/" + name, realRoot))
            addSensors(*chip, sensors);
    addZones(root, sensors);
    std::ranges::stable_sort(sensors, isBefore);
    return sensors;
}

std::string hwmonSignature(const std::string& root) {
    std::string signature;
    const std::string folder = root + "/sys/class/hwmon/";
    for (const std::string& name : namesIn(folder)) {
        char target[512];
        const ssize_t length = ::readlink((folder + name).c_str(), target, sizeof target);
        signature += name + '>' + std::string(target, length > 0 ? static_cast<std::size_t>(length) : 0) + '\n';
    }
    for (const std::string& name : namesIn(root + "/sys/class/power_supply"))
        signature += name + '\n';
    return signature;
}

std::optional<HwmonFileName> parseHwmonFileName(std::string_view name) {
    const std::size_t digits = name.find_first_of("0123456789");
    if (digits == 0 || digits == std::string_view::npos)
        return {};
    const std::size_t end = std::min(name.size(), name.find_first_not_of("0123456789", digits));
    if (end < name.size() && name[end] != '_')
        return {};
    constexpr std::size_t mostDigits = 6;
    const auto number = parseWholeNumber(name.substr(digits, std::min(end - digits, mostDigits + 1)));
    if (!number || end - digits > mostDigits)
        return {};
    return HwmonFileName{.prefix = name.substr(0, digits),
                         .number = static_cast<int>(*number),
                         .suffix = end < name.size() ? name.substr(end + 1) : std::string_view()};
}

std::string_view withoutHwmonNumber(std::string_view path) {
    const std::size_t last = path.rfind('/');
    if (last == std::string_view::npos || !path.substr(last).starts_with("/hwmon"))
        return path;
    path = path.substr(0, last);
    return path.ends_with("/hwmon") ? path.substr(0, path.size() - 6) : path;
}

} // namespace vantoro
