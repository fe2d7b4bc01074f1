#include "Platform/Simulated/ThermalModel.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace vantoro {

namespace {

constexpr double step = thermalStepSeconds;

struct CurvePoint {
    double at;
    double value;
};

/// A line through the points, level before the first and after the last.
double onCurve(std::span<const CurvePoint> curve, double at) {
    if (at <= curve.front().at)
        return curve.front().value;
    for (std::size_t i = 1; i < curve.size(); ++i)
        if (at <= curve[i].at) {
            const CurvePoint& from = curve[i - 1];
            return from.value + (at - from.at) / (curve[i].at - from.at) * (curve[i].value - from.value);
        }
    return curve.back().value;
}

void follow(double& value, double target, double lagSeconds) {
    value += (target - value) * step / (step + lagSeconds);
}

/// Watts while this share of the cores' time is busy: voltage falls with the clock, and counts squared.
double clusterWatts(const ClusterDesign& design, const ClusterState& state) {
    const double clock = design.megahertz[state.performanceState] / design.megahertz.back();
    const double voltage = 0.55 + 0.45 * clock;
    return design.fullWatts * state.busy * clock * voltage * voltage;
}

void stepCluster(ClusterState& state, double busy, double ceiling) {
    state.busy = busy;
    follow(state.wanted, std::min(1.0, busy * 1.4), 0.4);
    const double highest = static_cast<double>(state.busySeconds.size() - 1);
    state.performanceState = static_cast<std::size_t>(
        std::min(std::round(state.wanted * highest), std::floor(std::max(ceiling, 0.0) * highest)));
    state.busySeconds[state.performanceState] += busy * step;
    state.idleSeconds += (1 - busy) * step;
}

void stepFans(const ThermalDesign& design, ThermalModelState& state) {
    static constexpr std::array<CurvePoint, 5> effort{{{58, 0}, {72, 0.2}, {85, 0.55}, {94, 0.85}, {99, 1}}};
    constexpr double fastestRise = 90;
    constexpr double fastestFall = 40;
    follow(state.controllerCelsius, state.hottestCelsius, 5);
    for (std::size_t i = 0; i < state.fans.size(); ++i) {
        const FanDesign& fan = design.fans[i];
        FanState& now = state.fans[i];
        now.targetRPM = fan.minRPM + onCurve(effort, state.controllerCelsius) * (fan.maxRPM - fan.minRPM);
        now.rpm += std::clamp((now.targetRPM - now.rpm) * step / 2, -fastestFall * step, fastestRise * step);
    }
}

/// The fans' mean speed as a share of the highest.
double airflow(const ThermalDesign& design, const ThermalModelState& state) {
    double sum = 0;
    for (std::size_t i = 0; i < state.fans.size(); ++i)
        sum += state.fans[i].rpm / design.fans[i].maxRPM;
    return state.fans.empty() ? 0 : sum / static_cast<double>(state.fans.size());
}

void stepPressure(ThermalModelState& state) {
    // What has to be reached for each judgement; it is kept until the strain falls well below.
    static constexpr std::array<double, 3> thresholds{0.04, 0.14, 0.4};
    constexpr double hysteresis = 0.6;
    follow(state.strain, 1 - state.ceiling, 45);
    while (state.pressure < 3 && state.strain >= thresholds[static_cast<std::size_t>(state.pressure)])
        ++state.pressure;
    while (state.pressure > 0 && state.strain < hysteresis * thresholds[static_cast<std::size_t>(state.pressure - 1)])
        --state.pressure;
}

/// The performance states are taken away from just below the limit, the more the further above.
void stepCeiling(const ThermalDesign& design, ThermalModelState& state) {
    const double excess = state.hottestCelsius - (design.limitCelsius - 2);
    follow(state.ceiling, std::clamp(1 - 0.1 * excess, 0.25, 1.0), 1);
}

void stepPower(const ThermalDesign& design, ThermalModelState& state, double load) {
    const double cpuWatts = clusterWatts(design.performance, state.performance) +
                            clusterWatts(design.efficiency, state.efficiency) + design.fabricIdleWatts +
                            load * (design.fabricFullWatts - design.fabricIdleWatts);
    follow(state.gpuWatts, design.gpuIdleWatts + load * (design.gpuFullWatts - design.gpuIdleWatts), 3);
    state.chipWatts = cpuWatts + state.gpuWatts;
    state.cpuJoules += cpuWatts * step;
    state.gpuJoules += state.gpuWatts * step;
    state.systemWatts =
        state.chipWatts + design.restWatts +
        design.fanFullWatts * static_cast<double>(state.fans.size()) * std::pow(airflow(design, state), 3);
}

/// The charger feeds the machine first and the battery with what is left; the battery makes good what is wanting.
void stepBattery(const ThermalDesign& design, ThermalModelState& state) {
    constexpr double taperFrom = 0.8;
    constexpr double leastWatts = 0.3;
    double charging = 0.5 * design.batteryWattHours * std::min(1.0, (1 - state.batteryCharge) / (1 - taperFrom));
    if (charging < leastWatts)
        charging = 0;
    state.adapterWatts = std::min(design.adapterWatts, state.systemWatts + charging);
    state.batteryWatts = state.systemWatts - state.adapterWatts;
    if (design.batteryWattHours > 0)
        state.batteryCharge =
            std::clamp(state.batteryCharge - state.batteryWatts * step / (3600 * design.batteryWattHours), 0.0, 1.0);
    const double warmest = design.ambientCelsius + 0.35 * (state.caseCelsius - design.ambientCelsius) +
                           0.15 * std::abs(state.batteryWatts);
    follow(state.batteryCelsius, warmest, 900);
}

void stepHeat(const ThermalDesign& design, ThermalModelState& state) {
    const double intoCase = (state.chipCelsius - state.caseCelsius) / design.chipToCaseKelvinPerWatt;
    const double conductance =
        design.stillAirWattsPerKelvin + design.fanWattsPerKelvin * std::pow(airflow(design, state), 0.8);
    const double intoAir = (state.caseCelsius - design.ambientCelsius) * conductance;
    state.chipCelsius += (state.chipWatts - intoCase) * step / design.chipJoulesPerKelvin;
    state.caseCelsius += (intoCase + design.restWatts - intoAir) * step / design.caseJoulesPerKelvin;
    state.hottestCelsius = state.chipCelsius + design.spotKelvin + design.spotKelvinPerWatt * state.chipWatts;
    state.surfaceCelsius = design.ambientCelsius + design.surfaceShare * (state.caseCelsius - design.ambientCelsius);
}

void takeStep(const ThermalDesign& design, ThermalModelState& state, double load) {
    // Light work goes to the efficiency cores; the others join in for the rest.
    stepCluster(state.efficiency, std::min(1.0, 3 * load), 1);
    stepCluster(state.performance, std::clamp((load - 0.05) / 0.95, 0.0, 1.0), state.ceiling);
    stepPower(design, state, load);
    stepHeat(design, state);
    stepFans(design, state);
    stepCeiling(design, state);
    stepPressure(state);
    stepBattery(design, state);
    ++state.steps;
}

} // namespace

ThermalDesign ThermalDesign::withFans() {
    return {.performance = {.megahertz = {600, 948, 1296, 1644, 1968, 2268, 2544, 2796, 3024, 3216, 3396, 3504},
                            .fullWatts = 42},
            .efficiency = {.megahertz = {600, 912, 1224, 1536, 1824, 2064, 2304, 2424}, .fullWatts = 4},
            .fabricIdleWatts = 3.5,
            .fabricFullWatts = 6,
            .gpuIdleWatts = 0.1,
            .gpuFullWatts = 1.6,
            .restWatts = 7,
            .fanFullWatts = 1.5,
            .chipJoulesPerKelvin = 22,
            .caseJoulesPerKelvin = 150,
            .chipToCaseKelvinPerWatt = 0.75,
            .stillAirWattsPerKelvin = 0.18,
            .fanWattsPerKelvin = 2.6,
            .spotKelvin = 4,
            .spotKelvinPerWatt = 0.08,
            .surfaceShare = 0.45,
            .fans = {{1350, 5900}, {1350, 6200}},
            .batteryWattHours = 70,
            .adapterWatts = 96};
}

ThermalDesign ThermalDesign::fanless() {
    ThermalDesign design = withFans();
    design.performance.fullWatts = 20;
    design.fabricIdleWatts = 2;
    design.fabricFullWatts = 4;
    design.gpuFullWatts = 1.2;
    design.restWatts = 3;
    design.chipJoulesPerKelvin = 12;
    design.caseJoulesPerKelvin = 350;
    design.chipToCaseKelvinPerWatt = 1.9;
    design.stillAirWattsPerKelvin = 0.83;
    design.fanWattsPerKelvin = 0;
    design.surfaceShare = 0.7;
    design.fans.clear();
    design.batteryWattHours = 52;
    design.adapterWatts = 35;
    return design;
}

ThermalModelState restingState(const ThermalDesign& design) {
    ThermalModelState state;
    state.performance.busySeconds.resize(design.performance.megahertz.size());
    state.efficiency.busySeconds.resize(design.efficiency.megahertz.size());
    for (const FanDesign& fan : design.fans)
        state.fans.push_back({fan.minRPM, fan.minRPM});
    state.chipCelsius = state.caseCelsius = state.batteryCelsius = design.ambientCelsius;
    state.hottestCelsius = state.controllerCelsius = design.ambientCelsius;
    const double charge = state.batteryCharge;
    advance(design, state, 0, 3600);
    // The battery has not been charged all the while, and the past is not to be seen in the counters.
    state.batteryCharge = charge;
    advance(design, state, 0, 1);
    state.performance.busySeconds.assign(state.performance.busySeconds.size(), 0);
    state.efficiency.busySeconds.assign(state.efficiency.busySeconds.size(), 0);
    state.performance.idleSeconds = state.efficiency.idleSeconds = 0;
    state.batteryCharge = charge;
    state.cpuJoules = state.gpuJoules = 0;
    state.steps = 0;
    state.pendingSeconds = state.pendingLoadSeconds = 0;
    return state;
}

void advance(const ThermalDesign& design, ThermalModelState& state, double load, double seconds) {
    if (!(seconds > 0))
        return;
    seconds = std::min(seconds, longestAdvanceSeconds);
    load = load > 0 ? std::min(load, 1.0) : 0;
    state.pendingSeconds += seconds;
    state.pendingLoadSeconds += load * seconds;
    // Sums of short times miss a whole step by a rounding error.
    constexpr double tolerance = 1e-9;
    while (state.pendingSeconds >= step - tolerance) {
        // What was pending comes first, with its own load; all after it is this call's.
        const double later = std::max(0.0, state.pendingSeconds - step);
        const double loadSeconds = std::max(0.0, state.pendingLoadSeconds - load * later);
        takeStep(design, state, std::min(1.0, loadSeconds / step));
        state.pendingSeconds = later;
        state.pendingLoadSeconds = load * later;
    }
}

} // namespace vantoro
