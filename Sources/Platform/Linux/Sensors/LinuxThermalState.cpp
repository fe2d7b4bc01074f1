#include "Platform/Linux/Sensors/LinuxThermalState.h"

#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <utility>

namespace vantoro {

namespace {

constexpr std::int64_t margin = 5000;
constexpr int lastingIntervals = 3;

bool reached(const ZoneReading& zone, std::optional<std::int64_t> trip, std::int64_t before) {
    return trip && zone.temperature >= *trip - before;
}

int zoneState(const ZoneReading& zone) {
    if (reached(zone, zone.hot, 0) || reached(zone, zone.critical, 0))
        return 3;
    if (reached(zone, zone.hot, margin) || reached(zone, zone.critical, margin) || reached(zone, zone.passive, -margin))
        return 2;
    return reached(zone, zone.passive, 0) ? 1 : 0;
}

LanedReading<std::int64_t> numberReading(const std::string& path, const std::shared_ptr<SlowLane>& lane) {
    const auto file = std::make_shared<SensorFile>(path);
    return {lane, [file] { return file->readNumber(); }};
}

ZoneReading readTrips(const std::string& zone) {
    ZoneReading trips;
    for (int number = 0;; ++number) {
        const std::string stem = zone + "/trip_point_" + std::to_string(number);
        const auto type = readTrimmed(stem + "_type");
        if (!type)
            return trips;
        const auto temperature = readWholeNumber(stem + "_temp");
        // A trip point that is not in use stands at 0 or below.
        if (!temperature || *temperature <= 0)
            continue;
        const auto keep = [&](std::optional<std::int64_t>& lowest) {
            lowest = std::min(lowest.value_or(*temperature), *temperature);
        };
        if (*type == "passive")
            keep(trips.passive);
        else if (*type == "hot")
            keep(trips.hot);
        else if (*type == "critical")
            keep(trips.critical);
    }
}

} // namespace

int deriveThermalState(const std::vector<ZoneReading>& zones, int throttledInARow) {
    int state = throttledInARow >= lastingIntervals ? 2 : throttledInARow > 0 ? 1 : 0;
    for (const ZoneReading& zone : zones)
        state = std::max(state, zoneState(zone));
    return state;
}

LinuxThermalState::LinuxThermalState(std::string root, std::shared_ptr<SlowLane> lane,
                                     std::shared_ptr<ThrottleCounters> counters)
    : root_(std::move(root)), lane_(std::move(lane)), counters_(std::move(counters)) {}

void LinuxThermalState::discover() {
    isDiscovered_ = true;
    const std::string thermal = root_ + "/sys/class/thermal/";
    for (const std::string& name : namesIn(thermal)) {
        if (!name.starts_with("thermal_zone") || readTrimmed(thermal + name + "/mode") == "disabled")
            continue;
        const ZoneReading trips = readTrips(thermal + name);
        if (trips.passive || trips.hot || trips.critical)
            zones_.push_back({.temperature = numberReading(thermal + name + "/temp", lane_), .trips = trips});
    }
}

int LinuxThermalState::rawValue() {
    if (!isDiscovered_)
        discover();
    std::vector<ZoneReading> zones;
    for (Zone& zone : zones_) {
        const auto temperature = zone.temperature.read();
        if (!temperature || !credibleCelsius(*temperature, SensorFamily::chip))
            continue;
        zones.push_back(zone.trips);
        zones.back().temperature = *temperature;
    }
    throttledInARow_ = counters_->look().grew ? throttledInARow_ + 1 : 0;
    return deriveThermalState(zones, throttledInARow_);
}

} // namespace vantoro
