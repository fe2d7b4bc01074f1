// Which family of temperature keys a sensor belongs to, and which key it gets. Pure.
#pragma once

#include "Model/Records/Temperatures.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/SMCKeyData.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace vantoro {

/// By the driver, and by the label where a driver serves several families. The drivers of a processor's own sensors are
/// the chip; those of graphics processors, the graphics; supplies are the battery; everything else (boards, drives,
/// radios, ACPI zones) is the enclosure.
SensorFamily familyOf(const HwmonSensor& sensor);

/// Whether the driver is the one that passes on the controller of a Mac.
bool isMacController(std::string_view driver);
/// A label of that driver's that is a key of the controller's: "T" or "P" and three more letters or digits.
std::optional<std::uint32_t> controllerKey(std::string_view label);

/// Hands out keys: the family's prefix and two characters that count up in base 62 ("00" … "zz"). A key already taken
/// is passed over. None when a family's 3,844 keys are used up.
class SensorKeys {
public:
    bool take(std::uint32_t key) { return taken_.insert(key).second; }
    std::optional<std::uint32_t> next(SensorFamily family);

private:
    std::set<std::uint32_t> taken_;
    std::array<int, sensorFamilies.size()> used_{};
};

/// A reading in thousandths of a degree as degrees Celsius. None for what a chip says when nothing is connected or its
/// sensor is off (exactly −128, 127 or 255, below −40) and for what no sensor survives (above 200).
std::optional<double> credibleCelsius(std::int64_t thousandths);

} // namespace vantoro
