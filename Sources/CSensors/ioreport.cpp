#include "CSensors/ioreport.h"

#include <optional>
#include <string_view>
#include <utility>

namespace vantoro {

namespace {

constexpr std::size_t longestName = 127;

struct State {
    std::shared_ptr<EnergyReport> report;
    bool ready = false;
};

State state;

std::optional<double> joulesPer(std::string_view unit) {
    if (unit == "nJ")
        return 1e-9;
    if (unit == "uJ")
        return 1e-6;
    if (unit == "mJ")
        return 0.001;
    if (unit == "J")
        return 1.0;
    return std::nullopt;
}

} // namespace

void ior_use(std::shared_ptr<EnergyReport> report) {
    state = {.report = std::move(report)};
}

int ior_init() {
    if (!state.ready)
        state.ready = state.report && state.report->load() && state.report->subscribe();
    return state.ready ? 1 : 0;
}

int ior_gpu_energy_joules(double* out) {
    if (ior_init() == 0)
        return 0;
    const std::unique_ptr<EnergySample> sample = state.report->sample();
    if (!sample)
        return 0;
    double total = 0;
    bool found = false;
    for (int channel = 0; channel < sample->channelCount(); ++channel) {
        const std::optional<std::string_view> name = sample->channelName(channel);
        if (!name || name->size() > longestName || name->find("GPU") == std::string_view::npos)
            continue;
        const std::optional<std::string_view> unit = sample->unitLabel(channel);
        const std::optional<double> factor = unit ? joulesPer(*unit) : std::nullopt;
        if (!factor)
            continue;
        total += static_cast<double>(sample->value(channel)) * *factor;
        found = true;
    }
    if (!found)
        return 0;
    *out = total;
    return 1;
}

} // namespace vantoro
