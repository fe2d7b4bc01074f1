// The cores' mean clock frequencies, from the time that each core spent in each performance state. Free functions with
// process-wide state: two frequency tables and the counters of the sample before. Callers serialise.
#pragma once

#include "Platform/FrequencyTables.h"
#include "Platform/StateReport.h"

#include <cstdint>
#include <memory>

namespace vantoro {

/// Where tables and states come from; forgets all that was known.
void cpufreq_use(std::shared_ptr<FrequencyTables> tables, std::shared_ptr<StateReport> report);

/// 1 when tables and states are there (also when they were before), else 0.
int cpufreq_init();
/// The last entry of the performance or the efficiency table in MHz; 0 when the table is empty.
double cpufreq_max_performance();
double cpufreq_max_efficiency();
/// Fills up to `capacity` mean frequencies in MHz since the call before, one per core in order of first appearance, and
/// whether each is an efficiency core (1) or not (0). Gives how many it filled; 0 when nothing can be sampled.
std::int32_t cpufreq_sample(double* mhz_out, std::uint8_t* is_efficiency_out, std::int32_t capacity);

/// The frequencies of a property in MHz, at most 32; gives how many it stored, 0 when the property is missing.
int load_states(const RegistryEntry& entry, const char* property_name, double table_out[32]);

} // namespace vantoro
