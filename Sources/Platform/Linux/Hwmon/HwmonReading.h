// The reading of one file of a sensor's.
#pragma once

#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vantoro {

using HwmonReading = LanedReading<std::int64_t>;

/// `path` is one of the sensor's. A graphics processor or a drive whose reading would wake it has none while it sleeps.
HwmonReading sensorReading(const HwmonSensor& sensor, const std::string& path, const std::shared_ptr<SlowLane>& lane);

} // namespace vantoro
