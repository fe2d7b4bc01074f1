#include "CSensors/ioreport.h"

#include <optional>
#include <string_view>
#include <utility>

namespace vantoro {

namespace {

constexpr std::size_t longestName = 127;
/// The counter of the graphics processor as a whole: those beside it count parts of the same energy again.
constexpr std::string_view wholeName = "GPU Energy";

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
    double whole = 0;
    double parts = 0;
    bool hasWhole = false;
    bool hasParts = false;
    for (int channel = 0; channel < sample->channelCount(); ++channel) {
        const std::optional<std::string_view> name = sample->channelName(channel);
        if (!name || name->size() > longestName || name->find("GPU") == std::string_view::npos)
            continue;
        const std::optional<std::string_view> unit = sample->unitLabel(channel);
        const std::optional<double> factor = unit ? joulesPer(*unit) : std::nullopt;
        if (!factor)
            continue;
        const bool isWhole = *name == wholeName;
        (isWhole ? whole : parts) += static_cast<double>(sample->value(channel)) * *factor;
        (isWhole ? hasWhole : hasParts) = true;
    }
    if (!hasWhole && !hasParts)
        return 0;
    *out = hasWhole ? whole : parts;
    return 1;
}

} // namespace vantoro
