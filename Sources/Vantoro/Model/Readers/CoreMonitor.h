// What each processor core is doing: its load from the kernel's tick counters, its frequency as the system
// tells it or from the residencies.
#pragma once

#include "CSensors/cpufreq.h"
#include "Model/Readers/SensorSources.h"
#include "Platform/Processors.h"

#include <memory>
#include <vector>

namespace vantoro {

/// Not for concurrent use. A null `processors` gives no cores.
class CoreMonitor : public CoreSource {
public:
    using Core = vantoro::Core;

    explicit CoreMonitor(std::shared_ptr<Processors> processors);

    /// Measures the time since the call before; the first only primes. A failed reading changes nothing.
    void sample() override;
    void setReadsClocks(bool reads) override { readsClocks_ = reads; }
    /// One per logical processor, efficiency cores first.
    const std::vector<Core>& cores() const override { return cores_; }

    int performanceCount() const { return performanceCount_; }
    int efficiencyCount() const { return efficiencyCount_; }
    const ProcessorTiers& tiers() const { return tiers_; }
    double maxPerformanceMHz() const override { return maxPerformanceMHz_; }
    double maxEfficiencyMHz() const override { return maxEfficiencyMHz_; }

private:
    void sampleFrequency();

    std::shared_ptr<Processors> processors_;
    ProcessorTiers tiers_;
    std::vector<Core> cores_;
    double maxPerformanceMHz_ = 0;
    double maxEfficiencyMHz_ = 0;
    bool frequencyAvailable_ = false;
    bool readsClocks_ = true;
    std::vector<HostTicks> previous_;
    std::vector<HostTicks> current_;
    std::vector<double> clocks_;
    int performanceCount_ = 0;
    int efficiencyCount_ = 0;
};

} // namespace vantoro
