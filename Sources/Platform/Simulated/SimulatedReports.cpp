#include "Platform/Simulated/SimulatedReports.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace vantoro {

namespace {

std::vector<std::string> numbered(const std::string& prefix, int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(prefix + std::to_string(i));
    return names;
}

class CoreStates : public StateSample {
public:
    CoreStates(const SimulatedMac::Options& options, const ThermalModelState& state)
        : efficiencyNames_(numbered("ECPU", options.efficiencyCores))
        , performanceNames_(numbered("PCPU", options.performanceCores))
        , efficiency_(state.efficiency)
        , performance_(state.performance) {
        const std::size_t states = std::max(efficiency_.busySeconds.size(), performance_.busySeconds.size());
        stateNames_ = numbered("V", static_cast<int>(states));
        stateNames_.insert(stateNames_.begin(), "IDLE");
    }

    int channelCount() const override { return static_cast<int>(efficiencyNames_.size() + performanceNames_.size()); }

    std::optional<std::string_view> channelName(int channel) const override {
        const auto index = static_cast<std::size_t>(channel);
        return index < efficiencyNames_.size() ? efficiencyNames_[index]
                                               : performanceNames_[index - efficiencyNames_.size()];
    }

    int stateCount(int channel) const override { return static_cast<int>(cluster(channel).busySeconds.size() + 1); }

    std::uint64_t residency(int channel, int state) const override {
        constexpr double ticksPerSecond = 24e6;
        const ClusterState& counters = cluster(channel);
        const double seconds =
            state == 0 ? counters.idleSeconds : counters.busySeconds[static_cast<std::size_t>(state - 1)];
        return static_cast<std::uint64_t>(seconds * ticksPerSecond);
    }

    std::optional<std::string_view> stateName(int, int state) const override {
        return stateNames_[static_cast<std::size_t>(state)];
    }

private:
    const ClusterState& cluster(int channel) const {
        return static_cast<std::size_t>(channel) < efficiencyNames_.size() ? efficiency_ : performance_;
    }

    std::vector<std::string> efficiencyNames_;
    std::vector<std::string> performanceNames_;
    std::vector<std::string> stateNames_;
    ClusterState efficiency_;
    ClusterState performance_;
};

class PowerManager : public RegistryEntry {
public:
    explicit PowerManager(const ThermalDesign& design) : design_(design) {}

    std::optional<std::vector<std::uint8_t>> data(const std::string& property) const override {
        if (property == "voltage-states1-sram")
            return records(design_.efficiency);
        if (property == "voltage-states5-sram")
            return records(design_.performance);
        return std::nullopt;
    }

private:
    // Records of a clock in kHz and a voltage, which nobody reads.
    static std::vector<std::uint8_t> records(const ClusterDesign& cluster) {
        std::vector<std::uint8_t> bytes;
        for (const double megahertz : cluster.megahertz) {
            const auto kilohertz = static_cast<std::uint32_t>(megahertz * 1000);
            for (int i = 0; i < 4; ++i)
                bytes.push_back(static_cast<std::uint8_t>(kilohertz >> 8 * i));
            bytes.insert(bytes.end(), 4, 0);
        }
        return bytes;
    }

    ThermalDesign design_;
};

class EnergyCounters : public EnergySample {
public:
    explicit EnergyCounters(const ThermalModelState& state) : joules_{state.cpuJoules, state.gpuJoules} {}

    int channelCount() const override { return 2; }
    std::optional<std::string_view> channelName(int channel) const override {
        return channel == 0 ? "CPU Energy" : "GPU Energy";
    }
    std::optional<std::string_view> unitLabel(int) const override { return "mJ"; }
    std::int64_t value(int channel) const override {
        return static_cast<std::int64_t>(joules_[static_cast<std::size_t>(channel)] * 1000);
    }

private:
    std::array<double, 2> joules_;
};

} // namespace

SimulatedStateReport::SimulatedStateReport(std::shared_ptr<SimulatedMac> mac) : mac_(std::move(mac)) {}

std::unique_ptr<StateSample> SimulatedStateReport::sample() {
    return std::make_unique<CoreStates>(mac_->options(), mac_->update());
}

SimulatedFrequencyTables::SimulatedFrequencyTables(std::shared_ptr<SimulatedMac> mac) : mac_(std::move(mac)) {}

std::unique_ptr<RegistryEntry> SimulatedFrequencyTables::entryAtPath(const std::string& path) {
    return path == "IODeviceTree:/arm-io/pmgr" ? std::make_unique<PowerManager>(mac_->design()) : nullptr;
}

std::optional<std::vector<std::unique_ptr<RegistryEntry>>>
SimulatedFrequencyTables::entriesNamed(const std::string& name) {
    std::vector<std::unique_ptr<RegistryEntry>> entries;
    if (name == "pmgr")
        entries.push_back(std::make_unique<PowerManager>(mac_->design()));
    return entries;
}

SimulatedEnergyReport::SimulatedEnergyReport(std::shared_ptr<SimulatedMac> mac) : mac_(std::move(mac)) {}

std::unique_ptr<EnergySample> SimulatedEnergyReport::sample() {
    return std::make_unique<EnergyCounters>(mac_->update());
}

} // namespace vantoro
