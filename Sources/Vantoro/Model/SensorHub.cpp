#include "Model/SensorHub.h"

#include "Model/Diagnosis.h"
#include "Model/MachineName.h"
#include "Model/Numbers.h"
#include "Model/Quits.h"
#include "Model/Suspects.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace vantoro {

namespace {

constexpr double longestIntervalSeconds = 86400;

std::optional<std::string> environmentVariable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace

double HubEnvironment::steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

HubEnvironment HubEnvironment::ofThisProcess() {
    return {
        .now =
            [] { return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count(); },
        .interval = environmentVariable("VANTORO_INTERVAL"),
        .processMode = environmentVariable("VANTORO_PROCESS_MODE")};
}

std::chrono::milliseconds timerInterval(const std::optional<std::string>& environment, double sampleInterval) {
    const double asked = environment ? parseDecimal(*environment).value_or(0) : 0;
    const double seconds = std::clamp(asked > 0 ? asked : sampleInterval, 0.01, longestIntervalSeconds);
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

int processInterval(double sampleInterval) {
    return static_cast<int>(std::clamp(std::round(sampleInterval), 1.0, longestIntervalSeconds));
}

SensorHub::SensorHub(const Platform& platform, SensorSources sources, const Settings& settings,
                     HubEnvironment environment)
    : machine_(platform.machine)
    , thermalState_(platform.thermalState)
    , sources_(std::move(sources))
    , settings_(settings)
    , environment_(std::move(environment))
    , formatContext_(settings)
    , format_(formatContext_)
    , motion_(formatContext_)
    , cooling_(foundCooling())
    , processes_(
          platform, [this] { return ProcessMonitor::mode(environment_.processMode, settings_.processMonitorMode()); },
          environment_.processTiming)
    , quits_(std::make_unique<Quits>(platform.processControl, environment_.now, environment_.monotonic)) {
    snapshot_ = measure(environment_.now());
    vitals_ = Vitals::quantising(snapshot_);
    verdict_.cooling = cooling_;
    if (cooling_ == Cooling::passive) {
        verdict_.awaitingReading = snapshot_.chipHeat <= 0;
        verdict_.headline = verdict_.awaitingReading ? "Waiting for the chip" : "All cool";
    }
}

SensorHub::~SensorHub() = default;

// Sensors that cannot be opened say nothing about the machine: it is not taken for a fanless one.
Cooling SensorHub::foundCooling() const {
    return hasOpenSensors() ? sources_.sensors->cooling() : Cooling::fans;
}

void SensorHub::start() {
    if (timer_ || isReplay_)
        return;
    sensorsAvailable_ = hasOpenSensors();
    emit sensorsAvailableChanged();
    startProcesses();
    tick();
    timer_ = std::make_unique<QTimer>();
    connect(timer_.get(), &QTimer::timeout, this, &SensorHub::tick);
    timer_->start(timerInterval(environment_.interval, settings_.sampleInterval()));
}

void SensorHub::startProcesses() {
    processes_.onUpdate = [this](const std::vector<ProcessSample>& processes, const SystemLine& system) {
        latestProcesses_ = processes;
        latestSystem_ = system;
        unreadableProcessCount_ = processes_.unreadableCount();
        emit unreadableProcessCountChanged();
        if (!processesReady_) {
            processesReady_ = true;
            emit processesReadyChanged();
        }
    };
    processes_.onSourceChange = [this](ProcessMonitor::Source source) {
        processSource_ = source;
        emit processSourceChanged();
    };
    processes_.start(processInterval(settings_.sampleInterval()), processRows);
}

void SensorHub::restartTimer() {
    if (isReplay_)
        return;
    processes_.start(processInterval(settings_.sampleInterval()), processRows);
    if (timer_)
        timer_->start(timerInterval(environment_.interval, settings_.sampleInterval()));
}

ThermalPressure SensorHub::readThermalPressure() const {
    return thermalState_ ? thermalPressure(thermalState_->rawValue()).value_or(ThermalPressure::nominal)
                         : ThermalPressure::nominal;
}

Snapshot SensorHub::measure(UnixSeconds now) {
    Snapshot snapshot{.timestamp = now, .cpu = latestSystem_.cpu, .memory = latestSystem_.memory, .cooling = cooling_};
    if (hasOpenSensors()) {
        snapshot.fans = sources_.sensors->readFans();
        snapshot.temps = sources_.sensors->readTemperatures();
        snapshot.power = sources_.sensors->readPower();
    }
    snapshot.power.gpuWatts = sources_.gpu ? sources_.gpu->sampleWatts() : 0;
    snapshot.thermalPressure = readThermalPressure();
    snapshot.processes = latestProcesses_;
    snapshot.chipHeat = heat_.smoothed(now, snapshot.temps.soc);
    return snapshot;
}

void SensorHub::tick() {
    if (!isReplay_)
        appendAndPublish(measure(environment_.now()));
}

void SensorHub::beginReplay(const std::string& machineName) {
    isReplay_ = true;
    // A recording's process numbers are anybody's by now.
    quits_->disable();
    machineName_ = machineName;
}

void SensorHub::accept(Snapshot snapshot) {
    cooling_ = snapshot.cooling;
    const bool hasSensors = !snapshot.fans.empty() || snapshot.temps != Temperatures();
    if (hasSensors && !sensorsAvailable_) {
        sensorsAvailable_ = true;
        emit sensorsAvailableChanged();
    }
    if (!processesReady_) {
        processesReady_ = true;
        emit processesReadyChanged();
    }
    appendAndPublish(std::move(snapshot));
}

void SensorHub::appendAndPublish(Snapshot snapshot) {
    history_.append(snapshot);
    extremes_.add(snapshot);
    snapshot_ = std::move(snapshot);
    emit snapshotChanged();
    publishDerived(false);
    ++ticks_;
    verdict_ = DiagnosisEngine::evaluate(history_, format_);
    emit verdictChanged();
    assignSuspects(rankedSuspects(history_));
    // Publishing rebuilds the series on the other half of the ticks, by the count before this one.
    if (ticks_ % 2 == 0)
        rebuildSeries();
    if (!isReady_) {
        isReady_ = true;
        emit isReadyChanged();
    }
    emit refreshed();
}

void SensorHub::publish(bool force) {
    publishDerived(force);
    emit refreshed();
}

void SensorHub::publishDerived(bool force) {
    if (sources_.cores)
        sources_.cores->sample();
    Vitals vitals = Vitals::quantising(snapshot_);
    Verdict verdict = DiagnosisEngine::evaluate(history_, format_);
    std::vector<ProcessGroup> suspects = rankedSuspects(history_);
    std::vector<double> dieSensors;
    std::vector<double> gpuSensors;
    if (readsSingleSensors() && hasOpenSensors()) {
        dieSensors = sources_.sensors->readDieSensors();
        gpuSensors = sources_.sensors->readGPUSensors();
    }

    animation_ = motion_.update();
    emit transactionBegan();
    if (vitals != vitals_) {
        vitals_ = std::move(vitals);
        emit vitalsChanged();
    }
    verdict_ = std::move(verdict);
    emit verdictChanged();
    assignSuspects(std::move(suspects));
    cores_ = sources_.cores ? sources_.cores->cores() : std::vector<Core>();
    emit coresChanged();
    // A shorter list is a partial reading: the one before stays, so that the pane does not flicker.
    constexpr std::size_t fewestDieSensors = 8;
    constexpr std::size_t fewestGPUSensors = 4;
    if (readsSingleSensors() && dieSensors.size() >= fewestDieSensors) {
        dieSensors_ = std::move(dieSensors);
        emit dieSensorsChanged();
    }
    if (readsSingleSensors() && gpuSensors.size() >= fewestGPUSensors) {
        gpuSensors_ = std::move(gpuSensors);
        emit gpuSensorsChanged();
    }
    emit transactionEnded();

    if ((windowVisible_ || force) && ticks_ % 2 == 0)
        rebuildSeries();
}

void SensorHub::assignSuspects(std::vector<ProcessGroup> suspects) {
    if (suspects == suspects_)
        return;
    suspects_ = std::move(suspects);
    emit suspectsChanged();
}

void SensorHub::rebuildSeries() {
    series_ = chartSeries(history_);
    emit seriesChanged();
}

double SensorHub::coreCeilingMHz(bool isPerformance) const {
    if (!sources_.cores)
        return 0;
    return isPerformance ? sources_.cores->maxPerformanceMHz() : sources_.cores->maxEfficiencyMHz();
}

const std::string& SensorHub::machineName() {
    if (!machineName_)
        machineName_ = vantoro::machineName(machine_ ? machine_->modelIdentifier() : std::nullopt,
                                            machine_ ? machine_->processorBrand() : std::nullopt);
    return *machineName_;
}

std::string SensorHub::sensorSummary() const {
    if (isReplay_) {
        const Temperatures& temps = snapshot_.temps;
        const std::array readings{temps.soc, temps.socMean, temps.gpu, temps.battery, temps.enclosure};
        const auto recorded = std::ranges::count_if(readings, [](double celsius) { return celsius > 0; });
        return vantoro::sensorSummary(cooling_, static_cast<int>(snapshot_.fans.size()), static_cast<int>(recorded));
    }
    return vantoro::sensorSummary(cooling_, hasOpenSensors() ? sources_.sensors->fanCount() : 0,
                                  hasOpenSensors() ? sources_.sensors->sensorCount() : 0);
}

} // namespace vantoro
