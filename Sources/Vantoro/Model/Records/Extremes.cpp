#include "Model/Records/Extremes.h"

#include <algorithm>
#include <cmath>

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
}

bool Extremes::has(SensorFamily family) const {
    for (std::size_t i = 0; i < temps.size(); ++i)
        if (temps[i] && temperatureFigures[i].family == family)
            return true;
    return false;
}

} // namespace vantoro
