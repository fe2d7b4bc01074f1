// The system management controller, or what stands in its place: fans, temperatures and power rails behind keys of four
// characters.
#pragma once

#include "Platform/SMCKeyData.h"

#include <cstdint>
#include <string>

namespace vantoro {

/// How a service's temperature sensors are to be read.
enum class SensorTrust {
    manyAndNoisy, ///< many per family, some of them placeholders: only what they say together is to be believed
    fewAndHonest  ///< few and coarse: each reading in the plausible band is taken as it is
};

/// Used from one thread at a time.
class SMCService {
public:
    virtual ~SMCService() = default;

    /// Opens the first service of this class; gives its handle, 0 when there is none or it is refused.
    virtual std::uint32_t open(const char* className) = 0;
    /// One exchange on the 80-byte record (struct call with selector 2). False when the call itself fails; what the
    /// controller thinks of the request is in the reply's result.
    virtual bool call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) = 0;
    /// The system's own code for the closing, 0 for success.
    virtual std::uint32_t close(std::uint32_t handle) = 0;

    /// False for what stands in the controller's place: a key that is missing there means that nothing is known.
    virtual bool isController() const { return true; }

    virtual SensorTrust trust() const { return SensorTrust::manyAndNoisy; }
    /// Whether keys "Ts…" are sensors of the cores on this machine, rather than of the enclosure.
    virtual bool measuresCoresUnderTs() const { return false; }

    /// The rest is asked of what stands in the controller's place.

    /// What to call a fan, by its number; empty where nobody knows.
    virtual std::string fanName(int /*fan*/) const { return {}; }
    /// Another number whenever there are other keys, since devices came or went. Cheap: to be asked once per round.
    virtual std::uint64_t generation() { return 0; }
    /// From now on a slow sensor is waited for, up to so long each: for who looks only once.
    virtual void waitForSlowSensors(double /*seconds*/) {}
};

} // namespace vantoro
