// What a graphics driver says of one of its clients in /proc/PID/fdinfo/FD, and the share of its engines that follows.
// Layout: Documentation/gpu/drm-usage-stats.rst in the kernel's sources.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// Whether an open file's name is that of a card that renders ("/dev/dri/renderD128", "/dev/dri/card0"), as that of a
/// file in a container may be behind other folders. Gives the node's own name; empty for any other.
std::string_view graphicsNode(std::string_view openFile);

/// One engine, or a group of engines that are alike. A driver gives the time worked, or cycles.
struct DrmEngine {
    /// A view into the bytes parsed, as are all texts.
    std::string_view name;
    std::optional<std::uint64_t> nanoseconds = {};
    std::optional<std::uint64_t> cycles = {};
    /// The cycles that went by while it worked and rested.
    std::optional<std::uint64_t> totalCycles = {};
    std::optional<std::uint64_t> mostHertz = {};
    /// How many they are; never 0.
    std::uint64_t capacity = 1;

    bool operator==(const DrmEngine&) const = default;
};

struct DrmUsage {
    std::string_view driver;
    /// The device's PCI address; empty where it has none.
    std::string_view address;
    std::uint64_t client = 0;
    /// In the order in which they were first named, no more than 64.
    std::vector<DrmEngine> engines = {};

    /// Whether engines are named only once they have worked.
    bool namesWorkersOnly() const { return driver == "amdgpu"; }
    /// Whether it can be known what was done: some drivers know clients but not their work, or only when told to
    /// measure it.
    bool tellsWork() const;
    bool operator==(const DrmUsage&) const = default;
};

/// The last line counts only with its end: it may have been cut. None without a driver and a client's number.
std::optional<DrmUsage> parseDrmUsage(std::string_view text);

/// The counters of one client from reading to reading.
class DrmMeter {
public:
    struct Share {
        std::string engine;
        /// 0 to 100.
        double percent = 0;
    };

    /// `seconds` is when it was read. A counter that went back stands still until it has caught up; if it does not
    /// within three readings, it was begun anew.
    void take(const DrmUsage& usage, double seconds);
    /// Whether two readings have told its work.
    bool isKnown() const { return isKnown_; }
    /// Of the engines that worked, between the last two readings.
    const std::vector<Share>& shares() const { return shares_; }
    /// It slept: nothing was done.
    void setIdle() { shares_.clear(); }

private:
    struct Engine {
        std::string name;
        std::uint64_t worked = 0;
        std::uint64_t total = 0;
        int readingsBehind = 0;
    };

    std::optional<double> share(Engine& engine, const DrmEngine& now, double seconds);

    std::vector<Engine> engines_;
    std::vector<Share> shares_;
    std::optional<double> takenAt_;
    bool isKnown_ = false;
};

} // namespace vantoro
