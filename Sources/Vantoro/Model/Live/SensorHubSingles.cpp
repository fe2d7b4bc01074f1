// What the hub knows beside its snapshots: each core, and each sensor for itself.
#include "Model/Live/SensorHub.h"

#include <algorithm>
#include <utility>

namespace vantoro {

namespace {

std::vector<Core> coresOf(const std::vector<CoreReading>& readings) {
    std::vector<Core> cores;
    cores.reserve(readings.size());
    int performance = 0;
    int efficiency = 0;
    for (const CoreReading& reading : readings)
        cores.push_back({.index = static_cast<int>(cores.size()),
                         .isPerformance = reading.isPerformance,
                         .busy = reading.busyPercent / 100,
                         .megahertz = reading.megahertz,
                         .clusterIndex = reading.isPerformance ? performance++ : efficiency++});
    return cores;
}

} // namespace

void SensorHub::sampleCores(bool withClocks) {
    if (!sources_.cores || recordedCores_)
        return;
    sources_.cores->setReadsClocks(withClocks);
    sources_.cores->sample();
    ++coreSamples_;
    coreCeilings_.see(sources_.cores->cores());
}

void SensorHub::lookAtSingleSensors() {
    if (!hasOpenSensors() || recordsSingleSensors_)
        return;
    if (dieSensors_.look(sources_.sensors->readDieSensors(), sources_.sensors->dieSensorCount()))
        emit dieSensorsChanged();
    if (gpuSensors_.look(sources_.sensors->readGPUSensors(), sources_.sensors->gpuSensorCount()))
        emit gpuSensorsChanged();
}

// They are of one instant: a history of them would cost more than all the rest of it.
void SensorHub::takeSingleReadings(Snapshot& recorded) {
    const auto cores = std::exchange(recorded.cores, std::nullopt);
    recordedCores_ = cores ? std::optional(coresOf(*cores)) : std::nullopt;
    auto dies = std::exchange(recorded.dieSensors, std::nullopt);
    auto gpus = std::exchange(recorded.gpuSensors, std::nullopt);
    if (!recordsSingleSensors_ && !dies && !gpus)
        return;
    recordsSingleSensors_ = true;
    dieSensors_.set(std::move(dies));
    emit dieSensorsChanged();
    gpuSensors_.set(std::move(gpus));
    emit gpuSensorsChanged();
}

void SensorHub::addSingleReadings(Snapshot& measured) {
    sampleCores(true);
    // The first sample only tells the next what to reckon from.
    if (sources_.cores && coreSamples_ > 1) {
        measured.cores.emplace();
        for (const Core& core : sources_.cores->cores())
            measured.cores->push_back({core.isPerformance, core.busy * 100, core.megahertz});
    }
    if (hasOpenSensors()) {
        measured.dieSensors = sources_.sensors->latestDieSensors();
        measured.gpuSensors = sources_.sensors->latestGPUSensors();
    }
}

RecordingHeader SensorHub::recordingHeader(UnixSeconds begun) {
    return {.machine = machineName(), .created = utcText(begun), .system = words().kind, .processors = processors()};
}

std::optional<RecordedProcessors> SensorHub::processors() const {
    if (cores_.empty() && recordedProcessors_)
        return recordedProcessors_;
    const std::vector<Core>& cores = cores_.empty() && sources_.cores ? sources_.cores->cores() : cores_;
    if (cores.empty())
        return std::nullopt;
    const auto performance = std::ranges::count_if(cores, &Core::isPerformance);
    return RecordedProcessors{.performance = static_cast<std::int32_t>(performance),
                              .efficiency = static_cast<std::int32_t>(std::ssize(cores) - performance)};
}

// What the present snapshot brought along counts before what was published last.
std::optional<int> SensorHub::processorCount() const {
    if (recordedCores_ && !recordedCores_->empty())
        return static_cast<int>(recordedCores_->size());
    const auto counted = isReplay_ ? recordedProcessors_ : processors();
    return counted ? counted->count() : std::nullopt;
}

bool SensorHub::hasDieSensors() const {
    if (recordsSingleSensors_)
        return !dieSensors_.celsius().empty();
    return hasOpenSensors() && sources_.sensors->dieSensorCount() != std::size_t{0};
}

bool SensorHub::hasGPUSensors() const {
    if (recordsSingleSensors_)
        return !gpuSensors_.celsius().empty();
    return hasOpenSensors() && sources_.sensors->hasGPUSensors();
}

double SensorHub::coreCeilingMHz(bool isPerformance) const {
    if (!sources_.cores || recordedCores_)
        return 0;
    return coreCeilings_.of(isPerformance,
                            isPerformance ? sources_.cores->maxPerformanceMHz() : sources_.cores->maxEfficiencyMHz());
}

} // namespace vantoro
