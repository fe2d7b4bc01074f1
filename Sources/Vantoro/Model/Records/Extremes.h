// The lowest and the highest that every figure has been since launch, rounded as it is shown. Costs a handful of
// comparisons per tick.
#pragma once

#include "Model/Records/Telemetry.h"

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
    std::optional<Span> soc;
    std::optional<Span> socMean;
    std::optional<Span> gpu;
    std::optional<Span> battery;
    std::optional<Span> enclosure;
    std::optional<Span> systemWatts;
    std::optional<Span> adapterWatts;
    std::optional<Span> batteryWatts;
    std::optional<Span> gpuWatts;

    void add(const Snapshot& snapshot);

    bool operator==(const Extremes&) const = default;
};

} // namespace vantoro
