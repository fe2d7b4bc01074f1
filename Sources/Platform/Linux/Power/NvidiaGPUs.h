// NVIDIA's graphics processors, asked only while they are awake, through the driver's management library as far as it
// is used here.
#pragma once

#include "Platform/GraphicsClients.h"
#include "Platform/Linux/Reading/LanedReading.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

struct NvmlReading {
    std::optional<double> celsius;
    /// Since the driver was loaded; newer graphics processors only.
    std::optional<std::int64_t> totalMillijoules;
    std::optional<std::int64_t> milliwatts;
    /// The share of the last moments in which it worked, 0 to 100.
    std::optional<double> busyPercent;
    /// The library's bits for what holds its clocks down.
    std::optional<std::uint64_t> clockEvents;
    /// Those it worked for since the reading before; only where that was asked for and the library knows.
    std::optional<std::vector<GraphicsShares::Program>> programs = {};

    bool operator==(const NvmlReading&) const = default;
};

/// What the library noted of a process at one moment: per cent of the time since the moment before.
struct NvmlSample {
    std::uint32_t pid = 0;
    std::uint64_t microseconds = 0;
    std::uint32_t cores = 0;
    std::uint32_t encoder = 0;
    std::uint32_t decoder = 0;
};

/// Each process's mean share of its busiest engine, by rising pid. A process is noted only when it had something done,
/// and some libraries fill the list with what is no sample: a share above 100, no process.
std::vector<GraphicsShares::Program> programsOf(const std::vector<NvmlSample>& samples);
/// With what another device did, too.
std::optional<GraphicsShares> withPrograms(std::optional<GraphicsShares> shares,
                                           const std::vector<GraphicsShares::Program>& programs);

/// Used from one thread at a time. While it is open the library may keep every device awake that it was asked about.
class Nvml {
public:
    virtual ~Nvml() = default;

    /// False when the library or its driver is not there.
    virtual bool open() = 0;
    virtual void close() = 0;
    /// The device at this address ("0000:01:00.0"). None when the library does not know it.
    virtual std::optional<NvmlReading> read(const std::string& address) = 0;
    /// What it noted of the device's processes after this moment, in no order. None when it keeps no such notes.
    virtual std::optional<std::vector<NvmlSample>> samples(const std::string& /*address*/, std::uint64_t /*after*/) {
        return {};
    }
};

/// "libnvidia-ml.so.1", loaded at the first opening.
std::shared_ptr<Nvml> systemNvml();

/// How long a device that may fall asleep is left alone between two looks: each look keeps it awake for a moment.
constexpr double nvidiaRestSeconds = 30;

/// The devices that the driver "nvidia" has under /sys/bus/pci. While one sleeps (power/runtime_status) it has no
/// reading, and the library is closed unless another device needs it. A device that may fall asleep (power/control
/// "auto") and does nothing is looked at once in nvidiaRestSeconds and the library closed behind it; its last reading
/// holds in between, as long as it stays awake.
class NvidiaGPUs {
public:
    NvidiaGPUs(const std::string& root, std::shared_ptr<Nvml> nvml, const std::shared_ptr<SlowLane>& lane);

    /// Addresses in natural order ("0000:01:00.0").
    const std::vector<std::string>& addresses() const { return addresses_; }
    /// One per address. Read at most once in 200 ms: temperature and energy are asked for apart.
    const std::vector<std::optional<NvmlReading>>& readings();
    /// Whether readings to come hold what was done for whom; at first they do not.
    void setTellsPrograms(bool tells) { *tellsPrograms_ = tells; }

private:
    std::shared_ptr<std::atomic<bool>> tellsPrograms_ = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<SlowLane> lane_;
    std::vector<std::string> addresses_;
    std::optional<LanedReading<std::vector<std::optional<NvmlReading>>>> reading_;
    std::vector<std::optional<NvmlReading>> last_;
    std::optional<double> readAt_;
};

} // namespace vantoro
