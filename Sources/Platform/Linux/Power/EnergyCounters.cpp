#include "Platform/Linux/Power/EnergyCounters.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <unistd.h>

namespace vantoro {

std::int64_t SteadyCounter::update(std::int64_t raw, std::optional<std::int64_t> range) {
    if (!last_)
        total_ = raw;
    else if (raw >= *last_)
        total_ += raw - *last_;
    else if (range && *range >= *last_)
        total_ += *range - *last_ + raw;
    last_ = raw;
    return total_;
}

std::optional<double> PowerFromEnergy::update(std::int64_t microjoules, std::optional<std::int64_t> range,
                                              double seconds) {
    constexpr double shortestSeconds = 0.05;
    if (since_ && seconds - *since_ < shortestSeconds)
        return watts_;
    const std::int64_t total = counter_.update(microjoules, range);
    if (since_)
        watts_ = static_cast<double>(total - total_) / 1e6 / (seconds - *since_);
    total_ = total;
    since_ = seconds;
    return watts_;
}

std::int64_t EnergyFromPower::update(std::optional<double> watts, double seconds) {
    if (since_)
        microjoules_ += (watts_ + watts.value_or(0)) / 2 * std::max(seconds - *since_, 0.0) * 1e6;
    watts_ = watts.value_or(0);
    since_ = seconds;
    return static_cast<std::int64_t>(std::llround(microjoules_));
}

std::vector<PowercapZone> discoverPowercap(const std::string& root) {
    const std::string folder = root + "/sys/class/powercap/";
    std::vector<PowercapZone> zones;
    for (const std::string& zone : namesIn(folder)) {
        const std::string energyPath = folder + zone + "/energy_uj";
        const auto name = readTrimmed(folder + zone + "/name");
        if (!name || ::access(energyPath.c_str(), R_OK) != 0)
            continue;
        zones.push_back({.name = *name,
                         .zone = zone,
                         .energyPath = energyPath,
                         .range = readWholeNumber(folder + zone + "/max_energy_range_uj")});
    }
    const auto isRepeated = [&zones](const PowercapZone& zone) {
        return zone.zone.find("-mmio") != std::string::npos &&
               std::ranges::any_of(zones, [&zone](const PowercapZone& other) {
                   return other.name == zone.name && other.zone.find("-mmio") == std::string::npos;
               });
    };
    std::vector<PowercapZone> kept;
    std::ranges::copy_if(zones, std::back_inserter(kept), [&](const PowercapZone& zone) { return !isRepeated(zone); });
    return kept;
}

} // namespace vantoro
