#include "Platform/Linux/Hwmon/HwmonReading.h"

#include "Platform/Linux/Hwmon/SensorFamilies.h"
#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <map>

namespace vantoro {

namespace {

/// What may be done with a device's files at this moment.
enum class Look { read, hold, leave };

/// Of one device, for all its files together: those read at one moment count as one look.
class DeviceRest {
public:
    virtual ~DeviceRest() = default;

    /// A file that was never read may be even while its device is left alone; the device's rest begins anew.
    Look at(double now, bool isFirst) {
        const std::lock_guard lock(mutex_);
        constexpr double sameMomentSeconds = 0.3;
        if (!decidedAt_ || now - *decidedAt_ >= sameMomentSeconds || now < *decidedAt_) {
            decided_ = decide(now);
            decidedAt_ = now;
        }
        if (decided_ == Look::hold && isFirst && mayBeginAnew()) {
            lookedAt_ = now;
            return Look::read;
        }
        return decided_;
    }

protected:
    std::optional<double> lookedAt_;

private:
    virtual Look decide(double now) = 0;
    virtual bool mayBeginAnew() const { return true; }

    std::mutex mutex_;
    std::optional<double> decidedAt_;
    Look decided_ = Look::leave;
};

class GraphicsRest : public DeviceRest {
public:
    /// `power` is the device's folder of that name.
    explicit GraphicsRest(const std::string& power) : sleep_(power + "runtime_status"), control_(power + "control") {
        constexpr double least = 10;
        constexpr double most = 60;
        constexpr double usualMilliseconds = 5000;
        const auto delay = readWholeNumber(power + "autosuspend_delay_ms");
        const double milliseconds = delay && *delay >= 0 ? static_cast<double>(*delay) : usualMilliseconds;
        restSeconds_ = std::clamp(milliseconds * 2.5 / 1e3, least, most);
    }

private:
    Look decide(double now) override {
        constexpr double freeSeconds = 60;
        if (sleep_.isAsleep()) {
            lookedAt_.reset();
            freeUntil_ = now;
            return Look::leave;
        }
        char room[16];
        const auto control = control_.readText(room, sizeof room);
        if (lookedAt_ && control && trimmedText(*control) == "auto" && now >= freeUntil_) {
            if (now - *lookedAt_ < restSeconds_)
                return Look::hold;
            freeUntil_ = now + freeSeconds;
        }
        lookedAt_ = now;
        return Look::read;
    }

    SleepCheck sleep_;
    SensorFile control_;
    double restSeconds_ = 0;
    double freeUntil_ = 0;
};

class DriveRest : public DeviceRest {
public:
    explicit DriveRest(const std::string& device) : sleep_(device + "power/runtime_status") {
        const std::string blocks = device + "block/";
        for (const std::string& disk : namesIn(blocks)) {
            spins_ = readWholeNumber(blocks + disk + "/queue/rotational") != 0;
            work_ = SensorFile(blocks + disk + "/stat");
            tellsWork_ = true;
        }
    }

private:
    Look decide(double now) override {
        constexpr double betweenLooks = 300;
        constexpr double justNow = 30;
        if (sleep_.isAsleep()) {
            lookedAt_.reset();
            return Look::leave;
        }
        noteWork(now);
        if (lookedAt_ && now - *lookedAt_ < betweenLooks)
            return Look::hold;
        if (tellsWork_ && spins_ && (!workedAt_ || now - *workedAt_ > justNow))
            return lookedAt_ && now - *lookedAt_ < 2 * betweenLooks ? Look::hold : Look::leave;
        lookedAt_ = now;
        return Look::read;
    }

    bool mayBeginAnew() const override { return false; }

    /// The kernel's account of what was asked of the disk, which asks nothing of it.
    void noteWork(double now) {
        char room[256];
        const auto text = tellsWork_ && spins_ ? work_.readText(room, sizeof room) : std::nullopt;
        if (!text)
            return;
        if (!before_.empty() && before_ != *text)
            workedAt_ = now;
        before_ = *text;
    }

    SleepCheck sleep_;
    SensorFile work_;
    bool spins_ = true;
    bool tellsWork_ = false;
    std::string before_;
    std::optional<double> workedAt_;
};

/// One for all who read of a device, wherever they found it: two that took turns would keep it awake between them.
std::shared_ptr<DeviceRest> restOf(const HwmonSensor& sensor) {
    const bool isDrive = sensor.driver == "drivetemp";
    if (sensor.statusPath.empty() || (!isDrive && !isGraphicsDriver(sensor.driver)))
        return {};
    static std::mutex mutex;
    static std::map<std::string, std::weak_ptr<DeviceRest>> rests;
    const std::lock_guard lock(mutex);
    std::weak_ptr<DeviceRest>& known = rests[sensor.statusPath];
    std::shared_ptr<DeviceRest> rest = known.lock();
    if (!rest) {
        const std::string power = sensor.statusPath.substr(0, sensor.statusPath.rfind('/') + 1);
        if (isDrive)
            rest = std::make_shared<DriveRest>(power.substr(0, power.rfind('/', power.size() - 2) + 1));
        else
            rest = std::make_shared<GraphicsRest>(power);
        known = rest;
    }
    return rest;
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
