// How busy the graphics devices are and what slows them down, from what their drivers tell every user.
#pragma once

#include "Model/Records/Telemetry.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <bitset>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// By the values of ThrottleReason.
using ThrottleReasons = std::bitset<5>;
inline std::size_t bitOf(ThrottleReason reason) {
    return static_cast<std::size_t>(reason);
}

struct GraphicsReading {
    /// 0 to 100, of the busiest; a device that sleeps is not busy. None where no device tells.
    std::optional<double> busyPercent;
    /// Of all devices; none where no device tells.
    std::optional<ThrottleReasons> reasons;
    /// The share of the time in which one was awake that does not tell how busy it is; the highest.
    std::optional<double> awakePercent = {};

    void add(const GraphicsReading& other);
    bool operator==(const GraphicsReading&) const = default;
};

/// The cards of /sys/class/drm:
///   amdgpu     gpu_busy_percent, and the limiters in gpu_metrics (format 1.3, 2.2 to 2.4)
///   i915, xe   gt/gtN/throttle_reason_*, device/tileN/gtM/freq0/throttle/*; they tell no busy share to every user, but
///              for how long a part slept: gt/gtN/rc6_residency_ms, device/tileN/gtM/gtidle/idle_residency_ms
///   v3d        gpu_stats
/// those of boards whose drivers scale their clock (/sys/class/devfreq): "load", in per cent, or in per mille on a
/// Jetson; and NVIDIA's through its library. A card that sleeps is not woken, and one that may fall asleep is left to
/// (DeviceRest), unless it shows a picture or is busy, which keep it awake anyhow.
class GraphicsDevices {
public:
    /// `gpus` may be null.
    GraphicsDevices(const std::string& root, const std::shared_ptr<SlowLane>& lane, std::shared_ptr<NvidiaGPUs> gpus);

    GraphicsReading read();

private:
    void addBoards(const std::string& root, const std::shared_ptr<SlowLane>& lane);

    std::vector<LanedReading<GraphicsReading>> cards_;
    std::shared_ptr<NvidiaGPUs> gpus_;
};

/// The limiters at work according to amdgpu's gpu_metrics, whatever the bytes; none in formats that have no list that
/// is alike for all chips. Some chips report a limiter of temperature at any heat: only at 90 °C and above it counts.
std::optional<ThrottleReasons> parseGpuMetrics(std::string_view bytes);

/// "45@600000000Hz" or "450" (per mille) as per cent; none for anything else.
std::optional<double> parseBoardLoad(std::string_view text);

/// The reasons in NVIDIA's list of clock events.
ThrottleReasons nvidiaReasons(std::uint64_t events);

/// v3d's gpu_stats: for each queue a moment and the time it has worked by then, both in nanoseconds.
struct QueueTimes {
    std::int64_t now = 0;
    std::int64_t worked = 0;

    bool operator==(const QueueTimes&) const = default;
};
std::vector<QueueTimes> parseQueueTimes(std::string_view text);
/// The share of the busiest queue, 0 to 100; none when no time went by.
std::optional<double> busiestQueue(const std::vector<QueueTimes>& before, const std::vector<QueueTimes>& now);

} // namespace vantoro
