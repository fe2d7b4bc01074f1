// The lowest and the highest that every figure has been since launch, rounded as it is shown. Costs a handful of
// comparisons per tick.
#pragma once

#include "Model/Records/Telemetry.h"

#include <array>
#include <map>
#include <optional>

namespace vantoro {

struct Span {
    double lowest = 0;
    double highest = 0;

    bool operator==(const Span&) const = default;
};

/// A figure that has never been read has no span.
struct Extremes {
    /// By the fan's index; a fan that stands still counts.
    std::map<int, Span> fans;
    /// In the order of their table.
    std::array<std::optional<Span>, temperatureFigures.size()> temps;
    std::optional<Span> systemWatts;
    std::optional<Span> adapterWatts;
    std::optional<Span> batteryWatts;
    std::optional<Span> gpuWatts;

    void add(const Snapshot& snapshot);
    /// Whether any figure was ever made of the family's sensors.
    bool has(SensorFamily family) const;

    bool operator==(const Extremes&) const = default;
};

} // namespace vantoro
