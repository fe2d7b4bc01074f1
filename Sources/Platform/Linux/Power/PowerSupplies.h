// Batteries and power adapters under /sys/class/power_supply. Layout: Documentation/ABI/testing/sysfs-class-power in
// the kernel's sources.
#pragma once

#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

enum class BatteryFlow { none, charging, discharging };

struct BatteryReading {
    BatteryFlow flow = BatteryFlow::none;
    /// Never negative; absent when the battery's gauge does not tell.
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
/// gauges give a flow out of the battery a negative sign, some a positive: the sign is dropped.
BatteryReading deriveBattery(std::string_view status, std::optional<std::int64_t> power,
                             std::optional<std::int64_t> voltage, std::optional<std::int64_t> current);
AdapterReading deriveAdapter(std::optional<std::int64_t> online, std::optional<std::int64_t> voltage,
                             std::optional<std::int64_t> current);

/// The machine's own supplies; those of mice, keyboards and headsets are left out.
struct PowerSupplies {
    std::vector<LanedReading<BatteryReading>> batteries;
    std::vector<LanedReading<AdapterReading>> adapters;
};
PowerSupplies discoverPowerSupplies(const std::string& root, const std::shared_ptr<SlowLane>& lane);

} // namespace vantoro
