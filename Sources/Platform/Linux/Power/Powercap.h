// The energy counters of processor packages, graphics parts and whole platforms under /sys/class/powercap. Layout:
// Documentation/power/powercap/powercap.rst in the kernel's sources.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

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
