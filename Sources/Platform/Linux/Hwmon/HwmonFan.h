// One fan of the hwmon tree, and what its files mean where they do not say it themselves.
#pragma once

#include "Platform/Linux/Hwmon/FanLimits.h"
#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// What a fan belongs to. Only the machine's own say how hard its cooling works; a flow is no fan at all, though
/// drivers of water coolers tell it among them.
enum class FanKind { machine, graphics, powerSupply, pump, flow };

/// By the driver, and by the label where it says so.
FanKind fanKindOf(const HwmonSensor& sensor);

/// What to call a fan: its label in plain words ("cpu_fan" is "CPU fan"), without one "Graphics fan", "Pump" or, of the
/// machine's own, "Fan 3" by the driver's number. One that is in `taken` gets the next number.
std::string fanName(const HwmonSensor& sensor, const std::vector<std::string>& taken);

/// A speed that a fan can turn at; none for what counters say when their input hangs.
std::optional<double> credibleRPM(std::int64_t rpm);

/// Where a fan's ends come from, or that they are still to come. The values are those of the key "FnMS".
enum class FanLimitSource { stated = 0, duty = 1, learned = 2, learning = 3 };

/// The ends of the speeds that a fan runs at, in revolutions per minute.
struct FanLimits {
    double floorRPM = 0;
    double ceilingRPM = 0;
    FanLimitSource source = FanLimitSource::stated;

    bool operator==(const FanLimits&) const = default;
};

class HwmonFan {
public:
    HwmonFan(const HwmonSensor& sensor, const std::shared_ptr<SlowLane>& lane, std::shared_ptr<FanMemory> memory);

    FanKind kind() const { return kind_; }
    /// Revolutions per minute; 0 when it stands still. None when the driver gives an error or says that the fan is
    /// faulty, while the device sleeps, and as long as a motor on a board's header has never turned though it is driven
    /// for certain: nothing is plugged in there.
    std::optional<double> speed();
    /// As far as they are known at the last speed: stated by the driver, known by the motor's duty, or learned. Never
    /// for another than one of the machine's own.
    const std::optional<FanLimits>& limits() const { return limits_; }
    /// None where they are neither known nor being learned.
    std::optional<FanLimitSource> limitSource() const;
    /// None also when the driver has no speed in mind.
    std::optional<double> target();

private:
    std::optional<double> statedCeiling();
    std::optional<FanLimits> statedLimits();
    std::optional<double> dutyCeiling(std::optional<std::int64_t> duty);
    void lookAtLimits(std::optional<std::int64_t> duty);

    FanKind kind_;
    std::string driver_;
    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<FanMemory> memory_;
    FanRange& range_;
    FanWatch watch_;
    HwmonReading speed_;
    std::optional<HwmonReading> minimum_;
    std::optional<HwmonReading> maximum_;
    std::optional<HwmonReading> target_;
    std::optional<HwmonReading> duty_;
    /// The least duty that the motor is ever given, where that is known.
    std::optional<double> leastDuty_;
    DutyEvidence evidence_;
    std::optional<std::int64_t> dutyBefore_;
    double dutySince_ = 0;
    std::optional<double> dutyCeiling_;
    double rpm_ = 0;
    double highestRPM_ = 0;
    double lowestRPM_ = 0;
    int looks_ = 0;
    std::optional<double> statedFloor_;
    std::optional<double> stated_;
    bool isStatedBelieved_ = false;
    bool wasAtAnEnd_ = false;
    bool followsSpeed_ = false;
    std::optional<FanLimits> limits_;
};

/// What speaks for or against a machine having fans at all.
struct FanEvidence {
    /// Fans that tell their speed.
    int tachometers = 0;
    /// Something that drives a fan: a duty file, a cooling device that is one, or a fan in the firmware's tables.
    bool hasDriver = false;
    /// Of the firmware's tables (SMBIOS type 3); absent on boards that have none.
    std::optional<std::int64_t> chassisType;
    /// By the device tree, on machines that have one: a board, a tablet, a telephone, or a notebook built without fans.
    bool isBuiltWithout = false;

    bool operator==(const FanEvidence&) const = default;
};

/// Whether it may be said that this machine has no fans. Most laptops, towers, small desktops and servers without a
/// tachometer have fans that Linux has no driver for; handhelds, tablets and boards without a trace of one have none.
bool isFanless(const FanEvidence& evidence);

FanEvidence readFanEvidence(const std::string& root, const std::vector<HwmonSensor>& sensors);

} // namespace vantoro
