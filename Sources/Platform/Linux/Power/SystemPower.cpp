#include "Platform/Linux/Power/SystemPower.h"

#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Reading/SensorFile.h"

#include <algorithm>

namespace vantoro {

namespace {

constexpr double sameMomentSeconds = 0.2;
/// More than any machine that a person sits at draws: a meter that says so is broken.
constexpr double mostCredibleWatts = 100'000;

std::optional<double> flowing(const std::vector<BatteryReading>& batteries, BatteryFlow flow) {
    std::optional<double> sum;
    for (const BatteryReading& battery : batteries)
        if (battery.flow == flow && battery.watts)
            sum = sum.value_or(0) + *battery.watts;
    return sum;
}

std::optional<double> adapterWatts(const PowerReadings& readings, std::optional<double> systemWatts) {
    if (readings.adapters.empty())
        return {};
    if (std::ranges::none_of(readings.adapters, &AdapterReading::isOnline))
        return 0;
    std::optional<double> measured;
    for (const AdapterReading& adapter : readings.adapters)
        if (adapter.watts)
            measured = measured.value_or(0) + *adapter.watts;
    if (measured)
        return measured;
    const auto charging = flowing(readings.batteries, BatteryFlow::charging);
    if (!charging && !systemWatts)
        return {};
    return charging.value_or(0) + systemWatts.value_or(0);
}

std::optional<double> credible(std::optional<double> watts) {
    return watts && *watts >= 0 && *watts <= mostCredibleWatts ? watts : std::nullopt;
}

} // namespace

PowerFigures derivePower(const PowerReadings& readings) {
    PowerFigures figures;
    for (const auto flow : {BatteryFlow::none, BatteryFlow::charging, BatteryFlow::discharging})
        if (const auto watts = flowing(readings.batteries, flow))
            figures.battery = figures.battery.value_or(0) + *watts;
    const bool isPluggedIn = std::ranges::any_of(readings.adapters, &AdapterReading::isOnline);
    if (!isPluggedIn)
        figures.system = flowing(readings.batteries, BatteryFlow::discharging);
    for (const auto& next : {readings.meterWatts, readings.platformWatts, readings.packageWatts})
        if (!figures.system)
            figures.system = next;
    figures.adapter = credible(adapterWatts(readings, figures.system));
    figures.system = credible(figures.system);
    figures.battery = credible(figures.battery);
    return figures;
}

SystemPower::SystemPower(const std::string& root, const std::vector<HwmonSensor>& sensors,
                         std::shared_ptr<SlowLane> lane)
    : lane_(std::move(lane)), supplies_(discoverPowerSupplies(root, lane_)) {
    for (const HwmonSensor& sensor : sensors)
        if (sensor.quantity == HwmonQuantity::power && sensor.driver == "power_meter" && !meter_)
            meter_ = sensorReading(sensor, sensor.inputPath, lane_);
    for (const PowercapZone& zone : discoverPowercap(root)) {
        if (zone.name != "psys" && !zone.name.starts_with("package"))
            continue;
        const auto file = std::make_shared<SensorFile>(zone.energyPath);
        (zone.name == "psys" ? platform_ : packages_)
            .push_back({.energy = {lane_, [file] { return file->readNumber(); }}, .range = zone.range, .power = {}});
    }
}

std::optional<double> SystemPower::sumOf(std::vector<Counter>& counters, double seconds) {
    std::optional<double> sum;
    for (Counter& counter : counters)
        if (const auto energy = counter.energy.read())
            if (const auto watts = counter.power.update(*energy, counter.range, seconds))
                sum = sum.value_or(0) + *watts;
    // No machine that runs draws nothing: a counter that stands still does not count.
    return sum && *sum > 0 ? sum : std::nullopt;
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
    if (const auto microwatts = meter_ ? meter_->read() : std::nullopt)
        readings.meterWatts = static_cast<double>(*microwatts) / 1e6;
    readings.platformWatts = sumOf(platform_, now);
    readings.packageWatts = sumOf(packages_, now);
    figures_ = derivePower(readings);
    return figures_;
}

} // namespace vantoro
