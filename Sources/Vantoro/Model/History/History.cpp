#include "Model/History/History.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace vantoro {

namespace {

constexpr double busyProcessPercent = 25;
constexpr double sustainedWeight = 45;
constexpr double peakWeight = 0.05;
constexpr double energyWeight = 0.35;

bool isBusier(const ProcessSample& a, const ProcessSample& b) {
    return a.cpuPercent > b.cpuPercent;
}

double rampThreshold(Cooling cooling) {
    return cooling == Cooling::fans ? 0.18 : 0.22;
}

double busyPercent(const Snapshot& snapshot) {
    const double percent = 100 - snapshot.cpu.idlePercent;
    return percent > 0 ? std::min(percent, 100.0) : 0; // not a number is nothing
}

} // namespace

void History::keepBusiest(std::vector<ProcessSample>& processes) {
    if (!std::ranges::is_sorted(processes, isBusier))
        std::ranges::stable_sort(processes, isBusier);
    if (processes.size() > processesPerSample)
        processes.resize(processesPerSample);
}

void History::append(Snapshot snapshot, bool hasLoad) {
    keepBusiest(snapshot.processes);
    snapshot.processes.shrink_to_fit();
    snapshot.fans.shrink_to_fit();
    const UnixSeconds cutoff = snapshot.timestamp - retentionSeconds_;
    snapshots_.push_back(std::move(snapshot));
    if (!hasLoad)
        withoutLoad_ = snapshots_.size();
    busyShares_.push_back(newestBusyShare());
    const Cooling cooling = snapshots_.back().cooling;
    const double threshold = rampThreshold(cooling);
    if (threshold != std::exchange(rampThreshold_, threshold))
        rampLength_ = countAbove(threshold);
    else
        rampLength_ = load(snapshots_.size() - 1, cooling) > threshold ? rampLength_ + 1 : 0;
    if (snapshots_.front().timestamp < cutoff)
        dropBefore(cutoff);
}

void History::setRetention(double seconds) {
    retentionSeconds_ = seconds;
    if (!snapshots_.empty())
        dropBefore(snapshots_.back().timestamp - seconds);
}

void History::dropBefore(UnixSeconds cutoff) {
    while (!snapshots_.empty() && snapshots_.front().timestamp < cutoff) {
        snapshots_.pop_front();
        busyShares_.pop_front();
        withoutLoad_ -= withoutLoad_ > 0 ? 1 : 0;
    }
    rampLength_ = std::min(rampLength_, snapshots_.size());
}

std::size_t History::countAbove(double threshold) const {
    std::size_t index = snapshots_.size();
    while (index > 0 && load(index - 1, snapshots_[index - 1].cooling) > threshold)
        --index;
    return snapshots_.size() - index;
}

double History::newestBusyShare() const {
    constexpr double seconds = 10;
    const UnixSeconds now = snapshots_.back().timestamp;
    double percent = 0;
    std::size_t index = snapshots_.size();
    while (index > withoutLoad_ && std::abs(now - snapshots_[index - 1].timestamp) <= seconds)
        percent += busyPercent(snapshots_[--index]);
    const std::size_t count = snapshots_.size() - index;
    return count > 0 ? percent / 100 / static_cast<double>(count) : 0;
}

double History::load(std::size_t index, Cooling cooling) const {
    switch (cooling) {
    case Cooling::fans:
        return snapshots_[index].fanLoad();
    case Cooling::passive:
    case Cooling::heat:
        return Snapshot::heatLoad(snapshots_[index].chipHeat);
    case Cooling::load:
        break;
    }
    return busyShares_[index];
}

std::size_t History::firstIndex(UnixSeconds atOrAfter) const {
    const auto found = std::ranges::lower_bound(snapshots_, atOrAfter, {}, &Snapshot::timestamp);
    return static_cast<std::size_t>(found - snapshots_.begin());
}

SnapshotRun History::run(std::size_t from, std::size_t to) const {
    return {snapshots_.begin() + static_cast<std::ptrdiff_t>(from),
            snapshots_.begin() + static_cast<std::ptrdiff_t>(to)};
}

SnapshotRun History::recent(double seconds) const {
    if (snapshots_.empty())
        return run(0, 0);
    return run(firstIndex(snapshots_.back().timestamp - seconds), snapshots_.size());
}

SnapshotRun History::slice(UnixSeconds from, UnixSeconds to) const {
    const std::size_t first = firstIndex(from);
    const std::size_t last = firstIndex(to);
    return first < last ? run(first, last) : run(0, 0);
}

SnapshotRun History::causeWindow(double lag, double span) const {
    if (snapshots_.empty())
        return run(0, 0);
    const UnixSeconds now = snapshots_.back().timestamp;
    SnapshotRun window = slice(now - span, now - lag);
    if (std::ranges::any_of(window, [](const Snapshot& snapshot) { return !snapshot.processes.empty(); }))
        return window;
    return recent(span);
}

std::optional<UnixSeconds> History::lastRampStart(std::optional<double> threshold) const {
    const std::size_t length = threshold ? countAbove(*threshold) : rampLength_;
    return length > 0 ? std::optional(snapshots_[snapshots_.size() - length].timestamp) : std::nullopt;
}

std::vector<ProcessAggregate> History::aggregate(const SnapshotRun& window) {
    std::vector<ProcessAggregate> aggregates;
    std::vector<const ProcessIdentity*> lastIdentities;
    std::unordered_map<std::int32_t, std::size_t> indexOfPid;
    for (const Snapshot& snapshot : window) {
        for (const ProcessSample& sample : snapshot.processes) {
            const ProcessIdentity& identity = *sample.identity;
            if (identity.isCoolingPause())
                continue;
            const auto [found, isNew] = indexOfPid.try_emplace(identity.pid, aggregates.size());
            if (isNew) {
                aggregates.push_back({.pid = identity.pid,
                                      .displayName = identity.displayName,
                                      .owningAppName = identity.owningAppName,
                                      .owningAppPath = identity.owningAppPath,
                                      .executablePath = identity.executablePath,
                                      .kind = identity.kind,
                                      .user = identity.user,
                                      .firstSeen = snapshot.timestamp});
                lastIdentities.push_back(&identity);
            }
            ProcessAggregate& entry = aggregates[found->second];
            entry.totalCPU += sample.cpuPercent;
            entry.peakCPU = std::max(entry.peakCPU, sample.cpuPercent);
            entry.totalEnergy += sample.energyImpact;
            entry.peakMemory = std::max(entry.peakMemory, sample.memoryBytes);
            entry.samples += 1;
            if (sample.cpuPercent >= busyProcessPercent)
                entry.busySamples += 1;
            entry.lastSeen = snapshot.timestamp;
            // Nearly every sample shares its identity with the one before: only a change is worth copying texts for.
            if (std::exchange(lastIdentities[found->second], &identity) == &identity)
                continue;
            if (!identity.displayName.empty())
                entry.displayName = identity.displayName;
            if (identity.owningAppName)
                entry.owningAppName = identity.owningAppName;
            if (identity.owningAppPath)
                entry.owningAppPath = identity.owningAppPath;
            entry.kind = identity.kind;
        }
    }
    const double windowLength = static_cast<double>(std::max<std::size_t>(1, window.size()));
    for (ProcessAggregate& entry : aggregates) {
        entry.averageCPU = entry.totalCPU / entry.samples;
        entry.averageEnergy = entry.totalEnergy / entry.samples;
        entry.sustained = entry.busySamples / windowLength;
        entry.stressScore = entry.averageCPU + energyWeight * entry.averageEnergy + sustainedWeight * entry.sustained +
                            peakWeight * entry.peakCPU;
    }
    std::ranges::stable_sort(aggregates, std::greater{}, &ProcessAggregate::stressScore);
    return aggregates;
}

std::vector<ProcessGroup> History::group(const std::vector<ProcessAggregate>& aggregates) {
    std::vector<ProcessGroup> groups;
    std::unordered_map<std::string_view, std::size_t> indexOfKey;
    for (const ProcessAggregate& aggregate : aggregates) {
        const std::string& key = aggregate.owningAppName ? *aggregate.owningAppName : aggregate.displayName;
        const auto [found, isNew] = indexOfKey.try_emplace(key, groups.size());
        if (isNew)
            groups.push_back({.key = key,
                              .displayName = key,
                              .owningAppPath = aggregate.owningAppPath,
                              .kind = aggregate.kind,
                              .user = aggregate.user});
        ProcessGroup& group = groups[found->second];
        group.members.push_back(aggregate);
        group.totalCPU += aggregate.averageCPU;
        group.peakCPU = std::max(group.peakCPU, aggregate.peakCPU);
        group.totalMemory += aggregate.peakMemory;
        group.sustained = std::max(group.sustained, aggregate.sustained);
        if (!group.owningAppPath)
            group.owningAppPath = aggregate.owningAppPath;
        if (aggregate.kind == ProcessKind::userApp)
            group.kind = ProcessKind::userApp;
    }
    for (ProcessGroup& group : groups) {
        group.stressScore = group.totalCPU + sustainedWeight * group.sustained + peakWeight * group.peakCPU;
        std::ranges::stable_sort(group.members, std::greater{}, &ProcessAggregate::averageCPU);
    }
    std::ranges::stable_sort(groups, std::greater{}, &ProcessGroup::stressScore);
    return groups;
}

std::vector<ProcessGroup> rankedSuspects(const History& history) {
    constexpr double windowSeconds = 20;
    constexpr double leastPercent = 0.6;
    std::vector<ProcessGroup> groups = History::group(History::aggregate(history.recent(windowSeconds)));
    // NaN counts as idle.
    std::erase_if(groups, [](const ProcessGroup& group) { return !(group.totalCPU >= leastPercent); });
    std::ranges::stable_sort(groups, std::greater{}, &ProcessGroup::totalCPU);
    for (ProcessGroup& group : groups)
        group.stressScore = std::round(group.totalCPU);
    return groups;
}

ChartSeries chartSeries(const History& history) {
    constexpr double shownSeconds = 900;
    constexpr std::size_t longestUnthinned = 239;
    constexpr std::size_t wantedPoints = 120;
    const SnapshotRun run = history.recent(shownSeconds);
    const std::size_t step = run.size() > longestUnthinned ? run.size() / wantedPoints : 1;
    ChartSeries series;
    for (auto* points : {&series.fan, &series.cpu, &series.temp, &series.chip, &series.power})
        points->reserve(run.size() / step + 1);
    for (std::size_t i = 0; i < run.size(); i += step) {
        const Snapshot& snapshot = run[i];
        const UnixSeconds time = snapshot.timestamp;
        series.fan.push_back({time, snapshot.fanLoad() * 100});
        series.cpu.push_back({time, busyPercent(snapshot)});
        series.temp.push_back({time, snapshot.temps.soc});
        series.chip.push_back({time, snapshot.temps.socMean});
        series.power.push_back({time, snapshot.power.systemWatts});
    }
    return series;
}

} // namespace vantoro
