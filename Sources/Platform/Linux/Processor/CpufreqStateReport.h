// How long each processor has run at each frequency of its table.
#pragma once

#include "Platform/Linux/Processor/CpufreqPolicies.h"
#include "Platform/Linux/Reading/LanedReading.h"
#include "Platform/StateReport.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace vantoro {

/// A channel per processor, "ECPU4" or "PCPU0" by its kernel number, efficiency processors first, 32 at most. Its
/// states "V0", "V1", … are the places of its kind's frequency table (CpufreqTables). The times of a policy that counts
/// them (time_in_state) are shared out between the table's two nearest frequencies where the table is thinned; a policy
/// that does not count has been, since the sample before, at its present mean frequency (cpuinfo_avg_freq, else
/// scaling_cur_freq). A processor that is offline or does not answer stands still.
class CpufreqStateReport : public StateReport {
public:
    CpufreqStateReport(std::string root, std::shared_ptr<SlowLane> lane);

    bool load() override;
    bool subscribe() override;
    std::unique_ptr<StateSample> sample() override;

private:
    /// Cumulative, in microseconds.
    using Times = std::array<std::uint64_t, mostTableFrequencies>;

    struct Policy {
        const std::vector<std::int64_t>* table = nullptr;
        LanedReading<std::string> reading;
        bool countsTime = false;
        Times times{};
    };
    struct Channel {
        std::string name;
        std::size_t policy = 0;
    };
    class Sample;

    void update(Policy& policy, double seconds);

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    CpufreqPolicies found_;
    std::vector<Policy> policies_;
    std::vector<Channel> channels_;
    std::optional<double> sampledAt_;
};

} // namespace vantoro
