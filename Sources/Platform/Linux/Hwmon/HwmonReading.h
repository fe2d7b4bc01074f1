// The reading of one file of a sensor's, as seldom as its device can bear it.
#pragma once

#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vantoro {

using HwmonReading = LanedReading<std::int64_t>;

/// `path` is one of the sensor's. None while the driver calls the sensor faulty.
///
/// A graphics processor that sleeps has no reading. One that may fall asleep (power/control "auto") is looked at once
/// and then left alone for longer than it waits before it sleeps; only if it is awake even then, by somebody else's
/// doing, it is read as any other, for a minute, and put to the test again. What was read last holds in between, and a
/// counter of energy goes on at its last pace.
///
/// A drive is read once in five minutes, and only if it has been at work just now: a resting one might be woken.
HwmonReading sensorReading(const HwmonSensor& sensor, const std::string& path, const std::shared_ptr<SlowLane>& lane);

} // namespace vantoro
