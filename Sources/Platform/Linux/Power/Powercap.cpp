#include "Platform/Linux/Power/Powercap.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <iterator>
#include <unistd.h>

namespace vantoro {

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
