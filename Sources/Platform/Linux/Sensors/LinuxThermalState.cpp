#include "Platform/Linux/Sensors/LinuxThermalState.h"

#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <set>
#include <unistd.h>
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

LinuxThermalState::LinuxThermalState(std::string root, std::shared_ptr<SlowLane> lane)
    : root_(std::move(root)), lane_(std::move(lane)) {}

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
    const std::string processors = root_ + "/sys/devices/system/cpu/";
    std::set<std::pair<std::int64_t, std::int64_t>> seenCores;
    std::set<std::int64_t> seenPackages;
    for (const std::string& name : namesIn(processors)) {
        const std::string throttle = processors + name + "/thermal_throttle/";
        if (!name.starts_with("cpu") || ::access(throttle.c_str(), F_OK) != 0)
            continue;
        const auto package = readWholeNumber(processors + name + "/topology/physical_package_id").value_or(0);
        const auto core = readWholeNumber(processors + name + "/topology/core_id");
        if (!core || seenCores.emplace(package, *core).second)
            counters_.push_back(numberReading(throttle + "core_throttle_count", lane_));
        if (seenPackages.insert(package).second)
            counters_.push_back(numberReading(throttle + "package_throttle_count", lane_));
    }
    counts_.resize(counters_.size());
}

bool LinuxThermalState::throttledSinceLast() {
    bool throttled = false;
    for (std::size_t place = 0; place < counters_.size(); ++place) {
        const auto count = counters_[place].read();
        throttled = throttled || (count && counts_[place] && *count > *counts_[place]);
        if (count)
            counts_[place] = count;
    }
    return throttled;
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
    throttledInARow_ = throttledSinceLast() ? throttledInARow_ + 1 : 0;
    return deriveThermalState(zones, throttledInARow_);
}

} // namespace vantoro
