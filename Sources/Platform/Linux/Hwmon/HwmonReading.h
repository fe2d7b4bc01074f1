// The reading of one file of a sensor's, as seldom as its device can bear it.
#pragma once

#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vantoro {

using HwmonReading = LanedReading<std::int64_t>;

/// `path` is one of the sensor's. None while the driver calls the sensor faulty, and as long as a graphics processor or
/// a drive is not to be looked at (DeviceRest); while it is left alone what was read last holds, and a counter of
/// energy goes on at its last pace.
HwmonReading sensorReading(const HwmonSensor& sensor, const std::string& path, const std::shared_ptr<SlowLane>& lane);

} // namespace vantoro
