// NVIDIA's graphics processors, asked only while they are awake.
#pragma once

#include "Platform/Linux/Power/Nvml.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// How long a device that may fall asleep is left alone between two looks: each look keeps it awake for a moment.
constexpr double nvidiaRestSeconds = 30;

/// The devices that the driver "nvidia" has under /sys/bus/pci. While one sleeps (power/runtime_status) it has no
/// reading, and the library is closed unless another device needs it. A device that may fall asleep (power/control
/// "auto") is looked at once in nvidiaRestSeconds and the library closed behind it; its last reading holds in between,
/// as long as it stays awake.
class NvidiaGPUs {
public:
    NvidiaGPUs(const std::string& root, std::shared_ptr<Nvml> nvml, const std::shared_ptr<SlowLane>& lane);

    /// Addresses in natural order ("0000:01:00.0").
    const std::vector<std::string>& addresses() const { return addresses_; }
    /// One per address. Read at most once in 200 ms: temperature and energy are asked for apart.
    const std::vector<std::optional<NvmlReading>>& readings();

private:
    std::shared_ptr<SlowLane> lane_;
    std::vector<std::string> addresses_;
    std::optional<LanedReading<std::vector<std::optional<NvmlReading>>>> reading_;
    std::vector<std::optional<NvmlReading>> last_;
    std::optional<double> readAt_;
};

} // namespace vantoro
