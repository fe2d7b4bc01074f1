#include "Model/Readers/CoreMonitor.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace vantoro {

namespace {

constexpr std::int32_t mostFrequencies = 32;

} // namespace

CoreMonitor::CoreMonitor(std::shared_ptr<Processors> processors) : processors_(std::move(processors)) {
    const ProcessorCounts counts = processors_ ? processors_->counts() : ProcessorCounts{};
    if (processors_)
        tiers_ = processors_->tiers();
    const int all = std::max(counts.performance + counts.efficiency, counts.all);
    // A machine without performance levels counts every processor as a performance core.
    performanceCount_ = counts.performance >= 1 ? counts.performance : all;
    efficiencyCount_ = counts.efficiency;
    for (int i = 0; i < all; ++i) {
        const bool isPerformance = i >= efficiencyCount_;
        cores_.push_back({.index = i,
                          .isPerformance = isPerformance,
                          .clusterIndex = isPerformance ? i - efficiencyCount_ : i,
                          .tier = isPerformance ? tiers_.performance : tiers_.efficiency});
    }
    frequencyAvailable_ = cpufreq_init() != 0;
    if (frequencyAvailable_) {
        maxPerformanceMHz_ = cpufreq_max_performance();
        maxEfficiencyMHz_ = cpufreq_max_efficiency();
    } else if (processors_) {
        const ClockCeilings ceilings = processors_->ceilings();
        maxPerformanceMHz_ = ceilings.performance;
        maxEfficiencyMHz_ = ceilings.efficiency;
    }
}

void CoreMonitor::sample() {
    current_.clear();
    if (!processors_ || processors_->readTicks(current_) != 0 || current_.empty())
        return;
    if (previous_.size() == current_.size()) {
        sampleFrequency();
        for (std::size_t i = 0; i < std::min(cores_.size(), current_.size()); ++i)
            cores_[i].busy = TicksSpent(previous_[i], current_[i]).busyShare().value_or(0);
    }
    previous_.swap(current_);
}

void CoreMonitor::sampleFrequency() {
    if (!frequencyAvailable_) {
        if (!readsClocks_ || !processors_->readClocks(clocks_))
            clocks_.clear();
        for (std::size_t i = 0; i < cores_.size(); ++i)
            cores_[i].megahertz = i < clocks_.size() ? clocks_[i] : 0;
        return;
    }
    std::array<double, mostFrequencies> megahertz{};
    std::array<std::uint8_t, mostFrequencies> isEfficiency{};
    const std::int32_t count = cpufreq_sample(megahertz.data(), isEfficiency.data(), mostFrequencies);
    auto nextEfficiency = std::size_t{0};
    auto nextPerformance = static_cast<std::size_t>(efficiencyCount_);
    for (std::size_t i = 0; i < static_cast<std::size_t>(std::max(count, 0)); ++i) {
        const std::size_t target = isEfficiency[i] != 0 ? nextEfficiency++ : nextPerformance++;
        if (target < cores_.size())
            cores_[target].megahertz = megahertz[i];
    }
}

} // namespace vantoro
