#include "Platform/Linux/Processor/CpufreqStateReport.h"

#include "Platform/Linux/Reading/SensorFile.h"
#include "Platform/Linux/Reading/SysfsText.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace vantoro {

namespace {

/// The readers of these counters know no more processors.
constexpr std::size_t mostChannels = 32;
constexpr double microsecondsPerHundredth = 10'000;

constexpr std::array<std::string_view, mostTableFrequencies> stateNames = {
    "V0",  "V1",  "V2",  "V3",  "V4",  "V5",  "V6",  "V7",  "V8",  "V9",  "V10", "V11", "V12", "V13", "V14", "V15",
    "V16", "V17", "V18", "V19", "V20", "V21", "V22", "V23", "V24", "V25", "V26", "V27", "V28", "V29", "V30", "V31"};

std::string readingPath(const CpufreqPolicy& policy) {
    if (policy.countsTime)
        return policy.folder + "/stats/time_in_state";
    const std::string mean = policy.folder + "/cpuinfo_avg_freq";
    return ::access(mean.c_str(), R_OK) == 0 ? mean : policy.folder + "/scaling_cur_freq";
}

LanedReading<std::string> reading(const CpufreqPolicy& policy, const std::shared_ptr<SlowLane>& lane) {
    const auto file = std::make_shared<SensorFile>(readingPath(policy));
    return {lane, [file]() -> std::optional<std::string> {
                char room[4096]; // the kernel gives at most one page of it
                const auto text = file->readText(room, sizeof room);
                return text ? std::optional<std::string>(*text) : std::nullopt;
            }};
}

void share(const FrequencyMixture& mixture, double microseconds, auto& times) {
    const double upper = std::round(microseconds * mixture.upperShare);
    times[mixture.upper] += static_cast<std::uint64_t>(upper);
    times[mixture.lower] += static_cast<std::uint64_t>(std::round(microseconds) - upper);
}

} // namespace

class CpufreqStateReport::Sample : public StateSample {
public:
    explicit Sample(const CpufreqStateReport& report) : channels_(report.channels_) {
        for (const Policy& policy : report.policies_)
            policies_.emplace_back(policy.table->size(), policy.times);
    }

    int channelCount() const override { return static_cast<int>(channels_.size()); }
    std::optional<std::string_view> channelName(int channel) const override {
        return channels_[static_cast<std::size_t>(channel)].name;
    }
    int stateCount(int channel) const override { return static_cast<int>(policyOf(channel).first); }
    std::uint64_t residency(int channel, int state) const override {
        return policyOf(channel).second[static_cast<std::size_t>(state)];
    }
    std::optional<std::string_view> stateName(int, int state) const override {
        return stateNames[static_cast<std::size_t>(state)];
    }

private:
    const std::pair<std::size_t, Times>& policyOf(int channel) const {
        return policies_[channels_[static_cast<std::size_t>(channel)].policy];
    }

    /// Copies: the views of a sample stay valid while the report goes on.
    std::vector<Channel> channels_;
    std::vector<std::pair<std::size_t, Times>> policies_;
};

CpufreqStateReport::CpufreqStateReport(std::string root, std::shared_ptr<SlowLane> lane)
    : root_(std::move(root)), lane_(std::move(lane)) {}

bool CpufreqStateReport::load() {
    if (found_.policies.empty())
        found_ = readCpufreqPolicies(root_);
    return !found_.policies.empty();
}

bool CpufreqStateReport::subscribe() {
    if (!channels_.empty() || !load())
        return !channels_.empty();
    std::vector<int> order = found_.topology.efficiency;
    order.insert(order.end(), found_.topology.performance.begin(), found_.topology.performance.end());
    std::vector<std::optional<std::size_t>> places(found_.policies.size());
    for (const int processor : order) {
        const auto policy = std::ranges::find_if(found_.policies, [processor](const CpufreqPolicy& candidate) {
            return std::ranges::find(candidate.processors, processor) != candidate.processors.end();
        });
        if (policy == found_.policies.end() || channels_.size() == mostChannels)
            continue;
        auto& place = places[static_cast<std::size_t>(policy - found_.policies.begin())];
        if (!place) {
            place = policies_.size();
            policies_.push_back({.table = policy->isEfficiency ? &found_.efficiencyTable : &found_.performanceTable,
                                 .reading = reading(*policy, lane_),
                                 .countsTime = policy->countsTime});
        }
        channels_.push_back(
            {.name = (policy->isEfficiency ? "ECPU" : "PCPU") + std::to_string(processor), .policy = *place});
    }
    return !channels_.empty();
}

void CpufreqStateReport::update(Policy& policy, double seconds) {
    const auto text = policy.reading.read();
    if (!text)
        return;
    if (!policy.countsTime) {
        const auto frequency = parseWholeNumber(*text);
        if (frequency && *frequency > 0)
            share(mixtureOf(*policy.table, static_cast<double>(*frequency)), seconds * 1e6, policy.times);
        return;
    }
    Times times{};
    for (const auto& [frequency, hundredths] : parseTimeInState(*text))
        share(mixtureOf(*policy.table, static_cast<double>(frequency)),
              static_cast<double>(hundredths) * microsecondsPerHundredth, times);
    policy.times = times;
}

std::unique_ptr<StateSample> CpufreqStateReport::sample() {
    if (!subscribe())
        return nullptr;
    const double now = lane_->now();
    const double seconds = sampledAt_ ? std::max(now - *sampledAt_, 0.0) : 0;
    sampledAt_ = now;
    for (Policy& policy : policies_)
        update(policy, seconds);
    return std::make_unique<Sample>(*this);
}

} // namespace vantoro
