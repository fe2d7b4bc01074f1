// The one long-lived object that drives sampling: a timer ticks, a tick reads every source once, appends a snapshot to
// the history and publishes what the interface draws from.
#pragma once

#include "Model/History/History.h"
#include "Model/History/Tracking.h"
#include "Model/Live/GraphicsWork.h"
#include "Model/Live/ProcessMonitor.h"
#include "Model/Live/Settings.h"
#include "Model/Readers/SensorSources.h"
#include "Model/Recording/Recording.h"
#include "Model/Records/SystemWords.h"
#include "Model/Records/Telemetry.h"
#include "Model/Records/Verdict.h"
#include "Model/Text/Format.h"
#include "Model/Text/Motion.h"
#include "Platform/Platform.h"
#include "Platform/Posix/Clocks.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <QObject>
#include <QTimer>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// Whether enough has been measured for anything to be said of this machine.
enum class Measuring : std::uint8_t {
    looking,     ///< the first list of processes, or a second sample that holds it, is still to come
    withoutList, ///< the list is long overdue: what else was found may be shown
    done
};

/// Samples that hold a list of processes before there is a verdict: one alone has nothing to be compared with.
inline constexpr int samplesForVerdict = 2;
/// From then on a list that has not come is said to be missing.
inline constexpr double longestWaitForList = 10;

/// `samplesWithList` samples hold a list of processes; the first sample of all was taken `secondsWaited` ago.
constexpr Measuring measuringState(int samplesWithList, double secondsWaited) {
    if (samplesWithList >= samplesForVerdict)
        return Measuring::done;
    return samplesWithList == 0 && secondsWaited >= longestWaitForList ? Measuring::withoutList : Measuring::looking;
}

class Quits;

/// What the hub takes from the world beside its sources; each may be replaced in a test.
struct HubEnvironment {
    std::function<UnixSeconds()> now;
    /// Seconds of a clock that only goes forward.
    std::function<double()> monotonic = monotonicSeconds;
    /// VANTORO_INTERVAL and VANTORO_PROCESS_MODE as they stood at launch.
    std::optional<std::string> interval;
    std::optional<std::string> processMode;
    ProcessMonitor::Timing processTiming;

    /// The system clock and this process's environment.
    static HubEnvironment ofThisProcess();
};

/// The hub's timer interval: the environment's number as given where the whole text is one (and above 0), else the
/// setting's, between 10 milliseconds and a day.
std::chrono::milliseconds timerInterval(const std::optional<std::string>& environment, double sampleInterval);

/// Less than this after one sampling round there is no other.
double shortestGapSeconds(std::chrono::milliseconds timerInterval);

/// The process monitor's interval in whole seconds, at least 1; the environment plays no part.
int processInterval(double sampleInterval);

/// What views may have done.
class HubActions {
public:
    virtual ~HubActions() = default;

    /// Ends groups of processes, as far as the system allows; none while figures are replayed.
    virtual Quits& quits() = 0;
    /// The cores pane says while it is on screen; only then, or while a list of them is unfolded, are single sensors
    /// read.
    virtual void setCoresPaneVisible(bool visible) = 0;
    /// The sensors pane says while it is on screen with a row unfolded into its single sensors.
    virtual void setSensorListVisible(bool visible) = 0;
    /// Whoever shows what programs do says so each time: only then, or while the graphics processor works, is it found
    /// out who it works for.
    virtual void seePrograms() = 0;
    /// Recomputes and publishes what is derived; `force` rebuilds the chart series even while the window is hidden.
    virtual void publish(bool force) = 0;
};

/// Lives on the main thread. Every published property has a signal of its own, emitted when it is assigned; whatever
/// is published at one moment is published within one transaction.
class SensorHub : public QObject, public HubActions {
    Q_OBJECT
public:
    static constexpr int processRows = 40;
    /// Seconds between chart points.
    static constexpr double seriesStride = 2.0;

    /// The settings must outlive the hub.
    SensorHub(const Platform& platform, SensorSources sources, const Settings& settings, HubEnvironment environment);
    ~SensorHub() override;

    const Snapshot& snapshot() const { return snapshot_; }
    const Vitals& vitals() const { return vitals_; }
    const Verdict& verdict() const { return verdict_; }
    bool isReady() const { return isReady_; }
    bool sensorsAvailable() const { return sensorsAvailable_; }
    bool processesReady() const { return processesReady_; }
    /// How far the sampling is from anything that may be said; a recording is always past it.
    Measuring measuring() const;
    /// Whether the snapshot has a list of processes and the machine's figures that come with it.
    bool hasProcessFigures() const { return isReplay_ || samplesWithList_ > 0; }
    ProcessMonitor::Source processSource() const { return processSource_; }
    int unreadableProcessCount() const { return unreadableProcessCount_; }
    const std::vector<ProcessGroup>& suspects() const { return suspects_; }
    const std::vector<Core>& cores() const { return cores_; }
    /// False while nothing is known of the cores but how many there are.
    bool coresAreMeasured() const { return recordedCores_ || coreSamples_ > 1; }
    /// How many cores of each kind there are; none where that is not known.
    std::optional<RecordedProcessors> processors() const;
    const std::vector<double>& dieSensors() const { return dieSensors_.celsius(); }
    const std::vector<double>& gpuSensors() const { return gpuSensors_.celsius(); }
    /// Looked at long enough to say that none of them measures.
    bool dieSensorsAreSilent() const { return dieSensors_.areSilent(); }
    bool gpuSensorsAreSilent() const { return gpuSensors_.areSilent(); }
    const ChartSeries& series() const { return series_; }
    /// The lowest and the highest that every figure has been since launch.
    const Extremes& extremes() const { return extremes_; }
    /// The highest frequency of a kind of core in MHz, as announced or beyond that as seen; 0 when not known.
    double coreCeilingMHz(bool isPerformance) const;
    /// Whether the graphics processor has sensors at all, measuring or not.
    bool hasGPUSensors() const;
    /// The same of the die.
    bool hasDieSensors() const;
    /// Whether the figures are a recording's that holds no single sensors.
    bool lacksSingleSensors() const { return isReplay_ && !recordsSingleSensors_; }

    const History& history() const { return history_; }
    History& history() { return history_; }
    Cooling cooling() const { return cooling_; }
    const Format& format() const { return format_; }
    /// How what was published last is to be shown; none means at once.
    const std::optional<Animation>& animation() const { return animation_; }

    void setCoresPaneVisible(bool visible) override { coresPaneVisible_ = visible; }
    void setSensorListVisible(bool visible) override { sensorListVisible_ = visible; }
    void seePrograms() override { graphics_.see(); }
    /// For a report or a recording, which somebody reads afterwards.
    void seeProgramsAlways() { graphics_.seeAlways(); }

    /// Starts sampling: the process monitor, one tick at once, then the timer. Does nothing the second time.
    void start();
    /// Only the process monitor, for a caller that ticks by its own clock.
    void startProcesses();
    /// One sampling round.
    void tick();
    /// The same, but nothing right after another round: what is measured over next to no time would be nonsense, and
    /// the moment would count twice. How soon is too soon is a tenth of the interval, at most a fifth of a second.
    void tickUnlessJustDone();
    /// From now on the figures are another time's, of the machine called this: nothing is measured, and nobody's
    /// processes are ended.
    void beginReplay(const std::string& machineName, std::optional<RecordedProcessors> processors = std::nullopt,
                     SystemKind system = SystemKind::macos);
    /// One round with a snapshot that was measured elsewhere or before, in place of the sensors. What it holds is taken
    /// as it stands; it tells how the machine is cooled and whether it has sensors.
    void accept(Snapshot snapshot);
    void publish(bool force) override;
    /// Everything measured at this moment, with the process list and machine figures that were delivered last.
    Snapshot measure(UnixSeconds now);
    /// Adds to what was measured what a recording holds beside it: what each core did since the call before, and the
    /// single sensors, which are not read a second time.
    void addSingleReadings(Snapshot& measured);
    /// What this machine is to be called in a recording of it, begun at this time.
    RecordingHeader recordingHeader(UnixSeconds begun);
    Quits& quits() override { return *quits_; }
    const Quits& quits() const { return *quits_; }

    /// What people call this machine; found on first use.
    const std::string& machineName() const;
    /// What this machine, its system and their parts are called.
    const SystemWords& words() const { return systemWords(history_.system()); }
    /// How many fans and sensors were found.
    std::string sensorSummary() const;
    /// Whether the figures are a recording's rather than this machine's.
    bool isReplay() const { return isReplay_; }

signals:
    void snapshotChanged();
    void vitalsChanged();
    void verdictChanged();
    void isReadyChanged();
    void sensorsAvailableChanged();
    void processesReadyChanged();
    void processSourceChanged();
    void unreadableProcessCountChanged();
    void suspectsChanged();
    void coresChanged();
    void dieSensorsChanged();
    void gpuSensorsChanged();
    void seriesChanged();
    /// The way figures are written has changed, and with it every text that holds one.
    void formatChanged();
    /// Around all that is published at one moment, a whole tick say: it is to be shown together, with animation().
    void transactionBegan();
    void transactionEnded();

private:
    class Transaction;

    bool readsSingleSensors() const { return coresPaneVisible_ || sensorListVisible_; }
    bool hasOpenSensors() const { return sources_.sensors && sources_.sensors->isOpen(); }
    Cooling foundCooling() const;
    void settingChanged(std::string_view key);
    void restartTimer();
    ThermalPressure readThermalPressure() const;
    double readGPUWatts(UnixSeconds now);
    void readStrain(Snapshot& snapshot);
    void readGraphicsWork(Snapshot& snapshot);
    void appendAndPublish(Snapshot snapshot);
    void publishDerived(bool force);
    void takeSingleReadings(Snapshot& recorded);
    void sampleCores(bool withClocks);
    std::optional<int> processorCount() const;
    void lookAtSingleSensors();
    void assignProcessesReady();
    void assignSensorsAvailable(bool available);
    void countSample();
    void lookSoon();
    void assignSuspects(std::vector<ProcessGroup> suspects);
    void rebuildSeries();

    std::shared_ptr<Machine> machine_;
    std::shared_ptr<ThermalState> thermalState_;
    std::shared_ptr<Strain> strain_;
    std::shared_ptr<Activity> activity_;
    GraphicsWork graphics_;
    std::optional<double> gpuAwakePercent_;
    std::vector<std::int32_t> listedWorkers_;
    SensorSources sources_;
    const Settings& settings_;
    HubEnvironment environment_;
    SettingsFormatContext formatContext_;
    Format format_;
    Motion motion_;

    Snapshot snapshot_;
    Vitals vitals_;
    Verdict verdict_;
    bool isReady_ = false;
    bool sensorsAvailable_ = false;
    bool processesReady_ = false;
    ProcessMonitor::Source processSource_;
    int unreadableProcessCount_ = 0;
    std::vector<ProcessGroup> suspects_;
    std::vector<Core> cores_;
    // More than any machine with few sensors has, and much less than those have that misread some at times.
    SingleSensors dieSensors_{8};
    SingleSensors gpuSensors_{4};
    CoreCeilings coreCeilings_;
    ChartSeries series_;
    Extremes extremes_;
    std::optional<Animation> animation_;
    int openTransactions_ = 0;

    History history_;
    Cooling cooling_ = Cooling::fans;
    ProcessMonitor processes_;
    std::unique_ptr<Quits> quits_;
    std::unique_ptr<QTimer> timer_;
    /// While the timer runs.
    std::unique_ptr<Activity::Held> sampling_;
    /// Runs until there is enough for a verdict.
    std::unique_ptr<QTimer> firstLooks_;
    bool windowVisible_ = true;
    bool coresPaneVisible_ = false;
    bool sensorListVisible_ = false;
    bool isReplay_ = false;
    bool recordsSingleSensors_ = false;
    std::optional<std::vector<Core>> recordedCores_;
    std::optional<RecordedProcessors> recordedProcessors_;
    std::uint64_t coreSamples_ = 0;
    std::uint64_t ticks_ = 0;
    int samplesWithList_ = 0;
    UnixSeconds firstSampleAt_ = 0;
    std::vector<ProcessSample> latestProcesses_;
    SystemLine latestSystem_;
    HeatSmoothing heat_;
    double gpuWatts_ = 0;
    std::optional<UnixSeconds> gpuReadAt_;
    mutable std::optional<std::string> machineName_;
};

} // namespace vantoro
