#include "Platform/Linux/PowerSupplies.h"

#include "Platform/Linux/SensorFile.h"
#include "Platform/Linux/SysfsText.h"

#include <cmath>

namespace vantoro {

namespace {

std::optional<double> wattsFrom(std::optional<std::int64_t> voltage, std::optional<std::int64_t> current) {
    if (!voltage || !current)
        return {};
    return std::abs(static_cast<double>(*voltage) / 1e6 * (static_cast<double>(*current) / 1e6));
}

struct SupplyFiles {
    explicit SupplyFiles(const std::string& folder)
        : status(folder + "/status")
        , online(folder + "/online")
        , power(folder + "/power_now")
        , voltage(folder + "/voltage_now")
        , current(folder + "/current_now") {}

    SensorFile status;
    SensorFile online;
    SensorFile power;
    SensorFile voltage;
    SensorFile current;
};

std::optional<BatteryReading> readBattery(SupplyFiles& files) {
    char room[64];
    const auto status = files.status.readText(room, sizeof room);
    if (!status)
        return {};
    const auto power = files.power.readNumber();
    if (power)
        return deriveBattery(*status, power, {}, {});
    return deriveBattery(*status, {}, files.voltage.readNumber(), files.current.readNumber());
}

std::optional<AdapterReading> readAdapter(SupplyFiles& files) {
    const auto online = files.online.readNumber();
    if (!online)
        return {};
    return deriveAdapter(online, files.voltage.readNumber(), files.current.readNumber());
}

} // namespace

BatteryReading deriveBattery(std::string_view status, std::optional<std::int64_t> power,
                             std::optional<std::int64_t> voltage, std::optional<std::int64_t> current) {
    BatteryReading reading;
    status = trimmedText(status);
    if (status == "Charging")
        reading.flow = BatteryFlow::charging;
    else if (status == "Discharging")
        reading.flow = BatteryFlow::discharging;
    reading.watts = power ? std::optional(std::abs(static_cast<double>(*power) / 1e6)) : wattsFrom(voltage, current);
    return reading;
}

AdapterReading deriveAdapter(std::optional<std::int64_t> online, std::optional<std::int64_t> voltage,
                             std::optional<std::int64_t> current) {
    AdapterReading reading{.isOnline = online.value_or(0) > 0};
    // Ports that cannot measure say 0.
    if (const auto watts = wattsFrom(voltage, current); reading.isOnline && watts && *watts > 0)
        reading.watts = watts;
    return reading;
}

PowerSupplies discoverPowerSupplies(const std::string& root, const std::shared_ptr<SlowLane>& lane) {
    const std::string folder = root + "/sys/class/power_supply/";
    PowerSupplies supplies;
    for (const std::string& name : namesIn(folder)) {
        const std::string place = folder + name;
        if (readTrimmed(place + "/scope") == "Device" || readWholeNumber(place + "/present").value_or(1) == 0)
            continue;
        const std::string type = readTrimmed(place + "/type").value_or("");
        const auto files = std::make_shared<SupplyFiles>(place);
        if (type == "Battery")
            supplies.batteries.emplace_back(lane, [files] { return readBattery(*files); });
        else if (type == "Mains" || type.starts_with("USB"))
            supplies.adapters.emplace_back(lane, [files] { return readAdapter(*files); });
    }
    return supplies;
}

} // namespace vantoro
