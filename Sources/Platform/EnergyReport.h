// How much energy the chip's blocks have used.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace vantoro {

/// The counters at one moment. Views are valid as long as the sample. Indices run below the count.
class EnergySample {
public:
    virtual ~EnergySample() = default;

    virtual int channelCount() const = 0;
    /// A name that contains "GPU" is the graphics processor's, and "GPU Energy" the whole of it. None when it is no
    /// text.
    virtual std::optional<std::string_view> channelName(int channel) const = 0;
    /// "nJ", "uJ", "mJ" or "J"; others are not understood.
    virtual std::optional<std::string_view> unitLabel(int channel) const = 0;
    /// Cumulative.
    virtual std::int64_t value(int channel) const = 0;
};

/// Used from one thread at a time.
class EnergyReport {
public:
    virtual ~EnergyReport() = default;

    /// Makes the source usable at all (loads its library). False when it is not there.
    virtual bool load() = 0;
    /// Subscribes to the energy counters, for the life of the process. False when there are none.
    virtual bool subscribe() = 0;
    /// Null when no sample can be taken.
    virtual std::unique_ptr<EnergySample> sample() = 0;
};

} // namespace vantoro
