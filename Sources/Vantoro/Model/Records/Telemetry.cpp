#include "Model/Records/Telemetry.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace vantoro {

namespace {

double greatestFanLoad(const std::vector<FanReading>& fans) {
    double load = 0;
    for (const FanReading& fan : fans) {
        const double span = fan.maxRPM - fan.minRPM;
        if (span > 1.0)
            load = std::max(load, std::clamp((fan.rpm - fan.minRPM) / span, 0.0, 1.0));
    }
    return load;
}

double highestSpeed(const std::vector<FanReading>& fans) {
    std::optional<double> own;
    std::optional<double> others;
    for (const FanReading& fan : fans) {
        std::optional<double>& highest = fan.name.empty() || fan.maxRPM > 0 ? own : others;
        if (!highest || *highest < fan.rpm)
            highest = fan.rpm;
    }
    return own.value_or(others.value_or(0));
}

double roundedTo(double step, double value) {
    return std::round(value / step) * step;
}

double roundedToHalf(double value) {
    return std::round(2 * value) * 0.5;
}

} // namespace

std::string FanReading::label(SystemKind system) const {
    if (!name.empty())
        return name;
    if (system == SystemKind::macos && (index == 0 || index == 1))
        return index == 0 ? "Left" : "Right";
    return fmt::format("Fan {}", std::int64_t{index} + 1);
}

std::optional<ThermalPressure> thermalPressure(int rawValue) {
    if (rawValue < 0 || rawValue > 3)
        return std::nullopt;
    return static_cast<ThermalPressure>(rawValue);
}

double Snapshot::fanLoad() const {
    return greatestFanLoad(fans);
}

double Snapshot::peakRPM() const {
    return highestSpeed(fans);
}

double Snapshot::heatLoad(double celsius) {
    struct Point {
        double celsius;
        double load;
    };
    static constexpr std::array<Point, 6> curve{{{35, 0}, {50, 0.06}, {65, 0.22}, {80, 0.48}, {90, 0.78}, {100, 1.0}}};
    if (!(celsius > curve.front().celsius))
        return 0;
    for (std::size_t i = 1; i < curve.size(); ++i) {
        const Point& low = curve[i - 1];
        const Point& high = curve[i];
        if (celsius <= high.celsius)
            return low.load + (celsius - low.celsius) / (high.celsius - low.celsius) * (high.load - low.load);
    }
    return 1.0;
}

Vitals Vitals::quantising(const Snapshot& snapshot) {
    Vitals vitals;
    vitals.fans = snapshot.fans;
    for (FanReading& fan : vitals.fans) {
        fan.rpm = roundedTo(10, fan.rpm);
        fan.targetRPM = roundedTo(10, fan.targetRPM);
    }
    for (const TemperatureFigure& figure : temperatureFigures)
        vitals.temps.*figure.celsius = std::round(snapshot.temps.*figure.celsius);
    vitals.power = {.systemWatts = roundedToHalf(snapshot.power.systemWatts),
                    .adapterWatts = roundedToHalf(snapshot.power.adapterWatts),
                    .batteryWatts = roundedTo(0.1, snapshot.power.batteryWatts),
                    .gpuWatts = roundedTo(0.1, snapshot.power.gpuWatts)};
    if (snapshot.power.cpuWatts)
        vitals.power.cpuWatts = roundedToHalf(*snapshot.power.cpuWatts);
    vitals.cpu = {.userPercent = std::round(snapshot.cpu.userPercent),
                  .systemPercent = std::round(snapshot.cpu.systemPercent),
                  .idlePercent = std::round(snapshot.cpu.idlePercent),
                  .loadAverage = roundedTo(0.1, snapshot.cpu.loadAverage)};
    vitals.memory = snapshot.memory;
    vitals.thermalPressure = snapshot.thermalPressure;
    return vitals;
}

double Vitals::fanLoad() const {
    return greatestFanLoad(fans);
}

double Vitals::peakRPM() const {
    return highestSpeed(fans);
}

} // namespace vantoro
