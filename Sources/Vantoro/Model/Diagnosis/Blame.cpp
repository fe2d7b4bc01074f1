// Who is held responsible, and on what ground.
#include "Model/Diagnosis/Diagnosis.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace vantoro {

namespace {

constexpr double spanSeconds = 75;
constexpr double leastCauseCPU = 4.0;
constexpr double leastCauseGraphics = 10.0;

/// What the machine as a whole did over some snapshots.
class MeanWork {
public:
    void add(const Snapshot& snapshot) {
        count_ += 1;
        busyPercent_ += snapshot.cpu.busyPercent();
        systemWatts_ += snapshot.power.systemWatts;
        gpuWatts_ += snapshot.power.gpuWatts;
        gpuPercent_ += snapshot.gpuPercent.value_or(0);
    }

    double busyPercent() const { return busyPercent_ / count_; }
    double systemWatts() const { return systemWatts_ / count_; }
    double gpuWatts() const { return gpuWatts_ / count_; }
    double gpuPercent() const { return gpuPercent_ / count_; }

private:
    double count_ = 0;
    double busyPercent_ = 0;
    double systemWatts_ = 0;
    double gpuWatts_ = 0;
    double gpuPercent_ = 0;
};

/// The snapshots before the window and the ramp whose load was low; none when they are too few or too short a stretch.
std::vector<const Snapshot*> quietSnapshots(const History& history, UnixSeconds windowStart) {
    constexpr double quietLoad = 0.22;
    constexpr std::size_t fewest = 15;
    constexpr double shortestSeconds = 60;
    const UnixSeconds end = std::min(windowStart, history.lastRampStart(std::nullopt).value_or(windowStart));
    const auto& snapshots = history.snapshots();
    std::vector<const Snapshot*> quiet;
    for (std::size_t place = 0; place < snapshots.size() && snapshots[place].timestamp < end; ++place)
        if (history.tellsLoad(place) && history.load(place, snapshots[place].cooling) < quietLoad)
            quiet.push_back(&snapshots[place]);
    if (quiet.size() < fewest || quiet.back()->timestamp - quiet.front()->timestamp < shortestSeconds)
        quiet.clear();
    return quiet;
}

/// Whether nothing that runs explains the present state: all of it ran just the same while the machine was quiet.
bool ranWhileQuiet(const History& history, const SnapshotRun& window, const std::vector<ProcessGroup>& causes) {
    constexpr double mostBusyPercent = 25;
    constexpr double leastTellingPercent = 50;
    constexpr double moreBusyPercent = 5;
    constexpr double moreGraphicsWatts = 2;
    MeanWork now;
    for (const Snapshot& snapshot : window)
        now.add(snapshot);
    const bool isTelling =
        std::ranges::any_of(causes, [](const ProcessGroup& cause) { return cause.totalCPU >= leastTellingPercent; });
    if (isTelling || !(now.busyPercent() <= mostBusyPercent))
        return false;
    const std::vector<const Snapshot*> snapshots = quietSnapshots(history, window.front().timestamp);
    if (snapshots.empty())
        return false;
    MeanWork quiet;
    for (const Snapshot* snapshot : snapshots)
        quiet.add(*snapshot);
    if (now.busyPercent() > quiet.busyPercent() + moreBusyPercent ||
        now.gpuWatts() > quiet.gpuWatts() + moreGraphicsWatts)
        return false;
    if (now.systemWatts() > 0 && quiet.systemWatts() > 0 && now.systemWatts() > 1.15 * quiet.systemWatts() + 1)
        return false;
    // Graphics work whose power nobody tells shows in its share alone.
    return now.gpuWatts() > 0 || now.gpuPercent() <= quiet.gpuPercent() + moreBusyPercent;
}

/// Leaves out what ran just the same while the machine was quiet, when something else came that does so much that the
/// machine is no longer: what was there before did not bring that about.
void leaveOutWhatRanBefore(std::vector<ProcessGroup>& causes, const History& history, const SnapshotRun& window) {
    constexpr double leastGrowth = 25;        // per cent of one core
    constexpr double leastPartOfTheTop = 0.5; // anything less may have come by chance
    constexpr std::size_t looks = 60;         // spread over all of the quiet, as many as tell
    const double needed = causes.empty() ? 0 : std::max(leastGrowth, leastPartOfTheTop * causes.front().totalCPU);
    const auto mayHaveCome = [needed](const ProcessGroup& cause) { return cause.totalCPU >= needed; };
    if (causes.size() < 2 || std::none_of(causes.begin() + 1, causes.end(), mayHaveCome))
        return;
    const std::vector<const Snapshot*> quiet = quietSnapshots(history, window.front().timestamp);
    if (quiet.empty())
        return;
    const std::size_t step = std::max<std::size_t>(1, quiet.size() / looks);
    const auto before = [&](const ProcessGroup& cause) {
        double percent = 0;
        double count = 0;
        for (std::size_t place = 0; place < quiet.size(); place += step, count += 1)
            for (const ProcessSample& row : quiet[place]->processes)
                if ((row.owningAppName() ? *row.owningAppName() : row.displayName()) == cause.key)
                    percent += row.cpuPercent;
        return percent / count;
    };
    const auto ranAlike = [&before](const ProcessGroup& cause) { return cause.totalCPU <= 1.15 * before(cause) + 4; };
    if (ranAlike(causes.front()) && std::ranges::any_of(causes, [&](const ProcessGroup& cause) {
            return mayHaveCome(cause) && cause.totalCPU - before(cause) >= needed;
        }))
        std::erase_if(causes, ranAlike);
}

/// Most work over all of the window first: an average over the time that a process was seen says nothing of how long
/// that was.
void rankByWorkDone(std::vector<ProcessGroup>& causes, const SnapshotRun& window) {
    const auto score = [&window](const ProcessGroup& cause) {
        double total = 0;
        for (const ProcessAggregate& member : cause.members)
            total += member.totalCPU;
        return cause.stressScore - cause.totalCPU +
               std::min(cause.totalCPU, total / static_cast<double>(std::max<std::size_t>(1, window.size())));
    };
    std::ranges::stable_sort(causes, std::greater{}, score);
}

/// Whether what no row accounts for is so much more than what anybody is known to do that nobody stands out.
bool isMostlyUnaccounted(const std::vector<ProcessGroup>& causes, const History& history, const SnapshotRun& window) {
    constexpr double leastPart = 0.5;
    const std::optional<double> rest = unaccountedCPU(window, history.processorCount());
    return rest && !causes.empty() && causes.front().totalCPU < leastPart * *rest;
}

/// Whether the graphics processor is clearly the busier: its share may be its decoder's alone, or that of a low clock.
bool isMostlyGraphics(const SnapshotRun& window) {
    constexpr double clearly = 2;
    MeanWork work;
    for (const Snapshot& snapshot : window)
        work.add(snapshot);
    return work.gpuPercent() > clearly * work.busyPercent();
}

/// Ranks by graphics work; nobody is left where the first does not do enough of it to be known as the cause.
void rankByGraphics(std::vector<ProcessGroup>& causes, const SnapshotRun& window) {
    constexpr double leastShare = 0.25;
    double told = 0;
    double ofRows = 0;
    bool isTold = false;
    for (const Snapshot& snapshot : window) {
        told += snapshot.gpuPercent.value_or(0);
        isTold = isTold || snapshot.gpuPercent;
        for (const ProcessSample& row : snapshot.processes)
            ofRows += row.gpuPercent.value_or(0);
    }
    std::ranges::stable_sort(causes, std::greater{}, &ProcessGroup::gpuPercent);
    const double whole = (isTold ? told : ofRows) / static_cast<double>(std::max<std::size_t>(1, window.size()));
    const double first = causes.empty() ? 0 : causes.front().gpuPercent.value_or(0);
    if (!(first > 0 && first >= leastShare * whole))
        causes.clear();
}

bool waitsForMemory(const SnapshotRun& window, const Snapshot& now) {
    constexpr double leastPercent = 10;
    double percent = 0;
    for (const Snapshot& snapshot : window)
        percent += snapshot.stalls.memory.value_or(0);
    return now.stalls.memory.value_or(0) >= leastPercent ||
           (!window.empty() && percent >= leastPercent * static_cast<double>(window.size()));
}

/// Puts who holds the most memory first. True when somebody holds so much that it is the cause.
bool rankByMemory(std::vector<ProcessGroup>& causes, const History& history) {
    constexpr std::uint64_t leastPart = 20;
    std::vector<ProcessGroup> groups = History::groups(history.recent(spanSeconds));
    std::erase_if(groups, [](const ProcessGroup& group) { return group.kind == ProcessKind::kernel; });
    const auto largest = std::ranges::max_element(groups, {}, &ProcessGroup::totalMemory);
    const std::uint64_t total = history.snapshots().back().memory.totalBytes;
    if (largest == groups.end() || largest->totalMemory == 0 || largest->totalMemory < total / leastPart)
        return false;
    std::erase_if(causes, [&](const ProcessGroup& cause) { return cause.key == largest->key; });
    causes.insert(causes.begin(), std::move(*largest));
    return true;
}

} // namespace

bool isEchoOfMemory(const ProcessGroup& group) {
    return group.kind == ProcessKind::kernel &&
           (group.displayName.starts_with("kswapd") || group.displayName.starts_with("kcompactd"));
}

SnapshotRun DiagnosisEngine::causeWindow(const History& history) {
    constexpr double lagSeconds = 15;
    return history.causeWindow(lagSeconds, spanSeconds);
}

std::vector<ProcessGroup> DiagnosisEngine::causes(const History& history, double leastCPU) {
    std::vector<ProcessGroup> groups = History::groups(causeWindow(history));
    const bool isUnderPressure =
        !history.snapshots().empty() && isThrottling(history.snapshots().back().thermalPressure);
    std::erase_if(groups, [&](const ProcessGroup& group) {
        // What it did before the pressure rose is not blamed for it either.
        return (isUnderPressure && group.kind == ProcessKind::kernel && group.displayName == "kernel_task") ||
               !(group.totalCPU >= leastCPU || group.gpuPercent.value_or(0) >= leastCauseGraphics);
    });
    return groups;
}

std::vector<ProcessGroup> blamed(const History& history, Verdict& verdict) {
    std::vector<ProcessGroup> causes = DiagnosisEngine::causes(history, leastCauseCPU);
    const SnapshotRun window = DiagnosisEngine::causeWindow(history);
    const Snapshot& now = history.snapshots().back();
    const bool isFelt = !isAtRest(verdict.state);
    verdict.ranWhileQuiet = isFelt && ranWhileQuiet(history, window, causes);
    if (verdict.ranWhileQuiet)
        return {};
    const bool isOfWork = verdict.cooling == Cooling::load;
    if ((isOfWork || !verdict.speaksOfWork()) &&
        ((isOfWork && isMostlyGraphics(window)) || graphicsLead(window, history.processorCount()))) {
        std::vector<ProcessGroup> ranked = causes;
        rankByGraphics(ranked, window);
        verdict.isOfGraphics = isFelt || !ranked.empty();
        return verdict.isOfGraphics ? ranked : causes;
    }
    const bool isMac = verdict.system == SystemKind::macos;
    if (!isMac)
        rankByWorkDone(causes, window);
    if (isFelt)
        leaveOutWhatRanBefore(causes, history, window);
    const bool isEcho = !causes.empty() && isEchoOfMemory(causes.front());
    verdict.isOfMemory =
        (isFelt || verdict.speaksOfWork()) && (isEcho || waitsForMemory(window, now)) && rankByMemory(causes, history);
    if (isEcho && !verdict.isOfMemory)
        std::stable_partition(causes.begin(), causes.end(), std::not_fn(isEchoOfMemory));
    if (isFelt && !isMac && !verdict.isOfMemory && isMostlyUnaccounted(causes, history, window))
        causes.clear();
    return causes;
}

} // namespace vantoro
