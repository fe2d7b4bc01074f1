#include "Model/Extremes.h"

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
    for (const FanReading& fan : snapshot.fans)
        widen(fans.try_emplace(fan.index, Span{.lowest = fan.rpm, .highest = fan.rpm}).first->second, fan.rpm);
    widen(soc, snapshot.temps.soc);
    widen(socMean, snapshot.temps.socMean);
    widen(gpu, snapshot.temps.gpu);
    widen(battery, snapshot.temps.battery);
    widen(enclosure, snapshot.temps.enclosure);
    widen(systemWatts, snapshot.power.systemWatts);
    widen(adapterWatts, snapshot.power.adapterWatts);
    widen(batteryWatts, snapshot.power.batteryWatts);
    widen(gpuWatts, snapshot.power.gpuWatts);
}

} // namespace vantoro
