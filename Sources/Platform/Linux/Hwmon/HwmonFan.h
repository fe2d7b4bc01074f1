// One fan of the hwmon tree, and what its files mean where they do not say it themselves.
#pragma once

#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// Where a fan's greatest speed comes from. The values are those of the key "FnMS".
enum class FanMaximumSource { stated = 0, duty = 1, highestSeen = 2 };

/// What a fan is believed to reach at least when nothing states its maximum: large case fans end at about this speed,
/// all others go beyond it.
constexpr double fanMaximumFloorRPM = 2000;

/// A speed that a fan can turn at; none for what counters say when their input hangs.
std::optional<double> credibleRPM(std::int64_t rpm);

/// The maximum of a fan that states none: rpm · 255 ÷ duty when it turns and its duty is known, else the highest speed
/// seen; never below the highest seen nor the floor.
double derivedFanMaximum(double rpm, std::optional<std::int64_t> duty, double highestRPM);

class HwmonFan {
public:
    HwmonFan(const HwmonSensor& sensor, const std::shared_ptr<SlowLane>& lane);

    /// Revolutions per minute. None when the driver gives an error, while the device sleeps, and as long as a driven
    /// motor has never turned: a header with nothing on it.
    std::optional<double> speed();
    std::optional<double> minimum();
    /// Of the last speed.
    double maximum();
    /// None also when the driver has no speed in mind.
    std::optional<double> target();
    FanMaximumSource maximumSource() const { return source_; }

private:
    using Reading = LanedReading<std::int64_t>;

    Reading speed_;
    std::optional<Reading> minimum_;
    std::optional<Reading> maximum_;
    std::optional<Reading> target_;
    std::optional<Reading> duty_;
    double rpm_ = 0;
    double highestRPM_ = 0;
    FanMaximumSource source_ = FanMaximumSource::highestSeen;
};

/// What speaks for or against a machine having fans at all.
struct FanEvidence {
    /// Fans that tell their speed.
    int tachometers = 0;
    /// Something that drives a fan: a duty file, or a cooling device that is one.
    bool hasDriver = false;
    /// Of the firmware's tables (SMBIOS type 3); absent on boards that have none.
    std::optional<std::int64_t> chassisType;

    bool operator==(const FanEvidence&) const = default;
};

/// Whether it may be said that this machine has no fans. Most laptops, towers and servers without a tachometer have
/// fans that Linux has no driver for; boards, tablets, sticks, mini and embedded machines without a trace of one have
/// none.
bool isFanless(const FanEvidence& evidence);

FanEvidence readFanEvidence(const std::string& root, const std::vector<HwmonSensor>& sensors);

} // namespace vantoro
