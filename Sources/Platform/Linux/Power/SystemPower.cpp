#include "Platform/Linux/Power/SystemPower.h"

#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cmath>

namespace vantoro {

namespace {

constexpr double sameMomentSeconds = 0.2;
/// What no battery, no adapter and no machine goes beyond: a gauge or meter that does is broken.
constexpr double mostBatteryWatts = 300;
constexpr double mostAdapterWatts = 1'000;
constexpr double mostMachineWatts = 20'000;
/// Less than this does not keep a machine running.
constexpr double leastRunningWatts = 0.1;

std::optional<double> credible(std::optional<double> watts, double most) {
    return watts && *watts >= 0 && *watts <= most ? watts : std::nullopt;
}

std::optional<double> wattsFrom(std::optional<std::int64_t> microwatts) {
    return microwatts ? std::optional(static_cast<double>(*microwatts) / 1e6) : std::nullopt;
}

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
    bool measures = true;
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
    if (*online <= 0 || !files.measures) // what an idle port says is not used, and many have no files for it
        return deriveAdapter(online, {}, {});
    return deriveAdapter(online, files.voltage.readNumber(), files.current.readNumber());
}

/// What flows this way in all; none when nothing does, and when a battery does not tell how much.
std::optional<double> flowing(const std::vector<BatteryReading>& batteries, BatteryFlow flow) {
    std::optional<double> sum;
    for (const BatteryReading& battery : batteries) {
        if (battery.flow != flow)
            continue;
        if (!battery.watts)
            return {};
        sum = sum.value_or(0) + *battery.watts;
    }
    return sum;
}

bool anyFlows(const std::vector<BatteryReading>& batteries, BatteryFlow flow) {
    return std::ranges::find(batteries, flow, &BatteryReading::flow) != batteries.end();
}

std::optional<double> systemWatts(const PowerReadings& readings) {
    if (readings.rails.system)
        return readings.rails.system;
    const bool isPluggedIn = std::ranges::any_of(readings.adapters, &AdapterReading::isOnline);
    if (!isPluggedIn && !anyFlows(readings.batteries, BatteryFlow::charging))
        if (const auto fed = flowing(readings.batteries, BatteryFlow::discharging))
            return fed;
    if (readings.meterWatts)
        return readings.meterWatts;
    return readings.platformWatts.value_or(0) >= readings.packageWatts.value_or(0) ? readings.platformWatts
                                                                                   : std::nullopt;
}

std::optional<double> adapterWatts(const PowerReadings& readings, std::optional<double> system) {
    if (readings.rails.adapter || readings.adapters.empty())
        return readings.rails.adapter;
    if (std::ranges::none_of(readings.adapters, &AdapterReading::isOnline))
        return 0;
    std::optional<double> measured;
    for (const AdapterReading& adapter : readings.adapters)
        if (adapter.watts)
            measured = measured.value_or(0) + *adapter.watts;
    if (measured || !system || anyFlows(readings.batteries, BatteryFlow::discharging) ||
        anyFlows(readings.batteries, BatteryFlow::unknown))
        return measured;
    if (!anyFlows(readings.batteries, BatteryFlow::charging))
        return system;
    const auto charging = flowing(readings.batteries, BatteryFlow::charging);
    return charging ? std::optional(*charging + *system) : std::nullopt;
}

std::optional<double> batteryWatts(const PowerReadings& readings) {
    std::optional<double> sum = readings.rails.battery;
    if (!sum)
        for (const BatteryReading& battery : readings.batteries)
            if (battery.watts)
                sum = sum.value_or(0) + *battery.watts;
    return sum;
}

/// The graphics part of a processor, which has a second supply voltage, gives the whole package's.
bool isPackageRail(const HwmonSensor& sensor, std::string_view driver) {
    if (sensor.quantity != HwmonQuantity::power || sensor.driver != driver)
        return false;
    return driver == "zenpower" ? sensor.label.starts_with("SVI2_P_")
                                : sensor.number == 1 && (driver != "amdgpu" || sensor.hasSecondVoltage);
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
    else if (status == "Not charging" || status == "Full")
        reading.flow = BatteryFlow::none;
    if (reading.flow == BatteryFlow::none)
        return reading; // a gauge may still say what flowed last
    reading.watts =
        credible(power ? std::optional(std::abs(*wattsFrom(power))) : wattsFrom(voltage, current), mostBatteryWatts);
    if (reading.flow == BatteryFlow::discharging && reading.watts < leastRunningWatts)
        reading.watts.reset();
    return reading;
}

AdapterReading deriveAdapter(std::optional<std::int64_t> online, std::optional<std::int64_t> voltage,
                             std::optional<std::int64_t> current) {
    AdapterReading reading{.isOnline = online.value_or(0) > 0};
    // Ports that cannot measure say 0.
    if (const auto watts = credible(wattsFrom(voltage, current), mostAdapterWatts); reading.isOnline && watts > 0)
        reading.watts = watts;
    return reading;
}

bool measuresItsFlow(const std::string& supplyFolder, std::string_view name) {
    if (name.starts_with("ucsi") || name.starts_with("tcpm") || readTrimmed(supplyFolder + "/status"))
        return false;
    const std::string contract = readTrimmed(supplyFolder + "/usb_type").value_or("");
    return contract.find("PD") == std::string::npos;
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
        if (type == "Battery") {
            supplies.batteries.emplace_back(lane, [files] { return readBattery(*files); });
        } else if (type == "Mains" || type.starts_with("USB")) {
            files->measures = measuresItsFlow(place, name);
            supplies.adapters.emplace_back(lane, [files] { return readAdapter(*files); });
        }
    }
    return supplies;
}

PowerFigures derivePower(const PowerReadings& readings) {
    PowerFigures figures;
    figures.system = credible(systemWatts(readings), mostMachineWatts);
    figures.adapter = credible(adapterWatts(readings, figures.system), mostMachineWatts);
    figures.battery = credible(batteryWatts(readings), mostMachineWatts);
    return figures;
}

void EnergySum::add(const std::string& path, std::optional<std::int64_t> range, const std::shared_ptr<SlowLane>& lane) {
    const auto file = std::make_shared<SensorFile>(path);
    counters_.push_back({.energy = {lane, [file] { return file->readNumber(); }}, .range = range, .power = {}});
}

std::optional<double> EnergySum::watts(double seconds) {
    double sum = 0;
    bool isWhole = !counters_.empty();
    for (Counter& counter : counters_) {
        const auto energy = counter.energy.read();
        const auto watts = energy ? counter.power.update(*energy, counter.range, seconds) : std::nullopt;
        isWhole = isWhole && watts;
        sum += watts.value_or(0);
    }
    return isWhole && sum > 0 ? credible(sum, mostMachineWatts) : std::nullopt;
}

SystemPower::SystemPower(const std::string& root, const std::vector<HwmonSensor>& sensors,
                         std::shared_ptr<SlowLane> lane)
    : lane_(std::move(lane)), supplies_(discoverPowerSupplies(root, lane_)) {
    for (const HwmonSensor& sensor : sensors) {
        if (sensor.quantity != HwmonQuantity::power)
            continue;
        const auto keep = [&](std::optional<Reading>& place) {
            if (!place)
                place = sensorReading(sensor, sensor.inputPath, lane_);
        };
        const bool isMac = sensor.driver.starts_with("macsmc");
        if (isMac && sensor.label == "Total System Power")
            keep(rails_.system);
        else if (isMac && sensor.label == "AC Input Power")
            keep(rails_.adapter);
        else if (isMac && sensor.label == "Battery Power")
            keep(rails_.battery);
        else if (sensor.driver == "power_meter" || (sensor.driver == "corsairpsu" && sensor.label == "power total"))
            keep(meter_);
    }
    for (const PowercapZone& zone : discoverPowercap(root))
        if (zone.name == "psys")
            platform_.add(zone.energyPath, zone.range, lane_);
        else if (zone.name.starts_with("package"))
            packages_.add(zone.energyPath, zone.range, lane_);
}

const PowerFigures& SystemPower::figures() {
    const double now = lane_->now();
    if (readAt_ && now - *readAt_ < sameMomentSeconds)
        return figures_;
    readAt_ = now;
    PowerReadings readings;
    for (auto& battery : supplies_.batteries)
        if (const auto reading = battery.read())
            readings.batteries.push_back(*reading);
    for (auto& adapter : supplies_.adapters)
        if (const auto reading = adapter.read())
            readings.adapters.push_back(*reading);
    const auto read = [](std::optional<Reading>& reading) {
        return reading ? wattsFrom(reading->read()) : std::nullopt;
    };
    readings.rails = {.system = read(rails_.system), .adapter = read(rails_.adapter), .battery = read(rails_.battery)};
    readings.meterWatts = read(meter_);
    if (!platform_.isEmpty()) {
        readings.platformWatts = platform_.watts(now);
        readings.packageWatts = packages_.watts(now); // only to judge the platform by
    }
    figures_ = derivePower(readings);
    return figures_;
}

ProcessorPower::ProcessorPower(const std::string& root, const std::vector<HwmonSensor>& sensors,
                               std::shared_ptr<SlowLane> lane)
    : lane_(std::move(lane)) {
    for (const PowercapZone& zone : discoverPowercap(root))
        if (zone.name.starts_with("package"))
            packages_.add(zone.energyPath, zone.range, lane_);
        else if (zone.name == "uncore")
            graphics_.add(zone.energyPath, zone.range, lane_);
    if (packages_.isEmpty())
        for (const HwmonSensor& sensor : sensors)
            if (sensor.driver == "amd_energy" && sensor.quantity == HwmonQuantity::energy &&
                sensor.label.starts_with("Esocket"))
                packages_.add(sensor.inputPath, {}, lane_);
    // What tells of the same power is not added to it.
    std::string_view chosen;
    for (const std::string_view driver : {"zenpower", "fam15h_power", "amdgpu"})
        for (const HwmonSensor& sensor : sensors)
            if (packages_.isEmpty() && (rails_.empty() || chosen == driver) && isPackageRail(sensor, driver)) {
                chosen = driver;
                rails_.push_back(sensorReading(sensor, sensor.inputPath, lane_));
            }
}

std::optional<double> ProcessorPower::watts() {
    const double now = lane_->now();
    if (!packages_.isEmpty()) {
        const auto all = packages_.watts(now);
        const double graphics = graphics_.watts(now).value_or(0);
        return all ? std::optional(std::max(*all - graphics, 0.0)) : std::nullopt;
    }
    double sum = 0;
    for (auto& rail : rails_) {
        const auto watts = wattsFrom(rail.read());
        if (!watts)
            return {};
        sum += *watts;
    }
    return sum > 0 ? credible(sum, mostMachineWatts) : std::nullopt;
}

} // namespace vantoro
