// At which frequency each processor runs, from the policies under /sys/devices/system/cpu/cpufreq. Layout:
// Documentation/admin-guide/pm/cpufreq.rst and cpu-freq/cpufreq-stats.rst in the kernel's sources.
#pragma once

#include "Platform/Linux/Reading/LanedReading.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantoro {

/// A frequency in kHz and the time spent at it so far, in hundredths of a second.
using TimeInState = std::vector<std::pair<std::int64_t, std::uint64_t>>;

/// The lines of stats/time_in_state, "FREQUENCY TIME"; others are skipped.
TimeInState parseTimeInState(std::string_view text);

/// The mean of the frequencies by the time that went by at each, in kHz; none when none did.
std::optional<double> meanFrequency(const TimeInState& before, const TimeInState& now);

/// The policies are found when this is made. Processors of one policy are clocked together; one without a policy has no
/// frequency. A policy that counts its time in each state gives the mean since the reading before. One that does not,
/// or whose states leave the boost out (acpi-cpufreq), gives its present mean (cpuinfo_avg_freq, else
/// scaling_cur_freq), as it stands: a boost may go beyond what cpuinfo_max_freq announces.
class CpuClocks {
public:
    CpuClocks(const std::string& root, const std::shared_ptr<SlowLane>& lane);

    /// The highest frequency that any of these processors announces, in MHz; 0 when none does.
    double ceilingMHz(const std::vector<int>& processors) const;
    /// In MHz, one for each of these processors; 0 where it is not known. All policies are one reading: where each
    /// takes some milliseconds (as the kernels before 5.18 do on x86), many of them would hold up the caller.
    void read(const std::vector<int>& processors, std::vector<double>& megahertz);

private:
    struct Policy;

    /// By processor: its policy's place, or -1.
    std::vector<int> policies_;
    std::vector<std::int64_t> ceilingsKHz_;
    std::optional<LanedReading<std::vector<double>>> reading_;
};

} // namespace vantoro
