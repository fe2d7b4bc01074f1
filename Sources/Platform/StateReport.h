// How long each processor core has spent in each of its performance states.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace vantoro {

/// The counters at one moment. Views are valid as long as the sample. Indices run below the counts.
class StateSample {
public:
    virtual ~StateSample() = default;

    virtual int channelCount() const = 0;
    /// The core's name: "ECPU…" for an efficiency core, "PCPU…" for a performance core, "MCPU…" for one between them.
    /// None when it is no text.
    virtual std::optional<std::string_view> channelName(int channel) const = 0;
    virtual int stateCount(int channel) const = 0;
    /// Cumulative, in a unit of the source's own.
    virtual std::uint64_t residency(int channel, int state) const = 0;
    /// "V" and the state's position in the frequency table; other names are states without a frequency (idle, off).
    virtual std::optional<std::string_view> stateName(int channel, int state) const = 0;
};

/// Used from one thread at a time.
class StateReport {
public:
    virtual ~StateReport() = default;

    /// Makes the source usable at all (loads its library). False when it is not there.
    virtual bool load() = 0;
    /// Subscribes to the cores' performance states, for the life of the process. False when there are none.
    virtual bool subscribe() = 0;
    /// Null when no sample can be taken.
    virtual std::unique_ptr<StateSample> sample() = 0;
};

} // namespace vantoro
