#include "Platform/Linux/Hwmon/HwmonReading.h"

#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Reading/DeviceRest.h"
#include "Platform/Linux/Reading/SensorFile.h"

#include <algorithm>
#include <string_view>

namespace vantoro {

namespace {

std::shared_ptr<DeviceRest> restOf(const HwmonSensor& sensor) {
    constexpr std::string_view status = "/power/runtime_status";
    if (!sensor.statusPath.ends_with(status))
        return {};
    const std::string device = sensor.statusPath.substr(0, sensor.statusPath.size() - status.size());
    if (sensor.driver == "drivetemp")
        return driveRest(device);
    return isGraphicsDriver(sensor.driver) ? graphicsRest(device) : nullptr;
}

/// A file's number, or what stands for it while its device is left alone.
class RestingFile {
public:
    RestingFile(const std::string& path, std::shared_ptr<DeviceRest> rest, SecondsClock clock, bool isCounter)
        : file_(path), rest_(std::move(rest)), clock_(std::move(clock)), isCounter_(isCounter) {}

    std::optional<std::int64_t> read() {
        const double now = clock_();
        const Look look = rest_->at(now, !wasEverRead_);
        if (look == Look::leave)
            last_.reset();
        else if (look == Look::read)
            take(now);
        else if (isCounter_ && last_)
            *last_ += static_cast<std::int64_t>(pace_ * (now - lastAt_));
        lastAt_ = now;
        wasRead_ = look == Look::read;
        wasEverRead_ = wasEverRead_ || wasRead_;
        return last_;
    }

private:
    void take(double now) {
        const auto fresh = file_.readNumber();
        if (!fresh || !isCounter_ || !last_ || !raw_) {
            last_ = fresh;
            pace_ = 0;
        } else {
            const double seconds = now - lastAt_;
            if (wasRead_ && seconds > 0)
                pace_ = std::max(0.0, static_cast<double>(*fresh - *raw_) / seconds);
            *last_ += static_cast<std::int64_t>(pace_ * seconds);
        }
        raw_ = fresh;
    }

    SensorFile file_;
    std::shared_ptr<DeviceRest> rest_;
    SecondsClock clock_;
    bool isCounter_;
    bool wasRead_ = false;
    bool wasEverRead_ = false;
    std::optional<std::int64_t> raw_;
    std::optional<std::int64_t> last_;
    double lastAt_ = 0;
    double pace_ = 0;
};

/// A sensor's fault is looked at with the first reading and then with every fifth: it does not come and go.
class FaultCheck {
public:
    explicit FaultCheck(const std::string& path) : file_(path) {}

    bool isFaulty() {
        constexpr int readingsBetween = 5;
        if (readings_++ % readingsBetween == 0)
            isFaulty_ = file_.readNumber().value_or(0) != 0;
        return isFaulty_;
    }

private:
    SensorFile file_;
    int readings_ = 0;
    bool isFaulty_ = false;
};

} // namespace

HwmonReading sensorReading(const HwmonSensor& sensor, const std::string& path, const std::shared_ptr<SlowLane>& lane) {
    if (auto rest = restOf(sensor)) {
        auto file = std::make_shared<RestingFile>(path, std::move(rest), lane->clock(),
                                                  sensor.quantity == HwmonQuantity::energy);
        return {lane, [file] { return file->read(); }};
    }
    auto file = std::make_shared<SensorFile>(path);
    if (sensor.faultPath.empty() || path != sensor.inputPath)
        return {lane, [file] { return file->readNumber(); }};
    auto fault = std::make_shared<FaultCheck>(sensor.faultPath);
    return {lane, [file, fault] { return fault->isFaulty() ? std::nullopt : file->readNumber(); }};
}

} // namespace vantoro
