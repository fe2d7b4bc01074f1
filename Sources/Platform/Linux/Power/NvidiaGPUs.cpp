#include "Platform/Linux/Power/NvidiaGPUs.h"

#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

namespace vantoro {

namespace {

constexpr double sameMomentSeconds = 0.2;

struct Device {
    std::string address;
    SleepCheck sleep;
    SensorFile control;
    std::optional<NvmlReading> last;
    std::optional<double> lookedAt;

    bool mayFallAsleep() {
        char room[16];
        const auto text = control.readText(room, sizeof room);
        return text && trimmedText(*text) == "auto";
    }
};

/// Everything one look needs; owned by the reading, so that a look that hangs harms nobody.
struct Devices {
    std::shared_ptr<Nvml> nvml;
    SecondsClock clock;
    std::vector<Device> list;

    std::vector<std::optional<NvmlReading>> look() {
        bool isNeeded = false;
        std::vector<std::optional<NvmlReading>> readings;
        for (Device& device : list) {
            const double now = clock();
            const bool rests = device.mayFallAsleep();
            if (device.sleep.isAsleep()) {
                device.last.reset();
            } else if (!rests || !device.lookedAt || now - *device.lookedAt >= nvidiaRestSeconds) {
                device.last = nvml->open() ? nvml->read(device.address) : std::nullopt;
                device.lookedAt = now;
                if (rests && device.last) // a total that is seen rarely would come in bursts; the power does not
                    device.last->totalMillijoules.reset();
            }
            isNeeded = isNeeded || (device.last && !rests);
            readings.push_back(device.last);
        }
        if (!isNeeded)
            nvml->close();
        return readings;
    }
};

bool isGraphics(const std::string& device) {
    // Class 0x03: display controllers. The same card's sound and USB parts have other drivers, but may share this one.
    return readTrimmed(device + "/class").value_or("").starts_with("0x03");
}

} // namespace

NvidiaGPUs::NvidiaGPUs(const std::string& root, std::shared_ptr<Nvml> nvml, const std::shared_ptr<SlowLane>& lane)
    : lane_(lane) {
    const std::string folder = root + "/sys/bus/pci/drivers/nvidia/";
    const auto devices = std::make_shared<Devices>();
    for (const std::string& name : namesIn(folder))
        if (const std::string place = folder + name; name.find(':') != std::string::npos && isGraphics(place)) {
            addresses_.push_back(name);
            devices->list.push_back({.address = name,
                                     .sleep = SleepCheck(place + "/power/runtime_status"),
                                     .control = SensorFile(place + "/power/control"),
                                     .last = {},
                                     .lookedAt = {}});
        }
    last_.resize(addresses_.size());
    if (!nvml || addresses_.empty())
        return;
    devices->nvml = std::move(nvml);
    devices->clock = lane_->clock();
    reading_.emplace(lane_, [devices] { return std::optional(devices->look()); });
}

const std::vector<std::optional<NvmlReading>>& NvidiaGPUs::readings() {
    const double now = lane_->now();
    if (!reading_ || (readAt_ && now - *readAt_ < sameMomentSeconds))
        return last_;
    readAt_ = now;
    if (auto readings = reading_->read())
        last_ = std::move(*readings);
    else
        last_.assign(addresses_.size(), std::nullopt);
    return last_;
}

} // namespace vantoro
