#include "Model/History/Tracking.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantoro {

namespace {

void widen(Span& span, double value) {
    span.lowest = std::min(span.lowest, value);
    span.highest = std::max(span.highest, value);
}

/// In a record 0 stands for no reading; only the battery's power may be below.
void widen(std::optional<Span>& span, double value) {
    if (value == 0 || !std::isfinite(value))
        return;
    if (span)
        widen(*span, value);
    else
        span = Span{.lowest = value, .highest = value};
}

} // namespace

void Extremes::add(const Snapshot& snapshot) {
    // As they are shown: or the highest of all could be below what stands beside it.
    const Vitals shown = Vitals::quantising(snapshot);
    for (const FanReading& fan : shown.fans)
        widen(fans.try_emplace(fan.index, Span{.lowest = fan.rpm, .highest = fan.rpm}).first->second, fan.rpm);
    for (std::size_t i = 0; i < temps.size(); ++i)
        widen(temps[i], shown.temps.*temperatureFigures[i].celsius);
    widen(systemWatts, shown.power.systemWatts);
    widen(adapterWatts, shown.power.adapterWatts);
    widen(batteryWatts, shown.power.batteryWatts);
    widen(gpuWatts, shown.power.gpuWatts);
    widen(cpuWatts, shown.power.cpuWatts.value_or(0));
}

bool Extremes::has(SensorFamily family) const {
    for (std::size_t i = 0; i < temps.size(); ++i)
        if (temps[i] && temperatureFigures[i].family == family)
            return true;
    return false;
}

double HeatSmoothing::smoothed(UnixSeconds at, double celsius) {
    if (!(celsius > 0))
        return heat_ ? heat_->celsius : 0;
    if (!heat_) {
        heat_ = {.celsius = celsius, .at = at};
        return celsius;
    }
    const double elapsed = at - heat_->at;
    const double weight = elapsed >= 0 ? 1 - std::exp(-elapsed / timeConstantSeconds) : 0;
    heat_ = {.celsius = heat_->celsius + (celsius - heat_->celsius) * weight, .at = at};
    return heat_->celsius;
}

bool SingleSensors::look(std::vector<double> reading, std::optional<std::size_t> known) {
    constexpr int partialLooksBelieved = 5;
    const std::size_t least = known ? std::min(enough_, (*known + 1) / 2) : enough_;
    partialLooks_ = reading.size() < least ? std::min(partialLooks_ + 1, partialLooksBelieved) : 0;
    if (partialLooks_ > 0 && partialLooks_ < partialLooksBelieved)
        return false;
    celsius_ = std::move(reading);
    isSettled_ = true;
    return true;
}

void SingleSensors::set(std::optional<std::vector<double>> reading) {
    isSettled_ = reading.has_value();
    partialLooks_ = 0;
    celsius_ = std::move(reading).value_or(std::vector<double>());
    // What is drawn of it begins with the coolest, whoever wrote it.
    std::ranges::sort(celsius_);
}

} // namespace vantoro
