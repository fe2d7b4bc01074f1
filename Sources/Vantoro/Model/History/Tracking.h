// What is kept of the readings as they come by: the chip's smoothed heat, the extremes of every figure, the single
// sensors as they are shown, the highest frequencies seen.
#pragma once

#include "Model/Records/Telemetry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace vantoro {

/// The chip's temperature as a person would feel it: an exponential moving average that weighs by elapsed time, so that
/// it is the same at any sampling interval.
class HeatSmoothing {
public:
    static constexpr double timeConstantSeconds = 8;

    /// The smoothed temperature after a new reading, in degrees Celsius. A reading of 0 or less (none) changes nothing
    /// and gives the last value, 0 at first; a clock that stepped backwards leaves the value as it was.
    double smoothed(UnixSeconds at, double celsius);

private:
    struct Heat {
        double celsius = 0;
        UnixSeconds at = 0;
    };

    std::optional<Heat> heat_;
};

struct Span {
    double lowest = 0;
    double highest = 0;

    bool operator==(const Span&) const = default;
};

/// The lowest and the highest that every figure has been since launch, rounded as it is shown. A figure that has never
/// been read has no span. Costs a handful of comparisons per tick.
struct Extremes {
    /// By the fan's index; a fan that stands still counts.
    std::map<int, Span> fans;
    /// In the order of their table.
    std::array<std::optional<Span>, temperatureFigures.size()> temps;
    std::optional<Span> systemWatts;
    std::optional<Span> adapterWatts;
    std::optional<Span> batteryWatts;
    std::optional<Span> gpuWatts;
    std::optional<Span> cpuWatts;

    void add(const Snapshot& snapshot);
    /// Whether any figure was ever made of the family's sensors.
    bool has(SensorFamily family) const;

    bool operator==(const Extremes&) const = default;
};

/// The single sensors of one family as they are shown: of several looks at them, the last that was whole.
class SingleSensors {
public:
    /// A reading of so many sensors is whole, however many there are.
    explicit SingleSensors(std::size_t enough) : enough_(enough) {}

    /// Ascending, degrees Celsius.
    const std::vector<double>& celsius() const { return celsius_; }
    /// They were looked at long enough to say that none of them measures.
    bool areSilent() const { return isSettled_ && celsius_.empty(); }

    /// Takes a look at a family of `known` sensors; none when nobody knows how many there are. A reading that misses
    /// more than half of them is a partial one and leaves the one before in place, so that the figures do not flicker,
    /// until it comes so often that it is all there is. True when the reading was taken.
    bool look(std::vector<double> reading, std::optional<std::size_t> known);
    /// Takes a reading as it stands, as a recording holds it; none when it holds none.
    void set(std::optional<std::vector<double>> reading);

private:
    std::size_t enough_;
    std::vector<double> celsius_;
    int partialLooks_ = 0;
    bool isSettled_ = false;
};

/// Up to which frequency the cores of each kind go. A boost may go beyond what the processor announces: then what was
/// seen is the limit.
class CoreCeilings {
public:
    void see(const std::vector<Core>& cores) {
        for (const Core& core : cores) {
            double& highest = core.isPerformance ? performance_ : efficiency_;
            highest = std::max(highest, core.megahertz);
        }
    }

    /// In MHz; 0 where nothing is announced, for what was seen so far is no limit then.
    double of(bool isPerformance, double announced) const {
        return announced > 0 ? std::max(announced, isPerformance ? performance_ : efficiency_) : 0;
    }

private:
    double performance_ = 0;
    double efficiency_ = 0;
};

} // namespace vantoro
