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

/// What a temperature counts as.
struct SensorRole {
    /// None for what tells of no part that a person could feel or act on: zones of the die beside the processors,
    /// firmware's placeholders.
    std::optional<SensorFamily> family;
    /// Somebody else's reading of the processor: it counts only where the processor has no sensors of its own.
    bool isCopy = false;

    bool operator==(const SensorRole&) const = default;
};

/// By the driver, and by the label where a driver serves several families. The drivers of a processor's own sensors are
/// the chip, as are a device tree's zones of it; those of graphics processors, the graphics; supplies are the battery;
/// what is left of boards, drives and radios is the enclosure.
SensorRole roleOf(const HwmonSensor& sensor);

/// Whether the driver is a graphics processor's: such a device may sleep, and its fan is a card's own.
bool isGraphicsDriver(std::string_view driver);
/// ASCII only.
std::string loweredText(std::string_view text);

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

/// A reading in thousandths of a degree as degrees Celsius. None for what no sensor of this family can read while the
/// machine runs: what chips say when nothing is connected, or a sensor is off, lies beyond.
std::optional<double> credibleCelsius(std::int64_t thousandths, SensorFamily family);

} // namespace vantoro
