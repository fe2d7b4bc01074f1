#include "Model/Live/SensorHub.h"

#include "Model/Diagnosis/Diagnosis.h"
#include "Model/History/History.h"
#include "Model/Live/Quits.h"
#include "Model/Records/SystemWords.h"
#include "Model/Text/Numbers.h"

#include <algorithm>
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

HubEnvironment HubEnvironment::ofThisProcess() {
    return {.now = unixSeconds,
            .interval = environmentVariable("VANTORO_INTERVAL"),
            .processMode = environmentVariable("VANTORO_PROCESS_MODE")};
}

std::chrono::milliseconds timerInterval(const std::optional<std::string>& environment, double sampleInterval) {
    const double asked = environment ? parseDecimal(*environment).value_or(0) : 0;
    const double seconds = std::clamp(asked > 0 ? asked : sampleInterval, 0.01, longestIntervalSeconds);
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

double shortestGapSeconds(std::chrono::milliseconds timerInterval) {
    constexpr double share = 0.1;
    constexpr double longest = 0.2;
    return std::min(longest, share * std::chrono::duration<double>(timerInterval).count());
}

int processInterval(double sampleInterval) {
    return static_cast<int>(std::clamp(std::round(sampleInterval), 1.0, longestIntervalSeconds));
}

/// Opened within another one it is part of that.
class SensorHub::Transaction {
public:
    explicit Transaction(SensorHub& hub) : hub_(hub) {
        if (hub_.openTransactions_++ > 0)
            return;
        hub_.animation_ = hub_.motion_.update();
        emit hub_.transactionBegan();
    }
    ~Transaction() {
        if (--hub_.openTransactions_ == 0)
            emit hub_.transactionEnded();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

private:
    SensorHub& hub_;
};

SensorHub::SensorHub(const Platform& platform, SensorSources sources, const Settings& settings,
                     HubEnvironment environment)
    : machine_(platform.machine)
    , thermalState_(platform.thermalState)
    , strain_(platform.strain)
    , activity_(platform.activity)
    , graphics_(platform.graphicsClients)
    , sources_(std::move(sources))
    , settings_(settings)
    , environment_(std::move(environment))
    , formatContext_(settings)
    , format_(formatContext_)
    , motion_(formatContext_)
    , processes_(
          platform,
          [this] {
              return ProcessMonitor::mode(environment_.processMode, settings_.value(Setting::processMonitorMode));
          },
          environment_.processTiming)
    , quits_(
          std::make_unique<Quits>(platform.processControl, environment_.now, environment_.monotonic, platform.system)) {
    history_.setSystem(platform.system);
    connect(&settings_, &Settings::changed, this, &SensorHub::settingChanged);
    snapshot_ = measure(environment_.now());
    vitals_ = Vitals::quantising(snapshot_);
    verdict_ = DiagnosisEngine::atStart(snapshot_, platform.system);
}

SensorHub::~SensorHub() = default;

// Sensors that cannot be opened say nothing about the machine: a Mac is not taken for a fanless one.
Cooling SensorHub::foundCooling() const {
    if (hasOpenSensors())
        return sources_.sensors->cooling();
    return words().isMac() ? Cooling::fans : Cooling::load;
}

void SensorHub::start() {
    if (timer_ || isReplay_)
        return;
    assignSensorsAvailable(hasOpenSensors());
    startProcesses();
    tick();
    lookSoon();
    timer_ = std::make_unique<QTimer>();
    connect(timer_.get(), &QTimer::timeout, this, &SensorHub::tickUnlessJustDone);
    if (activity_)
        sampling_ = activity_->begin("Measuring how warm and busy the machine is");
    timer_->start(timerInterval(environment_.interval, settings_.value(Setting::sampleInterval)));
}

// The verdict is not to wait for two intervals of a slow timer: until it is there, what was delivered is taken soon.
void SensorHub::lookSoon() {
    constexpr std::chrono::milliseconds pause{500};
    firstLooks_ = std::make_unique<QTimer>();
    connect(firstLooks_.get(), &QTimer::timeout, this, [this] {
        if (measuring() == Measuring::done)
            firstLooks_->stop();
        else if (processesReady_)
            tickUnlessJustDone();
    });
    firstLooks_->start(pause);
}

Measuring SensorHub::measuring() const {
    const double waited = ticks_ > 0 ? snapshot_.timestamp - firstSampleAt_ : 0;
    return isReplay_ ? Measuring::done : measuringState(samplesWithList_, waited);
}

void SensorHub::startProcesses() {
    processes_.onUpdate = [this](const std::vector<ProcessSample>& processes, const SystemLine& system) {
        latestProcesses_ = processes;
        latestSystem_ = system;
        const Transaction transaction(*this);
        if (const int unreadable = processes_.unreadableCount(); unreadable != unreadableProcessCount_) {
            unreadableProcessCount_ = unreadable;
            emit unreadableProcessCountChanged();
        }
        assignProcessesReady();
    };
    processes_.onSourceChange = [this](ProcessMonitor::Source source) {
        const Transaction transaction(*this);
        processSource_ = source;
        emit processSourceChanged();
    };
    processes_.start(processInterval(settings_.value(Setting::sampleInterval)), processRows);
}

void SensorHub::assignProcessesReady() {
    if (processesReady_)
        return;
    processesReady_ = true;
    emit processesReadyChanged();
}

void SensorHub::assignSensorsAvailable(bool available) {
    if (available == sensorsAvailable_)
        return;
    sensorsAvailable_ = available;
    emit sensorsAvailableChanged();
}

void SensorHub::settingChanged(std::string_view key) {
    constexpr double secondsPerMinute = 60;
    if (key == Setting::sampleInterval.key || key == Setting::processMonitorMode.key) {
        restartTimer();
    } else if (key == Setting::historyMinutes.key) {
        history_.setRetention(settings_.value(Setting::historyMinutes) * secondsPerMinute);
    } else if (key == Setting::temperatureUnit.key) {
        // The verdict and the facts have the unit in their words.
        const Transaction transaction(*this);
        publishDerived(true);
        emit formatChanged();
    }
}

void SensorHub::restartTimer() {
    const bool wasStarted = processes_.onUpdate != nullptr;
    if (isReplay_ || !wasStarted)
        return;
    processes_.start(processInterval(settings_.value(Setting::sampleInterval)), processRows);
    if (timer_)
        timer_->start(timerInterval(environment_.interval, settings_.value(Setting::sampleInterval)));
}

ThermalPressure SensorHub::readThermalPressure() const {
    return thermalState_ ? thermalPressure(thermalState_->rawValue()).value_or(ThermalPressure::nominal)
                         : ThermalPressure::nominal;
}

Snapshot SensorHub::measure(UnixSeconds now) {
    Snapshot snapshot{.timestamp = now, .cpu = latestSystem_.cpu, .memory = latestSystem_.memory};
    if (sources_.sensors)
        sources_.sensors->refresh();
    if (hasOpenSensors()) {
        snapshot.fans = sources_.sensors->readFans();
        snapshot.temps = sources_.sensors->readTemperatures();
        snapshot.power = sources_.sensors->readPower();
    }
    // After the readings: what they found decides what can be told.
    snapshot.cooling = cooling_ = foundCooling();
    if (timer_)
        assignSensorsAvailable(hasOpenSensors());
    snapshot.power.gpuWatts = readGPUWatts(now);
    snapshot.thermalPressure = readThermalPressure();
    readStrain(snapshot);
    snapshot.processes = latestProcesses_;
    readGraphicsWork(snapshot);
    const double smoothed = heat_.smoothed(now, snapshot.temps.soc);
    snapshot.chipHeat = cooling_ == Cooling::load ? 0 : smoothed;
    return snapshot;
}

double SensorHub::readGPUWatts(UnixSeconds now) {
    // Below 50 ms the source gives nothing: until it can, what it gave last still holds.
    constexpr double shortestSeconds = 0.1;
    if (!sources_.gpu)
        return 0;
    if (!gpuReadAt_ || now < *gpuReadAt_ || now - *gpuReadAt_ >= shortestSeconds) {
        gpuWatts_ = sources_.gpu->sampleWatts();
        gpuReadAt_ = now;
    }
    return gpuWatts_;
}

void SensorHub::readStrain(Snapshot& snapshot) {
    if (!strain_)
        return;
    StrainReading strain = strain_->read();
    snapshot.stalls = strain.stalls;
    snapshot.throttle = std::move(strain.throttle);
    snapshot.gpuPercent = strain.gpuPercent;
    snapshot.power.cpuWatts = strain.cpuWatts;
    snapshot.favoursSpeed = strain.profile == PowerProfile::performance;
    gpuAwakePercent_ = strain.gpuAwakePercent;
}

void SensorHub::readGraphicsWork(Snapshot& snapshot) {
    graphics_.add(snapshot, gpuAwakePercent_);
    // Whoever keeps the graphics processor busy may use next to nothing of the processors, and be far down the list.
    if (graphics_.workers() != listedWorkers_)
        processes_.alsoList(listedWorkers_ = graphics_.workers());
}

void SensorHub::tick() {
    if (!isReplay_)
        appendAndPublish(measure(environment_.now()));
}

void SensorHub::tickUnlessJustDone() {
    if (isReplay_)
        return;
    const UnixSeconds now = environment_.now();
    const double elapsed = now - snapshot_.timestamp;
    const double shortest =
        shortestGapSeconds(timerInterval(environment_.interval, settings_.value(Setting::sampleInterval)));
    // A clock that stands still or stepped back says nothing of when the last round was.
    if (ticks_ > 0 && elapsed > 0 && elapsed < shortest)
        return;
    appendAndPublish(measure(now));
}

void SensorHub::beginReplay(const std::string& machineName, std::optional<RecordedProcessors> processors,
                            SystemKind system) {
    isReplay_ = true;
    history_.setSystem(system);
    verdict_.system = system;
    // A recording's process numbers are anybody's by now.
    quits_->disable();
    machineName_ = machineName;
    recordedProcessors_ = processors;
}

void SensorHub::accept(Snapshot snapshot) {
    const Transaction transaction(*this);
    cooling_ = snapshot.cooling;
    takeSingleReadings(snapshot);
    // A recording holds no names of fans.
    if (!words().isMac())
        for (FanReading& fan : snapshot.fans)
            fan.name = fan.label(words().kind);
    if (!snapshot.fans.empty() || snapshot.temps != Temperatures())
        assignSensorsAvailable(true);
    assignProcessesReady();
    // It brings its list along, and whoever measured it has looked often enough.
    samplesWithList_ = samplesForVerdict;
    appendAndPublish(std::move(snapshot));
}

void SensorHub::countSample() {
    if (ticks_ == 0)
        firstSampleAt_ = snapshot_.timestamp;
    if (!processesReady_ || samplesWithList_ >= samplesForVerdict)
        return;
    ++samplesWithList_;
    // The first verdict is not a change of the one before.
    if (samplesWithList_ == samplesForVerdict)
        animation_.reset();
}

void SensorHub::appendAndPublish(Snapshot snapshot) {
    const Transaction transaction(*this);
    history_.append(snapshot, processesReady_);
    history_.setProcessorCount(processorCount());
    extremes_.add(snapshot);
    snapshot_ = std::move(snapshot);
    countSample();
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
}

void SensorHub::publish(bool force) {
    const Transaction transaction(*this);
    publishDerived(force);
}

void SensorHub::publishDerived(bool force) {
    sampleCores(coresPaneVisible_);
    Vitals vitals = Vitals::quantising(snapshot_);
    Verdict verdict = DiagnosisEngine::evaluate(history_, format_);
    std::vector<ProcessGroup> suspects = rankedSuspects(history_);
    if (vitals != vitals_) {
        vitals_ = std::move(vitals);
        emit vitalsChanged();
    }
    verdict_ = std::move(verdict);
    emit verdictChanged();
    assignSuspects(std::move(suspects));
    cores_ = recordedCores_ ? *recordedCores_ : sources_.cores ? sources_.cores->cores() : std::vector<Core>();
    emit coresChanged();
    if (readsSingleSensors())
        lookAtSingleSensors();

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

const std::string& SensorHub::machineName() const {
    if (!machineName_)
        machineName_ = vantoro::machineName(machine_ ? machine_->modelIdentifier() : std::nullopt,
                                            machine_ ? machine_->processorBrand() : std::nullopt, words().kind);
    return *machineName_;
}

std::string SensorHub::sensorSummary() const {
    if (isReplay_) {
        const Temperatures& temps = snapshot_.temps;
        const auto recorded = std::ranges::count_if(
            temperatureFigures, [&temps](const TemperatureFigure& figure) { return temps.*figure.celsius > 0; });
        return vantoro::sensorSummary(cooling_, static_cast<int>(snapshot_.fans.size()), static_cast<int>(recorded),
                                      words().kind);
    }
    return vantoro::sensorSummary(cooling_, hasOpenSensors() ? sources_.sensors->fanCount() : 0,
                                  hasOpenSensors() ? sources_.sensors->sensorCount() : 0, words().kind);
}

} // namespace vantoro
