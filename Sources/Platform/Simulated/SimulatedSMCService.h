// The simulated Mac's sensors behind the keys of its system management controller.
#pragma once

#include "Platform/Simulated/SimulatedMac.h"
#include "Platform/SMCService.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantoro {

/// Holds "#KEY", "FNum", per fan F?Ac, F?Mn, F?Mx and F?Tg, the rails PSTR, PDTR and PPBR, and 24 + 10 sensors on the
/// die (Tp, Tg), 3 at the battery (TB) and 4 at the surface (Ts), each with an offset and a small noise of its own. The
/// noise is a function of the seed, the sensor and the model's own time: it repeats with them.
class SimulatedSMCService : public SMCService {
public:
    explicit SimulatedSMCService(std::shared_ptr<SimulatedMac> mac);
    SimulatedSMCService(const SimulatedSMCService&) = delete;
    SimulatedSMCService& operator=(const SimulatedSMCService&) = delete;

    /// The one handle there is, for "AppleSMC"; 0 for any other class.
    std::uint32_t open(const char* className) override;
    bool call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) override;
    std::uint32_t close(std::uint32_t handle) override;

private:
    enum class Type { float32, byte, bigEndian32 };
    struct Key {
        std::uint32_t code = 0;
        Type type = Type::float32;
        std::function<double(const ThermalModelState&)> value;
    };

    void add(const std::string& name, Type type, std::function<double(const ThermalModelState&)> value);
    /// Sensors named by this prefix and the endings, whose offsets are spread evenly from 0 at the first to -1 at the
    /// last; `value` turns state and offset into degrees.
    void addSensors(const std::string& prefix, const std::vector<std::string>& endings, double noiseKelvin,
                    const std::function<double(const ThermalModelState&, double offset)>& value);
    void addFans();
    const Key* find(std::uint32_t code) const;
    double noise(std::uint32_t code, const ThermalModelState& state) const;

    std::shared_ptr<SimulatedMac> mac_;
    std::vector<Key> keys_;
};

} // namespace vantoro
