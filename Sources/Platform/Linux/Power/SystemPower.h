// What the whole machine, its adapter and its battery draw, from what the supplies, meters and counters tell.
#pragma once

#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Power/EnergyArithmetic.h"
#include "Platform/Linux/Power/Powercap.h"
#include "Platform/Linux/Power/PowerSupplies.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// Watts; absent for what nothing tells.
struct PowerFigures {
    std::optional<double> system;
    std::optional<double> adapter;
    std::optional<double> battery;

    bool operator==(const PowerFigures&) const = default;
};

/// What was read at one moment.
struct PowerReadings {
    std::vector<BatteryReading> batteries;
    std::vector<AdapterReading> adapters;
    /// The meter of a server's power supply, the platform's counter, and all packages together.
    std::optional<double> meterWatts;
    std::optional<double> platformWatts;
    std::optional<double> packageWatts;

    bool operator==(const PowerReadings&) const = default;
};

/// System: what the batteries give while they discharge and no adapter is online, else the meter, else the platform,
/// else the packages (which is less than the whole). Adapter: 0 when none is online, else what it measures, else what
/// charges the batteries and feeds the system, as far as known. Battery: what flows in or out, in all.
PowerFigures derivePower(const PowerReadings& readings);

class SystemPower {
public:
    SystemPower(const std::string& root, const std::vector<HwmonSensor>& sensors, std::shared_ptr<SlowLane> lane);

    bool hasSystem() const { return hasBattery() || meter_ || !platform_.empty() || !packages_.empty(); }
    bool hasAdapter() const { return !supplies_.adapters.empty(); }
    bool hasBattery() const { return !supplies_.batteries.empty(); }

    /// Read at most once in 200 ms: three keys ask for parts of the same.
    const PowerFigures& figures();

private:
    struct Counter {
        LanedReading<std::int64_t> energy;
        std::optional<std::int64_t> range;
        PowerFromEnergy power;
    };

    static std::optional<double> sumOf(std::vector<Counter>& counters, double seconds);

    std::shared_ptr<SlowLane> lane_;
    PowerSupplies supplies_;
    std::optional<LanedReading<std::int64_t>> meter_;
    std::vector<Counter> platform_;
    std::vector<Counter> packages_;
    PowerFigures figures_;
    std::optional<double> readAt_;
};

} // namespace vantoro
