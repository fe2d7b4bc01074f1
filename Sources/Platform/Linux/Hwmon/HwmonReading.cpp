#include "Platform/Linux/Hwmon/HwmonReading.h"

#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Reading/SensorFile.h"

namespace vantoro {

namespace {

/// Other devices either cannot sleep or answer without waking.
bool wakesWhenRead(const HwmonSensor& sensor) {
    return familyOf(sensor) == HwmonFamily::graphics || sensor.driver == "drivetemp";
}

} // namespace

HwmonReading sensorReading(const HwmonSensor& sensor, const std::string& path, const std::shared_ptr<SlowLane>& lane) {
    auto file = std::make_shared<SensorFile>(path);
    if (sensor.statusPath.empty() || !wakesWhenRead(sensor))
        return {lane, [file] { return file->readNumber(); }};
    auto sleep = std::make_shared<SleepCheck>(sensor.statusPath);
    return {lane, [file, sleep] { return sleep->isAsleep() ? std::nullopt : file->readNumber(); }};
}

} // namespace vantoro
