// What the whole machine, its adapter and its battery draw, from what the supplies, meters and counters tell. Layout of
// /sys/class/power_supply: Documentation/ABI/testing/sysfs-class-power in the kernel's sources.
#pragma once

#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Power/EnergyCounters.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// `unknown` where the battery does not say so itself.
enum class BatteryFlow { unknown, none, charging, discharging };

struct BatteryReading {
    BatteryFlow flow = BatteryFlow::unknown;
    /// Never negative; absent when the battery's gauge does not tell, and when nothing flows by its own account.
    std::optional<double> watts;

    bool operator==(const BatteryReading&) const = default;
};

struct AdapterReading {
    bool isOnline = false;
    /// What flows through it, where it measures that.
    std::optional<double> watts;

    bool operator==(const AdapterReading&) const = default;
};

/// `status` as the kernel words it; watts from power_now, else voltage_now times current_now (all in millionths). Some
/// gauges give a flow out of the battery a negative sign, some a positive: the sign is dropped. More than any battery
/// of a computer gives is none, and so is next to nothing out of one that feeds it.
BatteryReading deriveBattery(std::string_view status, std::optional<std::int64_t> power,
                             std::optional<std::int64_t> voltage, std::optional<std::int64_t> current);
AdapterReading deriveAdapter(std::optional<std::int64_t> online, std::optional<std::int64_t> voltage,
                             std::optional<std::int64_t> current);

/// Whether an adapter's voltage and current are what it measures. Ports of USB Type-C ("ucsi-source-psy-…",
/// "tcpm-source-psy-…", any that has a contract of power delivery) tell what was agreed on, chargers (which have a
/// status) what goes into their battery.
bool measuresItsFlow(const std::string& supplyFolder, std::string_view name);

/// The machine's own supplies; those of mice, keyboards and headsets are left out.
struct PowerSupplies {
    std::vector<LanedReading<BatteryReading>> batteries;
    std::vector<LanedReading<AdapterReading>> adapters;
};
PowerSupplies discoverPowerSupplies(const std::string& root, const std::shared_ptr<SlowLane>& lane);

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
    /// The rails of a Mac's controller.
    PowerFigures rails;
    /// The meter in a power supply, the platform's counter, and all packages together.
    std::optional<double> meterWatts;
    std::optional<double> platformWatts;
    std::optional<double> packageWatts;

    bool operator==(const PowerReadings&) const = default;
};

/// System: its rail, else what the batteries give while they feed it alone (each of them must tell), else the meter,
/// else the platform (unless it says less than the packages alone draw). Adapter: its rail, else 0 when none is online,
/// else what it measures, else what feeds the system and what charges the batteries, where both are known. Battery: its
/// rail, else what flows in or out, in all.
PowerFigures derivePower(const PowerReadings& readings);

/// Counters that are added up.
class EnergySum {
public:
    void add(const std::string& path, std::optional<std::int64_t> range, const std::shared_ptr<SlowLane>& lane);
    bool isEmpty() const { return counters_.empty(); }
    /// Since the reading before; none unless every counter tells, and when they stand still: nothing that runs draws
    /// nothing.
    std::optional<double> watts(double seconds);

private:
    struct Counter {
        LanedReading<std::int64_t> energy;
        std::optional<std::int64_t> range;
        PowerFromEnergy power;
    };

    std::vector<Counter> counters_;
};

class SystemPower {
public:
    SystemPower(const std::string& root, const std::vector<HwmonSensor>& sensors, std::shared_ptr<SlowLane> lane);

    bool hasSystem() const { return hasBattery() || rails_.system || meter_ || !platform_.isEmpty(); }
    bool hasAdapter() const { return rails_.adapter || !supplies_.adapters.empty(); }
    bool hasBattery() const { return rails_.battery || !supplies_.batteries.empty(); }

    /// Read at most once in 200 ms: three keys ask for parts of the same.
    const PowerFigures& figures();

private:
    using Reading = LanedReading<std::int64_t>;
    struct Rails {
        std::optional<Reading> system;
        std::optional<Reading> adapter;
        std::optional<Reading> battery;
    };

    std::shared_ptr<SlowLane> lane_;
    PowerSupplies supplies_;
    Rails rails_;
    std::optional<Reading> meter_;
    EnergySum platform_;
    EnergySum packages_;
    PowerFigures figures_;
    std::optional<double> readAt_;
};

/// What the processors draw: the packages' counters less those of their graphics parts, where they may be read, else
/// the sockets' counters of amd_energy, else what zenpower, fam15h_power or the graphics part of a processor measure of
/// the package.
class ProcessorPower {
public:
    ProcessorPower(const std::string& root, const std::vector<HwmonSensor>& sensors, std::shared_ptr<SlowLane> lane);

    /// Since the call before, where counters tell; none when nothing does.
    std::optional<double> watts();

private:
    std::shared_ptr<SlowLane> lane_;
    EnergySum packages_;
    EnergySum graphics_;
    std::vector<LanedReading<std::int64_t>> rails_;
};

} // namespace vantoro
