// What the rows of a stretch of history add up to: by process, by application, and beside what the machine as a whole
// did.
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

using PlaceOfPid = std::unordered_map<std::int32_t, std::size_t>;

/// What the rows of one place held at once in the snapshot that held most, and on average.
struct Held {
    double mostCPU = 0;
    double meanCPU = 0;
    std::uint64_t mostMemory = 0;

    /// Averages of processes that did not live at the same time add up to more than there ever was.
    double bounded(double sumOfAverages) const {
        constexpr double beyondRounding = 1 + 1e-9;
        return sumOfAverages > mostCPU * beyondRounding ? meanCPU : sumOfAverages;
    }
};

std::vector<Held> heldAtOnce(const SnapshotRun& window, const PlaceOfPid& placeOfPid, std::size_t places) {
    struct Sum {
        double cpu = 0;
        std::uint64_t memory = 0;
    };
    std::vector<Held> held(places);
    std::vector<Sum> sums(places);
    for (const Snapshot& snapshot : window) {
        std::ranges::fill(sums, Sum{});
        for (const ProcessSample& row : snapshot.processes) {
            if (const auto place = placeOfPid.find(row.pid()); place != placeOfPid.end()) {
                sums[place->second].cpu += row.cpuPercent;
                sums[place->second].memory += row.memoryBytes;
            }
        }
        for (std::size_t place = 0; place < places; ++place) {
            held[place].mostCPU = std::max(held[place].mostCPU, sums[place].cpu);
            held[place].meanCPU += sums[place].cpu / static_cast<double>(window.size());
            held[place].mostMemory = std::max(held[place].mostMemory, sums[place].memory);
        }
    }
    return held;
}

/// Several processes are held to what they ever used at once.
void boundTotals(std::vector<ProcessGroup>& groups, const SnapshotRun& window) {
    PlaceOfPid placeOfPid;
    for (std::size_t place = 0; place < groups.size(); ++place)
        if (groups[place].members.size() >= 2)
            for (const ProcessAggregate& member : groups[place].members)
                placeOfPid.emplace(member.pid, place);
    if (placeOfPid.empty())
        return;
    const std::vector<Held> held = heldAtOnce(window, placeOfPid, groups.size());
    for (std::size_t place = 0; place < groups.size(); ++place) {
        if (groups[place].members.size() < 2)
            continue;
        groups[place].totalCPU = held[place].bounded(groups[place].totalCPU);
        groups[place].totalMemory = std::min(groups[place].totalMemory, held[place].mostMemory);
    }
}

} // namespace

std::vector<ProcessAggregate> History::aggregate(const SnapshotRun& window) {
    std::vector<ProcessAggregate> aggregates;
    std::vector<const ProcessIdentity*> lastIdentities;
    std::unordered_map<std::int32_t, std::size_t> indexOfPid;
    for (const Snapshot& snapshot : window) {
        const bool isUnderPressure = snapshot.thermalPressure >= ThermalPressure::serious;
        for (const ProcessSample& sample : snapshot.processes) {
            const ProcessIdentity& identity = *sample.identity;
            if (identity.isSlowing(isUnderPressure))
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
            if (sample.gpuPercent)
                entry.gpuPercent = entry.gpuPercent.value_or(0) + *sample.gpuPercent;
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
        if (entry.gpuPercent)
            *entry.gpuPercent /= windowLength;
        entry.stressScore = entry.averageCPU + energyWeight * entry.averageEnergy + sustainedWeight * entry.sustained +
                            peakWeight * entry.peakCPU;
    }
    std::ranges::stable_sort(aggregates, std::greater{}, &ProcessAggregate::stressScore);
    return aggregates;
}

std::vector<ProcessGroup> History::group(std::vector<ProcessAggregate> aggregates, const SnapshotRun& window) {
    std::vector<ProcessGroup> groups;
    groups.reserve(aggregates.size()); // what the index below views must stay where it is
    std::unordered_map<std::string_view, std::size_t> indexOfKey;
    for (ProcessAggregate& aggregate : aggregates) {
        const std::string& key = aggregate.owningAppName ? *aggregate.owningAppName : aggregate.displayName;
        auto found = indexOfKey.find(key);
        if (found == indexOfKey.end()) {
            groups.push_back({.key = key,
                              .displayName = key,
                              .owningAppPath = aggregate.owningAppPath,
                              .kind = aggregate.kind,
                              .user = aggregate.user});
            found = indexOfKey.emplace(groups.back().key, groups.size() - 1).first;
        }
        ProcessGroup& group = groups[found->second];
        group.totalCPU += aggregate.averageCPU;
        group.peakCPU = std::max(group.peakCPU, aggregate.peakCPU);
        group.totalMemory += aggregate.peakMemory;
        group.sustained = std::max(group.sustained, aggregate.sustained);
        if (aggregate.gpuPercent)
            group.gpuPercent = std::min(group.gpuPercent.value_or(0) + *aggregate.gpuPercent, 100.0);
        if (!group.owningAppPath)
            group.owningAppPath = aggregate.owningAppPath;
        if (aggregate.kind == ProcessKind::userApp)
            group.kind = ProcessKind::userApp;
        group.members.push_back(std::move(aggregate));
    }
    boundTotals(groups, window);
    for (ProcessGroup& group : groups) {
        group.stressScore = group.totalCPU + sustainedWeight * group.sustained + peakWeight * group.peakCPU;
        std::ranges::stable_sort(group.members, std::greater{}, &ProcessAggregate::averageCPU);
    }
    std::ranges::stable_sort(groups, std::greater{}, &ProcessGroup::stressScore);
    return groups;
}

bool graphicsLead(const SnapshotRun& window, std::optional<int> processorCount) {
    constexpr double leastWatts = 8;
    constexpr double leastBusyPercent = 50; // where its power is not told
    constexpr double restOfTheSystemWatts = 5;
    constexpr double idleProcessorsPercent = 30;
    constexpr double leastRenderingPercent = 10;
    /// Over the snapshots that tell the other figure.
    struct Sum {
        double graphicsWatts = 0;
        double otherWatts = 0;
        bool isTold = false;

        void add(double graphics, double other) { *this = {graphicsWatts + graphics, otherWatts + other, true}; }
    };
    Sum besideProcessors;
    Sum withinSystem;
    double watts = 0;
    double busyPercent = 0;
    double graphicsPercent = 0;
    bool tellsOfGraphics = false;
    for (const Snapshot& snapshot : window) {
        const PowerReading& power = snapshot.power;
        watts += power.gpuWatts;
        busyPercent += snapshot.cpu.busyPercent();
        graphicsPercent += snapshot.gpuPercent.value_or(0);
        for (const ProcessSample& row : snapshot.processes) {
            tellsOfGraphics = tellsOfGraphics || row.gpuPercent;
            if (processorCount && row.gpuPercent.value_or(0) >= leastRenderingPercent)
                busyPercent -= row.cpuPercent / *processorCount;
        }
        if (power.cpuWatts)
            besideProcessors.add(power.gpuWatts, *power.cpuWatts);
        else if (power.systemWatts > 0)
            withinSystem.add(power.gpuWatts, power.systemWatts - restOfTheSystemWatts);
        tellsOfGraphics = tellsOfGraphics || snapshot.gpuPercent || power.cpuWatts;
    }
    const auto snapshots = static_cast<double>(window.size());
    const bool processorsIdle = busyPercent < idleProcessorsPercent * snapshots;
    if (!tellsOfGraphics)
        return false;
    if (!(watts > 0))
        return processorsIdle && graphicsPercent >= leastBusyPercent * snapshots;
    if (watts < leastWatts * snapshots)
        return false;
    if (besideProcessors.isTold)
        return besideProcessors.graphicsWatts >= besideProcessors.otherWatts;
    if (withinSystem.isTold)
        return withinSystem.graphicsWatts >= 0.5 * withinSystem.otherWatts;
    return processorsIdle;
}

double togetherCPU(const std::vector<ProcessGroup>& groups, const SnapshotRun& window) {
    double sum = 0;
    PlaceOfPid placeOfPid;
    for (const ProcessGroup& group : groups) {
        sum += group.totalCPU;
        for (const ProcessAggregate& member : group.members)
            placeOfPid.emplace(member.pid, 0);
    }
    return heldAtOnce(window, placeOfPid, 1).front().bounded(sum);
}

std::optional<double> unaccountedCPU(const SnapshotRun& window, std::optional<int> processorCount) {
    constexpr double leastShare = 0.1;
    constexpr double leftOutAtMost = 100; // processes
    if (!processorCount || *processorCount < 1)
        return std::nullopt;
    const double processors = *processorCount;
    double rest = 0;
    double leftOut = 0;
    double snapshots = 0;
    for (const Snapshot& snapshot : window) {
        if (snapshot.processes.empty())
            continue;
        double rows = 0;
        double pause = 0;
        double least = INFINITY;
        for (const ProcessSample& row : snapshot.processes) {
            if (row.identity->isCoolingPause())
                pause = std::max(pause, row.cpuPercent);
            else
                rows += row.cpuPercent;
            // Rows that were kept for their graphics work say nothing of those that were not.
            if (!row.gpuPercent)
                least = std::min(least, row.cpuPercent);
        }
        // The threads that make the processors pause are alike and as many as those; a list may hold but one.
        rest += snapshot.cpu.busyPercent() * processors - rows - pause * processors;
        if (snapshot.processes.size() >= History::processesPerSample && std::isfinite(least))
            leftOut += least * leftOutAtMost;
        snapshots += 1;
    }
    if (!(rest > leastShare * 100 * processors * snapshots) || rest <= leftOut)
        return std::nullopt;
    return rest / snapshots;
}

std::vector<ProcessGroup> rankedSuspects(const History& history) {
    constexpr double windowSeconds = 20;
    constexpr double leastCPU = 0.6;
    constexpr double leastGraphics = 1;
    const SnapshotRun window = history.recent(windowSeconds);
    std::vector<ProcessGroup> groups = History::groups(window);
    // NaN counts as idle.
    std::erase_if(groups, [](const ProcessGroup& group) {
        return !(group.totalCPU >= leastCPU || group.gpuPercent.value_or(0) >= leastGraphics);
    });
    std::ranges::stable_sort(groups, std::greater{}, &ProcessGroup::totalCPU);
    if (graphicsLead(window, history.processorCount()))
        std::ranges::stable_sort(groups, std::greater{}, &ProcessGroup::gpuPercent);
    for (ProcessGroup& group : groups)
        group.stressScore = std::round(group.totalCPU);
    return groups;
}

} // namespace vantoro
