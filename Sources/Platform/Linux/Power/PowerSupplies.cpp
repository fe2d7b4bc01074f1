#include "Platform/Linux/Power/PowerSupplies.h"

#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

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
    /// It gave voltage and current in place of the power, which it then has no file for: none is looked for.
    bool givesCurrent = false;
};

std::optional<BatteryReading> readBattery(SupplyFiles& files) {
    char room[64];
    const auto status = files.status.readText(room, sizeof room);
    if (!status)
        return {};
    if (!files.givesCurrent)
        if (const auto power = files.power.readNumber())
            return deriveBattery(*status, power, {}, {});
    const auto voltage = files.voltage.readNumber();
    const auto current = files.current.readNumber();
    files.givesCurrent = voltage && current;
    return deriveBattery(*status, {}, voltage, current);
}

std::optional<AdapterReading> readAdapter(SupplyFiles& files) {
    const auto online = files.online.readNumber();
    if (!online)
        return {};
    if (*online <= 0) // what an idle port says is not used, and many have no files for it
        return deriveAdapter(online, {}, {});
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
