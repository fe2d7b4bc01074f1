// How a computer warms up and cools down, in plain arithmetic: a chip and a case with their heat capacities, air and
// fans that carry the heat away, performance states that follow the load, a ceiling on them where the chip gets too
// hot, and a battery with its charger. No clock, no system, no chance: the same load gives the same state.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantoro {

/// Processor cores that share a clock. At least one performance state.
struct ClusterDesign {
    /// The clock in each performance state, ascending.
    std::vector<double> megahertz;
    /// What all of its cores draw when busy at the highest clock.
    double fullWatts = 0;
};

struct FanDesign {
    double minRPM = 0;
    double maxRPM = 0;
};

/// What stays the same while the machine runs.
struct ThermalDesign {
    ClusterDesign performance;
    ClusterDesign efficiency;
    /// What the chip draws beside its cores: fabric and memory, and the graphics processor, each at rest and at full
    /// load.
    double fabricIdleWatts = 0;
    double fabricFullWatts = 0;
    double gpuIdleWatts = 0;
    double gpuFullWatts = 0;
    /// Display, storage and radios.
    double restWatts = 0;
    double fanFullWatts = 0;

    double ambientCelsius = 24;
    double chipJoulesPerKelvin = 0;
    double caseJoulesPerKelvin = 0;
    double chipToCaseKelvinPerWatt = 0;
    /// From the case to the air: without any fan, and what fans at their highest speed add.
    double stillAirWattsPerKelvin = 0;
    double fanWattsPerKelvin = 0;
    /// How far the hottest spot of the chip lies above its mean: at rest, and for every watt.
    double spotKelvin = 0;
    double spotKelvinPerWatt = 0;
    /// How much of the case's warmth its surface shows, 0 to 1.
    double surfaceShare = 0;
    /// The hottest spot is not to get hotter than this.
    double limitCelsius = 100;

    std::vector<FanDesign> fans;
    double batteryWattHours = 0;
    /// What the charger can deliver; 0 without one.
    double adapterWatts = 0;

    /// A portable machine with two fans, and one with none.
    static ThermalDesign withFans();
    static ThermalDesign fanless();
};

struct ClusterState {
    /// 0 to 1, of the last step.
    double busy = 0;
    /// The performance state the load asks for, as a share of the highest, 0 to 1; follows the load with a lag.
    double wanted = 0;
    std::size_t performanceState = 0;
    /// How long each core has been busy in each performance state, and how long it has been idle. Seconds.
    std::vector<double> busySeconds;
    double idleSeconds = 0;

    bool operator==(const ClusterState&) const = default;
};

struct FanState {
    double rpm = 0;
    double targetRPM = 0;

    bool operator==(const FanState&) const = default;
};

/// Everything that changes while the machine runs. Figures are those of the last step.
struct ThermalModelState {
    ClusterState performance;
    ClusterState efficiency;

    /// The chip's mean and its hottest spot.
    double chipCelsius = 0;
    double hottestCelsius = 0;
    double caseCelsius = 0;
    double surfaceCelsius = 0;
    double batteryCelsius = 0;
    std::vector<FanState> fans;
    /// The chip's temperature as the fan controller sees it, with a lag.
    double controllerCelsius = 0;
    /// The highest performance state that the heat allows, as a share of all, and the heat's pressure on the system:
    /// the part taken away, smoothed over a minute, and the judgement made of it, 0 (nominal) to 3 (critical).
    double ceiling = 1;
    double strain = 0;
    int pressure = 0;

    double chipWatts = 0;
    double gpuWatts = 0;
    double systemWatts = 0;
    double adapterWatts = 0;
    /// Above 0 while the battery gives, below while it takes: system = adapter + battery.
    double batteryWatts = 0;
    /// 0 to 1.
    double batteryCharge = 0.78;

    /// Cumulative.
    double cpuJoules = 0;
    double gpuJoules = 0;
    /// How many steps have been taken.
    std::uint64_t steps = 0;
    /// Time that does not fill a step yet, and the load in it times its seconds.
    double pendingSeconds = 0;
    double pendingLoadSeconds = 0;

    bool operator==(const ThermalModelState&) const = default;
};

inline constexpr double thermalStepSeconds = 0.1;
/// After this long under the same load nothing changes any more: a longer time is cut to it.
inline constexpr double longestAdvanceSeconds = 6 * 3600;

/// The machine after a long rest.
ThermalModelState restingState(const ThermalDesign& design);

/// Lets the machine run for this long with this share of its processors busy, 0 to 1. The time is cut into steps of its
/// own, so that it makes no difference in what portions it comes. A load that is no number counts as none, a time that
/// is none or negative as no time.
void advance(const ThermalDesign& design, ThermalModelState& state, double load, double seconds);

} // namespace vantoro
