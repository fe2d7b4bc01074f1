#include "Platform/Linux/Hwmon/HwmonFan.h"

#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>

namespace vantoro {

namespace {

constexpr double fastestCredibleRPM = 50000;
constexpr double dutyRange = 255;

std::optional<HwmonReading> optionalReading(const HwmonSensor& sensor, const std::string& path,
                                            const std::shared_ptr<SlowLane>& lane) {
    if (path.empty())
        return {};
    return sensorReading(sensor, path, lane);
}

std::optional<double> positiveRPM(std::optional<HwmonReading>& reading) {
    const auto number = reading ? reading->read() : std::nullopt;
    const auto rpm = number ? credibleRPM(*number) : std::nullopt;
    return rpm && *rpm > 0 ? rpm : std::nullopt;
}

bool isFanDriver(std::string type) {
    std::ranges::transform(type, type.begin(), [](unsigned char character) {
        return static_cast<char>(character >= 'A' && character <= 'Z' ? character | 0x20 : character);
    });
    return type.find("fan") != std::string::npos;
}

} // namespace

std::optional<double> credibleRPM(std::int64_t rpm) {
    const auto speed = static_cast<double>(rpm);
    return speed >= 0 && speed <= fastestCredibleRPM ? std::optional(speed) : std::nullopt;
}

double derivedFanMaximum(double rpm, std::optional<std::int64_t> duty, double highestRPM) {
    const bool isDriven = rpm > 0 && duty && *duty > 0 && *duty <= static_cast<std::int64_t>(dutyRange);
    const double reached = isDriven ? rpm * dutyRange / static_cast<double>(*duty) : 0;
    return std::max({reached, rpm, highestRPM, fanMaximumFloorRPM});
}

HwmonFan::HwmonFan(const HwmonSensor& sensor, const std::shared_ptr<SlowLane>& lane)
    : speed_(sensorReading(sensor, sensor.inputPath, lane))
    , minimum_(optionalReading(sensor, sensor.minimumPath, lane))
    , maximum_(optionalReading(sensor, sensor.maximumPath, lane))
    , target_(optionalReading(sensor, sensor.targetPath, lane))
    , duty_(optionalReading(sensor, sensor.dutyPath, lane)) {}

std::optional<double> HwmonFan::speed() {
    const auto number = speed_.read();
    const auto rpm = number ? credibleRPM(*number) : std::nullopt;
    if (!rpm)
        return {};
    rpm_ = *rpm;
    highestRPM_ = std::max(highestRPM_, rpm_);
    if (highestRPM_ == 0 && duty_ && duty_->read().value_or(0) > 0)
        return {};
    return rpm;
}

std::optional<double> HwmonFan::minimum() {
    const auto number = minimum_ ? minimum_->read() : std::nullopt;
    return number ? credibleRPM(*number) : std::nullopt;
}

double HwmonFan::maximum() {
    if (const auto stated = positiveRPM(maximum_)) {
        source_ = FanMaximumSource::stated;
        return *stated;
    }
    const auto duty = duty_ && rpm_ > 0 ? duty_->read() : std::nullopt;
    source_ = duty && *duty > 0 ? FanMaximumSource::duty : FanMaximumSource::highestSeen;
    return derivedFanMaximum(rpm_, duty, highestRPM_);
}

std::optional<double> HwmonFan::target() {
    return positiveRPM(target_);
}

bool isFanless(const FanEvidence& evidence) {
    // Tablet, mini, stick, gateway, embedded, detachable.
    static constexpr std::int64_t quietChassis[] = {30, 32, 33, 34, 35, 36};
    if (evidence.tachometers > 0 || evidence.hasDriver)
        return false;
    return !evidence.chassisType || std::ranges::find(quietChassis, *evidence.chassisType) != std::end(quietChassis);
}

FanEvidence readFanEvidence(const std::string& root, const std::vector<HwmonSensor>& sensors) {
    FanEvidence evidence;
    evidence.tachometers = static_cast<int>(std::ranges::count(sensors, HwmonQuantity::fan, &HwmonSensor::quantity));
    evidence.chassisType = readWholeNumber(root + "/sys/class/dmi/id/chassis_type");
    if (evidence.tachometers > 0)
        return evidence;
    const std::string thermal = root + "/sys/class/thermal/";
    for (const std::string& name : namesIn(thermal))
        if (name.starts_with("cooling_device") && isFanDriver(readTrimmed(thermal + name + "/type").value_or("")))
            evidence.hasDriver = true;
    const std::string hwmon = root + "/sys/class/hwmon/";
    for (const std::string& chip : namesIn(hwmon))
        for (const std::string& file : namesIn(hwmon + chip))
            if (const auto parts = parseHwmonFileName(file); parts && parts->prefix == "pwm" && parts->suffix.empty())
                evidence.hasDriver = true;
    return evidence;
}

} // namespace vantoro
