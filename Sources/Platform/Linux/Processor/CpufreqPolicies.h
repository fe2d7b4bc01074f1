// The frequency scaling of the processors under /sys/devices/system/cpu/cpufreq, found once, and the frequency tables
// made of it. Layout: Documentation/admin-guide/pm/cpufreq.rst and cpu-freq/cpufreq-stats.rst in the kernel's sources.
#pragma once

#include "Platform/Linux/Processor/CpuTopology.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantoro {

/// As many frequencies as a table is read for.
constexpr std::size_t mostTableFrequencies = 32;

/// Processors that are clocked together.
struct CpufreqPolicy {
    std::string folder;
    std::vector<int> processors;
    bool isEfficiency = false;
    /// It counts the time in each frequency (stats/time_in_state).
    bool countsTime = false;
    /// Its frequencies in kHz, ascending; empty when it has no steps.
    std::vector<std::int64_t> frequencies;
    std::int64_t minimumKHz = 0;
    std::int64_t maximumKHz = 0;

    bool operator==(const CpufreqPolicy&) const = default;
};

struct CpufreqPolicies {
    std::vector<CpufreqPolicy> policies;
    CpuTopology topology;
    /// kHz, ascending, at most mostTableFrequencies: all frequencies of the kind's policies, thinned; evenly spaced
    /// ones where one of those policies has none.
    std::vector<std::int64_t> efficiencyTable;
    std::vector<std::int64_t> performanceTable;

    bool operator==(const CpufreqPolicies&) const = default;
};

CpufreqPolicies readCpufreqPolicies(const std::string& root);

/// time_in_state: a frequency in kHz and the time in it, in hundredths of a second, per line.
std::vector<std::pair<std::int64_t, std::uint64_t>> parseTimeInState(std::string_view text);

/// At most `most` (2 or more) of ascending values: the lowest, the highest, and some evenly picked between.
std::vector<std::int64_t> thinned(std::vector<std::int64_t> values, std::size_t most);
/// `count` (2 or more) values from lowest to highest; just one when they are the same.
std::vector<std::int64_t> evenlySpaced(std::int64_t lowest, std::int64_t highest, std::size_t count);

/// A frequency as a mixture of two neighbours in a table, so that the mean of the two by their shares is the frequency.
/// One beyond the table's ends is the end. The table is not empty.
struct FrequencyMixture {
    std::size_t lower = 0;
    std::size_t upper = 0;
    /// 0 to 1; the lower has the rest.
    double upperShare = 0;

    bool operator==(const FrequencyMixture&) const = default;
};
FrequencyMixture mixtureOf(const std::vector<std::int64_t>& table, double frequency);

} // namespace vantoro
