// The energy that graphics processors use.
#pragma once

#include "Platform/EnergyReport.h"
#include "Platform/Linux/Reading/SlowLane.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantoro {

class NvidiaGPUs;

/// A channel per graphics processor, "GPU amdgpu 0000:03:00.0": amdgpu's and nouveau's power, summed up over time, and
/// energy1_input of i915 and xe ("uJ"); the NVIDIA library's total, else its power summed up ("mJ"); the zones "uncore"
/// of powercap, which are the graphics part of a processor ("uJ"). The power that amdgpu gives for the graphics part of
/// a processor is left out: it is the whole package's. A device that sleeps uses nothing and is not woken.
class LinuxEnergyReport : public EnergyReport {
public:
    /// `gpus` may be null.
    LinuxEnergyReport(std::string root, std::shared_ptr<SlowLane> lane, std::shared_ptr<NvidiaGPUs> gpus);

    bool load() override;
    bool subscribe() override;
    std::unique_ptr<EnergySample> sample() override;

private:
    struct Source {
        std::string name;
        const char* unit = "uJ";
        /// The cumulative value, given the time.
        std::function<std::int64_t(double seconds)> total;
    };
    class Sample;

    void addDrivers();
    void addZones();
    void addNvidia();

    std::string root_;
    std::shared_ptr<SlowLane> lane_;
    std::shared_ptr<NvidiaGPUs> gpus_;
    bool isLoaded_ = false;
    std::vector<Source> sources_;
};

} // namespace vantoro
