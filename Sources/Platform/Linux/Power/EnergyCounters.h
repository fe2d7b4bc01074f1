// Energy counters: those of processor packages, graphics parts and whole platforms under /sys/class/powercap, and the
// arithmetic that turns energy and power into one another (pure: time is an argument). Layout:
// Documentation/power/powercap/powercap.rst in the kernel's sources.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// A cumulative counter that neither wraps nor goes back, made of one that does.
class SteadyCounter {
public:
    /// The sum of all that was counted since the first value, and that first value. `range` is the counter's greatest
    /// value, after which it starts at 0 again; without one a smaller value is a counter that was reset, which adds
    /// nothing.
    std::int64_t update(std::int64_t raw, std::optional<std::int64_t> range = {});

private:
    std::optional<std::int64_t> last_;
    std::int64_t total_ = 0;
};

/// Watts from a counter in microjoules: what was used since the reading before, over the time since.
class PowerFromEnergy {
public:
    /// None for the first reading. A reading within 50 ms of the one before gives that one's watts again.
    std::optional<double> update(std::int64_t microjoules, std::optional<std::int64_t> range, double seconds);

private:
    SteadyCounter counter_;
    std::optional<double> since_;
    std::int64_t total_ = 0;
    std::optional<double> watts_;
};

/// Microjoules from a power that is looked at now and then: between two looks it was the mean of both.
class EnergyFromPower {
public:
    /// No power (the device sleeps, or does not answer) counts as 0.
    std::int64_t update(std::optional<double> watts, double seconds);

private:
    double microjoules_ = 0;
    double watts_ = 0;
    std::optional<double> since_;
};

struct PowercapZone {
    /// What the zone measures: "package-0", "core", "uncore", "dram", "psys".
    std::string name;
    /// The folder's name: "intel-rapl:0:1".
    std::string zone;
    /// The counter's file, in microjoules.
    std::string energyPath;
    /// The counter's greatest value.
    std::optional<std::int64_t> range;

    bool operator==(const PowercapZone&) const = default;
};

/// The zones whose counter may be read (most systems keep it from ordinary users). A domain that two interfaces show
/// (the processor's registers and its memory-mapped ones) is there once; sub-zones of several packages are all there.
std::vector<PowercapZone> discoverPowercap(const std::string& root);

} // namespace vantoro
