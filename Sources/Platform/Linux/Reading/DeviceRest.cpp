#include "Platform/Linux/Reading/DeviceRest.h"

#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <vector>

namespace vantoro {

namespace {

bool reads(SensorFile& file, std::string_view word) {
    char room[32];
    const auto text = file.readText(room, sizeof room);
    return text && trimmedText(*text) == word;
}

class GraphicsRest : public DeviceRest {
public:
    explicit GraphicsRest(const std::string& device)
        : sleep_(device + "/power/runtime_status"), control_(device + "/power/control") {
        constexpr double least = 10;
        constexpr double most = 60;
        constexpr double usualMilliseconds = 5000;
        const auto delay = readWholeNumber(device + "/power/autosuspend_delay_ms");
        const double milliseconds = delay && *delay >= 0 ? static_cast<double>(*delay) : usualMilliseconds;
        restSeconds_ = std::clamp(milliseconds * 2.5 / 1e3, least, most);
        const std::string cards = device + "/drm/";
        for (const std::string& card : namesIn(cards))
            for (const std::string& name : namesIn(cards + card))
                if (name.starts_with(card + "-"))
                    connectors_.emplace_back(cards + card + "/" + name + "/enabled");
    }

private:
    Look decide(double now) override {
        constexpr double freeSeconds = 60;
        if (sleep_.isAsleep()) {
            lookedAt_.reset();
            freeUntil_ = now;
            return Look::leave;
        }
        if (lookedAt_ && now >= freeUntil_ && reads(control_, "auto") &&
            std::ranges::none_of(connectors_, [](SensorFile& connector) { return reads(connector, "enabled"); })) {
            if (now - *lookedAt_ < restSeconds_)
                return Look::hold;
            freeUntil_ = now + freeSeconds;
        }
        lookedAt_ = now;
        return Look::read;
    }
    bool mayBeginAnew() const override { return true; }

    SleepCheck sleep_;
    SensorFile control_;
    std::vector<SensorFile> connectors_;
    double restSeconds_ = 0;
};

class DriveRest : public DeviceRest {
public:
    explicit DriveRest(const std::string& device) : sleep_(device + "/power/runtime_status") {
        const std::string blocks = device + "/block/";
        for (const std::string& disk : namesIn(blocks))
            if (readWholeNumber(blocks + disk + "/queue/rotational") != 0)
                work_.emplace(blocks + disk + "/stat");
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
        if (work_ && (!workedAt_ || now - *workedAt_ > justNow))
            return lookedAt_ && now - *lookedAt_ < 2 * betweenLooks ? Look::hold : Look::leave;
        lookedAt_ = now;
        return Look::read;
    }
    bool mayBeginAnew() const override { return false; }

    void noteWork(double now) {
        char room[256];
        const auto text = work_ ? work_->readText(room, sizeof room) : std::nullopt;
        if (!text)
            return;
        if (!before_.empty() && before_ != *text)
            workedAt_ = now;
        before_ = *text;
    }

    SleepCheck sleep_;
    /// Of a disk that turns.
    std::optional<SensorFile> work_;
    std::string before_;
    std::optional<double> workedAt_;
};

/// One for all who read of a device, on whichever path they found it: two that took turns would keep it awake.
template <typename Rest>
std::shared_ptr<DeviceRest> sharedRest(const std::string& device) {
    static std::mutex mutex;
    static std::map<std::string, std::weak_ptr<DeviceRest>> rests;
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(device.c_str(), nullptr), &std::free);
    const std::lock_guard lock(mutex);
    std::weak_ptr<DeviceRest>& known = rests[real ? real.get() : device];
    std::shared_ptr<DeviceRest> rest = known.lock();
    if (!rest)
        known = rest = std::make_shared<Rest>(device);
    return rest;
}

} // namespace

Look DeviceRest::at(double now, bool isFirst) {
    constexpr double sameMomentSeconds = 0.3;
    const std::lock_guard lock(mutex_);
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

void DeviceRest::note(bool works, double now) {
    constexpr double workSeconds = 10;
    const std::lock_guard lock(mutex_);
    freeUntil_ = works ? std::max(freeUntil_, now + workSeconds) : now;
}

std::shared_ptr<DeviceRest> graphicsRest(const std::string& device) {
    return sharedRest<GraphicsRest>(device);
}

std::shared_ptr<DeviceRest> driveRest(const std::string& device) {
    return sharedRest<DriveRest>(device);
}

} // namespace vantoro
