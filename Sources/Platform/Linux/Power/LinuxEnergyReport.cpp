#include "Platform/Linux/Power/LinuxEnergyReport.h"

#include "Platform/Linux/Hwmon/HwmonReading.h"
#include "Platform/Linux/Hwmon/HwmonTree.h"
#include "Platform/Linux/Power/EnergyCounters.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Reading/SensorFile.h"

#include <utility>

namespace vantoro {

namespace {

struct CounterState {
    LanedReading<std::int64_t> reading;
    std::optional<std::int64_t> range;
    SteadyCounter counter;
    std::int64_t total = 0;

    std::int64_t update() {
        if (const auto raw = reading.read())
            total = counter.update(*raw, range);
        return total;
    }
};

struct PowerState {
    LanedReading<std::int64_t> reading;
    EnergyFromPower energy;
};

std::string_view lastPart(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

/// The first meter of a card on its own; the second voltage marks a part of a processor.
bool isCardPower(const HwmonSensor& sensor) {
    return sensor.quantity == HwmonQuantity::power && sensor.number == 1 && !sensor.hasSecondVoltage &&
           (sensor.driver == "amdgpu" || sensor.driver == "nouveau");
}

bool isCardEnergy(const HwmonSensor& sensor) {
    return sensor.quantity == HwmonQuantity::energy && sensor.number == 1 &&
           (sensor.driver == "i915" || sensor.driver == "xe");
}

} // namespace

class LinuxEnergyReport::Sample : public EnergySample {
public:
    struct Channel {
        std::string name;
        const char* unit;
        std::int64_t value;
    };

    explicit Sample(std::vector<Channel> channels) : channels_(std::move(channels)) {}

    int channelCount() const override { return static_cast<int>(channels_.size()); }
    std::optional<std::string_view> channelName(int channel) const override { return at(channel).name; }
    std::optional<std::string_view> unitLabel(int channel) const override { return at(channel).unit; }
    std::int64_t value(int channel) const override { return at(channel).value; }

private:
    const Channel& at(int channel) const { return channels_[static_cast<std::size_t>(channel)]; }

    std::vector<Channel> channels_;
};

LinuxEnergyReport::LinuxEnergyReport(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus)
    : root_(std::move(root)), lane_(std::move(lane)), gpus_(std::move(gpus)) {}

bool LinuxEnergyReport::load() {
    if (!isLoaded_) {
        isLoaded_ = true;
        addDrivers();
        addZones();
        addNvidia();
    }
    return !sources_.empty();
}

bool LinuxEnergyReport::subscribe() {
    return load();
}

void LinuxEnergyReport::addDrivers() {
    for (const HwmonSensor& sensor : discoverHwmon(root_)) {
        const std::string name = "GPU " + sensor.driver + " " + std::string(lastPart(sensor.devicePath));
        if (isCardEnergy(sensor)) {
            auto state =
                std::make_shared<CounterState>(CounterState{.reading = sensorReading(sensor, sensor.inputPath, lane_)});
            sources_.push_back({.name = name, .total = [state](double) { return state->update(); }});
        } else if (isCardPower(sensor)) {
            auto state =
                std::make_shared<PowerState>(PowerState{.reading = sensorReading(sensor, sensor.inputPath, lane_)});
            sources_.push_back(
                {.name = name, .total = [state](double seconds) {
                     const auto microwatts = state->reading.read();
                     return state->energy.update(
                         microwatts ? std::optional(static_cast<double>(*microwatts) / 1e6) : std::nullopt, seconds);
                 }});
        }
    }
}

void LinuxEnergyReport::addZones() {
    for (const PowercapZone& zone : discoverPowercap(root_)) {
        if (zone.name != "uncore")
            continue;
        const auto file = std::make_shared<SensorFile>(zone.energyPath);
        auto state = std::make_shared<CounterState>(
            CounterState{.reading = {lane_, [file] { return file->readNumber(); }}, .range = zone.range});
        sources_.push_back({.name = "GPU uncore " + zone.zone, .total = [state](double) { return state->update(); }});
    }
}

void LinuxEnergyReport::addNvidia() {
    const std::size_t count = gpus_ ? gpus_->addresses().size() : 0;
    struct State {
        SteadyCounter counter;
        EnergyFromPower energy;
        std::int64_t total = 0;
    };
    for (std::size_t place = 0; place < count; ++place)
        sources_.push_back({.name = "GPU nvidia " + gpus_->addresses()[place],
                            .unit = "mJ",
                            .total = [gpus = gpus_, place, state = std::make_shared<State>()](double seconds) {
                                const auto& reading = gpus->readings()[place];
                                if (reading && reading->totalMillijoules) {
                                    state->total = state->counter.update(*reading->totalMillijoules);
                                    return state->total;
                                }
                                const auto milliwatts = reading ? reading->milliwatts : std::nullopt;
                                const std::int64_t microjoules = state->energy.update(
                                    milliwatts ? std::optional(static_cast<double>(*milliwatts) / 1e3) : std::nullopt,
                                    seconds);
                                return state->total + microjoules / 1000;
                            }});
}

std::unique_ptr<EnergySample> LinuxEnergyReport::sample() {
    if (!load())
        return nullptr;
    const double now = lane_->now();
    std::vector<Sample::Channel> channels;
    for (const Source& source : sources_)
        channels.push_back({.name = source.name, .unit = source.unit, .value = source.total(now)});
    return std::make_unique<Sample>(std::move(channels));
}

} // namespace vantoro
