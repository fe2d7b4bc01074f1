// How hard heat presses on the machine, from the kernel's thermal zones and the processors' throttle counters. Layout:
// Documentation/driver-api/thermal/sysfs-api.rst in the kernel's sources and x86's therm_throt driver.
#pragma once

#include "Platform/Linux/Power/LinuxStrain.h"
#include "Platform/Linux/Reading/LanedReading.h"
#include "Platform/ThermalState.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// A zone at one moment, in thousandths of a degree Celsius: its temperature and the lowest trip point of each kind.
struct ZoneReading {
    std::int64_t temperature = 0;
    std::optional<std::int64_t> passive;
    std::optional<std::int64_t> hot;
    std::optional<std::int64_t> critical;

    bool operator==(const ZoneReading&) const = default;
};

/// The highest row that any finding meets:
///   3  a zone has reached its hot or its critical trip point: the machine is about to save itself
///   2  a zone is within 5 °C of its hot or critical trip point, or 5 °C or more past its passive one, or processors
///      have been throttled in each of the last three intervals
///   1  a zone has reached its passive trip point, or processors have been throttled in the last interval
///   0  none of these
/// `throttledInARow` counts the intervals up to now in which a throttle counter grew.
int deriveThermalState(const std::vector<ZoneReading>& zones, int throttledInARow);

class LinuxThermalState : public ThermalState {
public:
    /// `root` is the folder that holds sys. Zones and trip points are found at the first reading. The counters may be
    /// shared with whoever else looks at them.
    LinuxThermalState(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<ThrottleCounters> counters);

    int rawValue() override;

private:
    struct Zone {
        LanedReading<std::int64_t> temperature;
        ZoneReading trips;
    };

    void discover();

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    bool isDiscovered_ = false;
    std::vector<Zone> zones_;
    std::shared_ptr<ThrottleCounters> counters_;
    int throttledInARow_ = 0;
};

} // namespace vantoro
