#include "Platform/Linux/Hwmon/HwmonFan.h"

#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Reading/KeptFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <fmt/format.h>

namespace vantoro {

namespace {

constexpr double fastestCredibleRPM = 50'000;
constexpr double dutyRange = 255;
/// A motor with a control line is built to run down to three tenths of its full speed, or further.
constexpr double leastShareOfFullSpeed = 0.3;
/// Readings between two looks at what a driver states: it hardly ever changes.
constexpr int looksBetweenStatements = 30;

/// Power supplies that tell of themselves over a bus or by cable.
constexpr std::string_view supplyDrivers[] = {"corsairpsu", "cffps", "pmbus", "dps",    "ipsps", "pfe",
                                              "crps",       "acbel", "fsg",   "ym2151", "yh5151"};
/// Chips that boards connect their headers to. What stands on a header is unknown to them, and the least speed that
/// they state is the one below which they raise an alarm.
constexpr std::string_view boardChips[] = {"nct", "it8", "f71", "f81",  "f88", "w83", "lm",  "adt", "adm",
                                           "sch", "dme", "emc", "smsc", "max", "pc8", "amc", "vt1", "vt8"};
/// Drivers that give their motors the very duty that they tell.
constexpr std::string_view truthfulDuties[] = {"pwmfan", "kraken", "x53", "z53"};

template <std::size_t Count>
bool startsWithOne(std::string_view text, const std::string_view (&list)[Count]) {
    return std::ranges::any_of(list, [text](std::string_view start) { return text.starts_with(start); });
}

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

bool mentionsFan(std::string_view type) {
    return loweredText(type).find("fan") != std::string::npos;
}

/// What tells a fan from all others, the same after each start: of one line, without control characters.
std::string fanIdentity(const HwmonSensor& sensor) {
    constexpr std::size_t longest = 300;
    std::string identity = fmt::format("{} {} fan{} {}", sensor.driver, sensor.devicePath, sensor.number, sensor.label);
    for (char& character : identity)
        if (static_cast<unsigned char>(character) < ' ')
            character = '?';
    return identity.substr(0, longest);
}

/// The device tree's steps of a fan's duty, 32 bits each with the highest byte first: the least that turns it.
std::optional<double> leastStatedDuty(const HwmonSensor& sensor) {
    const std::string folder = sensor.inputPath.substr(0, sensor.inputPath.rfind('/'));
    constexpr std::size_t most = 4096;
    const auto steps = readFileAt(AT_FDCWD, (folder + "/device/of_node/cooling-levels").c_str(), most);
    std::optional<double> least;
    for (std::size_t at = 0; steps && at + 4 <= steps->size(); at += 4) {
        const auto byte = [&](std::size_t place) { return static_cast<unsigned char>((*steps)[at + place]); };
        const bool isDuty = byte(0) == 0 && byte(1) == 0 && byte(2) == 0 && byte(3) > 0;
        if (isDuty && (!least || byte(3) < *least))
            least = byte(3);
    }
    return least;
}

/// "cpu_fan" as "CPU fan".
std::string plainWords(std::string_view label) {
    static constexpr std::string_view initials[] = {"cpu", "gpu", "psu", "vrm", "aio", "hdd", "ssd", "pch", "dimm"};
    constexpr std::size_t longest = 40;
    std::string words;
    for (std::size_t at = 0; at < label.size() && words.size() < longest;) {
        const std::size_t end = std::min(label.size(), label.find_first_of("_ \t", at));
        std::string word(label.substr(at, end - at));
        at = end + 1;
        if (word.empty())
            continue;
        if (std::ranges::find(initials, word) != std::end(initials))
            std::ranges::transform(word, word.begin(), [](char c) { return static_cast<char>(c - 'a' + 'A'); });
        words += (words.empty() ? "" : " ") + word;
    }
    if (!words.empty() && words.front() >= 'a' && words.front() <= 'z')
        words.front() = static_cast<char>(words.front() - 'a' + 'A');
    return words;
}

/// What a device tree says of the kind of machine, and whether it has a fan in it.
void readDeviceTree(const std::string& root, FanEvidence& evidence) {
    std::string tree = root + "/proc/device-tree/";
    if (!readTrimmed(tree + "model"))
        tree = root + "/sys/firmware/devicetree/base/";
    const std::string model = readTrimmed(tree + "model").value_or("");
    const std::string compatible = readTrimmed(tree + "compatible").value_or("");
    if (model.empty())
        return;
    for (const std::string& node : namesIn(tree))
        if (mentionsFan(node) && readTrimmed(tree + node + "/status").value_or("okay") != "disabled" &&
            readTrimmed(tree + node + "/compatible"))
            evidence.hasDriver = true;
    const std::string kind = readTrimmed(tree + "chassis-type").value_or("");
    const bool isApple = model.starts_with("Apple ") || compatible.find("apple,") != std::string::npos;
    if (isApple)
        evidence.isBuiltWithout = model.find("MacBook Air") != std::string::npos;
    else if (!kind.empty())
        evidence.isBuiltWithout = kind == "tablet" || kind == "handset" || kind == "watch" || kind == "embedded";
    else // Servers of some makers, and virtual machines, have a device tree too.
        evidence.isBuiltWithout = !evidence.chassisType && !compatible.starts_with("ibm,") &&
                                  model.find("dummy-virt") == std::string::npos &&
                                  compatible.find("qemu") == std::string::npos;
}

} // namespace

FanKind fanKindOf(const HwmonSensor& sensor) {
    const std::string label = loweredText(sensor.label);
    const auto says = [&label](std::string_view word) { return label.find(word) != std::string::npos; };
    if (isGraphicsDriver(sensor.driver))
        return FanKind::graphics;
    if (says("flow"))
        return FanKind::flow;
    if (says("pump"))
        return FanKind::pump;
    if (startsWithOne(loweredText(sensor.driver), supplyDrivers) || says("psu") || says("power supply"))
        return FanKind::powerSupply;
    return FanKind::machine;
}

std::string fanName(const HwmonSensor& sensor, const std::vector<std::string>& taken) {
    std::string name = plainWords(sensor.label);
    const FanKind kind = fanKindOf(sensor);
    int number = 1;
    if (name.empty() && kind == FanKind::machine) {
        name = "Fan";
        number = sensor.number;
    } else if (name.empty()) {
        name = kind == FanKind::graphics ? "Graphics fan" : kind == FanKind::pump ? "Pump" : "Power supply fan";
    }
    std::string numbered = name == "Fan" ? fmt::format("{} {}", name, number) : name;
    while (std::ranges::find(taken, numbered) != taken.end())
        numbered = fmt::format("{} {}", name, ++number);
    return numbered;
}

std::optional<double> credibleRPM(std::int64_t rpm) {
    const auto speed = static_cast<double>(rpm);
    return speed >= 0 && speed <= fastestCredibleRPM ? std::optional(speed) : std::nullopt;
}

HwmonFan::HwmonFan(const HwmonSensor& sensor, const std::shared_ptr<SlowLane>& lane, std::shared_ptr<FanMemory> memory)
    : kind_(fanKindOf(sensor))
    , driver_(loweredText(sensor.driver))
    , lane_(lane)
    , memory_(std::move(memory))
    , range_(memory_->of(fanIdentity(sensor)))
    , speed_(sensorReading(sensor, sensor.inputPath, lane))
    , minimum_(optionalReading(sensor, sensor.minimumPath, lane))
    , maximum_(optionalReading(sensor, sensor.maximumPath, lane))
    , target_(optionalReading(sensor, sensor.targetPath, lane))
    , duty_(optionalReading(sensor, sensor.dutyPath, lane)) {
    if (startsWithOne(driver_, boardChips))
        minimum_.reset();
    if (driver_ == "pwmfan")
        leastDuty_ = leastStatedDuty(sensor);
}

std::optional<double> HwmonFan::speed() {
    limits_.reset();
    const auto number = speed_.read();
    const auto rpm = number ? credibleRPM(*number) : std::nullopt;
    if (!rpm)
        return {};
    rpm_ = *rpm;
    highestRPM_ = std::max(highestRPM_, rpm_);
    if (rpm_ > 0)
        lowestRPM_ = lowestRPM_ > 0 ? std::min(lowestRPM_, rpm_) : rpm_;
    if (kind_ != FanKind::machine)
        return rpm;
    const auto duty = duty_ ? duty_->read() : std::nullopt;
    // Of these chips alone: others repeat a duty that they do not give.
    if (highestRPM_ == 0 && duty.value_or(0) > 0 && driver_.starts_with("nct"))
        return {};
    watch_.note(range_, rpm_, lane_->now());
    lookAtLimits(duty);
    return rpm;
}

/// What is stated is believed once the speed was seen below it, and no more when it proves to be a speed that was
/// reached: one that grows with the speed, or is left behind by it.
std::optional<double> HwmonFan::statedCeiling() {
    constexpr double margin = 0.05;
    if (!maximum_ || followsSpeed_)
        return {};
    const bool isWaiting = !stated_ || (minimum_ && !statedFloor_);
    if (looks_++ % looksBetweenStatements == 0 || isWaiting || rpm_ > *stated_ * (1 - margin)) {
        const auto before = stated_;
        if (const auto fresh = positiveRPM(maximum_))
            stated_ = fresh;
        followsSpeed_ = before && stated_ && *stated_ != *before && *stated_ <= highestRPM_ * (1 + margin);
        const auto floor = minimum_ ? minimum_->read() : std::nullopt;
        if (const auto fresh = floor ? credibleRPM(*floor) : std::nullopt)
            statedFloor_ = fresh;
    }
    if (!stated_ || followsSpeed_ || highestRPM_ > *stated_ * (1 + margin))
        return {};
    isStatedBelieved_ = isStatedBelieved_ || rpm_ < *stated_ * (1 - margin) || isMacController(driver_);
    return isStatedBelieved_ ? stated_ : std::nullopt;
}

/// A floor of 0 says that the fan may stand still, not how slowly it turns: its slowest steady speed does. Before that
/// was seen a speed in the middle tells nothing, standing still and more than half of the ceiling do.
std::optional<FanLimits> HwmonFan::statedLimits() {
    const auto ceiling = statedCeiling();
    if (!ceiling)
        return {};
    if (statedFloor_ && *statedFloor_ > 0 && *statedFloor_ < *ceiling)
        return FanLimits{.floorRPM = *statedFloor_, .ceilingRPM = *ceiling};
    if (range_.isLearned() && range_.lowestRPM < *ceiling)
        return FanLimits{.floorRPM = range_.lowestRPM, .ceilingRPM = *ceiling, .source = FanLimitSource::learned};
    constexpr double surelyWorking = 0.6;
    constexpr double highestFloor = 0.5;
    wasAtAnEnd_ = wasAtAnEnd_ || rpm_ == 0 || rpm_ >= surelyWorking * *ceiling;
    if (!statedFloor_ || !wasAtAnEnd_)
        return {};
    const double lowest = range_.lowestRPM > 0 ? std::min(range_.lowestRPM, rpm_) : rpm_;
    return FanLimits{.floorRPM = std::min(lowest, highestFloor * *ceiling), .ceilingRPM = *ceiling};
}

std::optional<double> HwmonFan::dutyCeiling(std::optional<std::int64_t> duty) {
    if (!duty)
        return {};
    if (!startsWithOne(driver_, truthfulDuties)) {
        evidence_.note(*duty, rpm_, lane_->now());
        const auto full = evidence_.fullSpeed();
        return full ? std::optional(std::max(*full, highestRPM_)) : std::nullopt;
    }
    // While the motor follows a new duty the two do not belong together.
    constexpr double settlingSeconds = 6;
    if (dutyBefore_ != duty)
        dutySince_ = lane_->now();
    dutyBefore_ = duty;
    const bool isSettled = !dutyCeiling_ || lane_->now() - dutySince_ >= settlingSeconds;
    if (isSettled && rpm_ > 0 && *duty > 0 && *duty <= static_cast<std::int64_t>(dutyRange))
        dutyCeiling_ = rpm_ * dutyRange / static_cast<double>(*duty);
    return dutyCeiling_ ? std::optional(std::max(*dutyCeiling_, highestRPM_)) : std::nullopt;
}

void HwmonFan::lookAtLimits(std::optional<std::int64_t> duty) {
    limits_ = statedLimits();
    if (limits_)
        return;
    if (const auto reached = dutyCeiling(duty)) {
        const bool isTruthful = startsWithOne(driver_, truthfulDuties);
        const double least = leastDuty_ ? *leastDuty_ / dutyRange : isTruthful ? 0 : leastShareOfFullSpeed;
        limits_ = {
            .floorRPM = std::min(least * *reached, lowestRPM_), .ceilingRPM = *reached, .source = FanLimitSource::duty};
    } else if (range_.isLearned()) {
        limits_ = {.floorRPM = range_.lowestRPM,
                   .ceilingRPM = std::max(range_.highestRPM, rpm_),
                   .source = FanLimitSource::learned};
    }
}

std::optional<FanLimitSource> HwmonFan::limitSource() const {
    if (limits_)
        return limits_->source;
    return kind_ == FanKind::machine && range_.isBeingLearned() ? std::optional(FanLimitSource::learning)
                                                                : std::nullopt;
}

std::optional<double> HwmonFan::target() {
    return positiveRPM(target_);
}

bool isFanless(const FanEvidence& evidence) {
    constexpr std::int64_t handheld = 11;
    constexpr std::int64_t tablet = 30;
    return evidence.tachometers == 0 && !evidence.hasDriver &&
           (evidence.isBuiltWithout || evidence.chassisType == handheld || evidence.chassisType == tablet);
}

FanEvidence readFanEvidence(const std::string& root, const std::vector<HwmonSensor>& sensors) {
    FanEvidence evidence;
    evidence.tachometers = static_cast<int>(std::ranges::count(sensors, HwmonQuantity::fan, &HwmonSensor::quantity));
    evidence.chassisType = readWholeNumber(root + "/sys/class/dmi/id/chassis_type");
    if (evidence.tachometers > 0)
        return evidence;
    readDeviceTree(root, evidence);
    const std::string thermal = root + "/sys/class/thermal/";
    for (const std::string& name : namesIn(thermal))
        if (name.starts_with("cooling_device") && mentionsFan(readTrimmed(thermal + name + "/type").value_or("")))
            evidence.hasDriver = true;
    const std::string hwmon = root + "/sys/class/hwmon/";
    for (const std::string& chip : namesIn(hwmon))
        for (const std::string& file : namesIn(hwmon + chip))
            if (const auto parts = parseHwmonFileName(file); parts && parts->prefix == "pwm" && parts->suffix.empty())
                evidence.hasDriver = true;
    // Fans that the firmware drives by itself, whether or not a driver speaks to them.
    for (const std::string& name : namesIn(root + "/sys/bus/acpi/devices"))
        for (const std::string_view fan : {"PNP0C0B", "INT3404", "INTC1044", "INTC1048", "INTC1063", "INTC10A2"})
            evidence.hasDriver = evidence.hasDriver || std::string_view(name).starts_with(fan);
    return evidence;
}

} // namespace vantoro
