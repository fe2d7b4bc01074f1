// The NVIDIA driver's management library, as far as it is used here.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vantoro {

struct NvmlReading {
    std::optional<double> celsius;
    /// Since the driver was loaded; newer graphics processors only.
    std::optional<std::int64_t> totalMillijoules;
    std::optional<std::int64_t> milliwatts;

    bool operator==(const NvmlReading&) const = default;
};

/// Used from one thread at a time. While it is open the library may keep every device awake that it was asked about.
class Nvml {
public:
    virtual ~Nvml() = default;

    /// False when the library or its driver is not there.
    virtual bool open() = 0;
    virtual void close() = 0;
    /// The device at this address ("0000:01:00.0"). None when the library does not know it.
    virtual std::optional<NvmlReading> read(const std::string& address) = 0;
};

/// "libnvidia-ml.so.1", loaded at the first opening.
std::shared_ptr<Nvml> systemNvml();

} // namespace vantoro
