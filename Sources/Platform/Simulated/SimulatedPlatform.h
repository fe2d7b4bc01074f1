// The simulated Mac as a platform: its sensors in place of the host's.
#pragma once

#include "Platform/Platform.h"

#include <cstdint>
#include <functional>

namespace vantoro {

/// The host's platform with the sensors, clocks, energy counters, thermal state and name of a simulated Mac, which
/// warms up with the host's load. Processors, processes and applications stay the host's own. `monotonicSeconds` gives
/// seconds of any clock that does not go back; the noise on the sensors comes from `seed`. The host's statistics are
/// kept alive.
Platform simulatedPlatform(const Platform& host, bool fanless, std::function<double()> monotonicSeconds,
                           std::uint64_t seed);

} // namespace vantoro
