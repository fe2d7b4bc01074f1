// The graphics processor's energy counters. Free functions with process-wide state; callers serialise.
#pragma once

#include "Platform/EnergyReport.h"

#include <memory>

namespace vantoro {

/// Where the counters come from; forgets what was subscribed.
void ior_use(std::shared_ptr<EnergyReport> report);

/// 1 when the counters are there (also when they were before), else 0.
int ior_init();
/// 1 and the energy that the graphics processor has used, in joules: what the channel "GPU Energy" says where there is
/// one, else the sum of all channels of the graphics processor. 0, with `out` untouched, when none can be read.
int ior_gpu_energy_joules(double* out);

} // namespace vantoro
