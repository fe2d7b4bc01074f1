#include "Model/History/History.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantoro {

namespace {

/// From this share of the graphics processor on a row keeps its place whatever its processor time.
constexpr double leastGraphicsPercent = 1;

bool isBusier(const ProcessSample& a, const ProcessSample& b) {
    return a.cpuPercent > b.cpuPercent;
}

/// Those of a recording that was begun so long ago; the figures of memory and processors come with the rows.
bool isBeforeTheFirstList(const Snapshot& snapshot, double seconds) {
    constexpr double longestWait = 10;
    return seconds <= longestWait && snapshot.processes.empty() && snapshot.memory.totalBytes == 0 &&
           snapshot.cpu == CPULoad();
}

double rampThreshold(Cooling cooling) {
    return cooling == Cooling::fans ? 0.18 : 0.22;
}

bool isAtGraphicsWork(const ProcessSample& row) {
    return row.gpuPercent.value_or(0) >= leastGraphicsPercent;
}

} // namespace

void History::keepBusiest(std::vector<ProcessSample>& processes) {
    if (!std::ranges::is_sorted(processes, isBusier))
        std::ranges::stable_sort(processes, isBusier);
    if (processes.size() <= processesPerSample)
        return;
    // What renders hardly computes: it takes the place of the least busy that does not render.
    std::size_t last = processesPerSample;
    for (std::size_t place = processesPerSample; place < processes.size() && last > 0; ++place) {
        if (!isAtGraphicsWork(processes[place]))
            continue;
        while (last > 0 && isAtGraphicsWork(processes[last - 1]))
            --last;
        if (last > 0)
            std::swap(processes[--last], processes[place]);
    }
    processes.resize(processesPerSample);
    if (last < processesPerSample)
        std::ranges::stable_sort(processes, isBusier);
}

void History::append(Snapshot snapshot, bool hasLoad) {
    keepBusiest(snapshot.processes);
    snapshot.processes.shrink_to_fit();
    snapshot.fans.shrink_to_fit();
    if (snapshot.cores && !snapshot.cores->empty())
        processorCount_ = static_cast<int>(snapshot.cores->size());
    const UnixSeconds cutoff = snapshot.timestamp - retentionSeconds_;
    snapshots_.push_back(std::move(snapshot));
    if (!hasLoad ||
        (withoutLoad_ + 1 == snapshots_.size() &&
         isBeforeTheFirstList(snapshots_.back(), snapshots_.back().timestamp - snapshots_.front().timestamp)))
        withoutLoad_ = snapshots_.size();
    workShares_.push_back(newestWorkShares());
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
        workShares_.pop_front();
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

History::WorkShares History::newestWorkShares() const {
    constexpr double seconds = 10;
    const UnixSeconds now = snapshots_.back().timestamp;
    const auto isCounted = [&](std::size_t place) { return std::abs(now - snapshots_[place].timestamp) <= seconds; };
    const auto mean = [](double percent, int count) { return count > 0 ? percent / 100 / count : 0; };
    double processors = 0;
    double graphics = 0;
    int count = 0;
    int graphicsCount = 0;
    for (std::size_t end = snapshots_.size(); end > withoutLoad_ && isCounted(end - 1); --end) {
        const Snapshot& snapshot = snapshots_[end - 1];
        processors += snapshot.cpu.busyPercent();
        graphics += snapshot.gpuPercent.value_or(0);
        ++count;
        graphicsCount += snapshot.gpuPercent ? 1 : 0;
    }
    return {mean(processors, count), std::clamp(mean(graphics, graphicsCount), 0.0, 1.0)};
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
    return std::max(workShares_[index].processors, workShares_[index].graphics);
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
        series.cpu.push_back({time, snapshot.cpu.busyPercent()});
        series.temp.push_back({time, snapshot.temps.soc});
        series.chip.push_back({time, snapshot.temps.socMean});
        series.power.push_back({time, snapshot.power.systemWatts});
    }
    return series;
}

} // namespace vantoro
