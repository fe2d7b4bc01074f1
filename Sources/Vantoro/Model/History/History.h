// The rolling, time-ordered store of snapshots, the aggregation of a stretch of it into processes and applications, and
// what is drawn from it: the culprit list and the lines of the charts.
#pragma once

#include "Model/Records/ProcessAggregate.h"
#include "Model/Records/Telemetry.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

namespace vantoro {

/// A contiguous run of a history's snapshots, oldest first: a view that is valid until the history changes.
class SnapshotRun {
public:
    using Iterator = std::deque<Snapshot>::const_iterator;

    SnapshotRun() = default;
    SnapshotRun(Iterator first, Iterator last) : first_(first), last_(last) {}

    Iterator begin() const { return first_; }
    Iterator end() const { return last_; }
    bool empty() const { return first_ == last_; }
    std::size_t size() const { return static_cast<std::size_t>(last_ - first_); }
    const Snapshot& operator[](std::size_t index) const { return first_[static_cast<std::ptrdiff_t>(index)]; }
    const Snapshot& front() const { return *first_; }
    const Snapshot& back() const { return *(last_ - 1); }

private:
    Iterator first_;
    Iterator last_;
};

class History {
public:
    static constexpr double defaultRetentionSeconds = 1800;
    static constexpr std::size_t processesPerSample = 20;

    /// Oldest first, in the order of appending.
    const std::deque<Snapshot>& snapshots() const { return snapshots_; }
    double retentionSeconds() const { return retentionSeconds_; }

    /// Whose machine was measured; a Mac unless told.
    SystemKind system() const { return system_; }
    void setSystem(SystemKind system) { system_ = system; }

    /// How many logical processors the machine has; none while nobody told. A snapshot that holds its cores tells, too.
    std::optional<int> processorCount() const { return processorCount_; }
    void setProcessorCount(std::optional<int> count) { processorCount_ = count; }

    /// Stores one tick with its processesPerSample busiest rows, busiest first (ties keep their order), and drops what
    /// is older than the retention. Rows that render keep their place before those that merely compute more.
    /// Without `hasLoad` nobody has told yet how busy the processors are, and the snapshot says nothing of it; nor do a
    /// recording's first, while they hold neither rows nor any figure that comes with them.
    void append(Snapshot snapshot, bool hasLoad = true);

    /// What append keeps of a tick's rows, in its order.
    static void keepBusiest(std::vector<ProcessSample>& processes);

    /// Changes the retention and trims at once.
    void setRetention(double seconds);

    /// The snapshots no older than this before the newest.
    SnapshotRun recent(double seconds) const;

    /// The snapshots with from <= timestamp < to.
    SnapshotRun slice(UnixSeconds from, UnixSeconds to) const;

    /// Where to look for the cause of the present state: from `span` down to `lag` seconds before the newest snapshot,
    /// or, when no process row falls in there, all of the last `span` seconds.
    SnapshotRun causeWindow(double lag, double span) const;

    /// The share of the processors' time that was not idle, 0 to 1: the mean of the snapshots of the ten seconds up to
    /// the one at this place.
    double busyShare(std::size_t index) const { return workShares_[index].processors; }
    /// The same of the graphics processor; 0 where none of them tells.
    double graphicsShare(std::size_t index) const { return workShares_[index].graphics; }
    /// Whether the snapshot at this place says how busy the processors are.
    bool tellsLoad(std::size_t index) const { return index >= withoutLoad_; }
    /// How hard a machine cooled this way worked at the snapshot at this place, 0 to 1: its fan load, the heat load of
    /// its smoothed chip temperature, or the larger of the shares above.
    double load(std::size_t index, Cooling cooling) const;

    /// When the unbroken run of snapshots above the threshold that reaches up to now began; none when the newest is not
    /// above it. Each snapshot is measured by the load that its own cooling goes by; without a threshold it is 0.18 of
    /// the fan load, 0.22 of any other.
    std::optional<UnixSeconds> lastRampStart(std::optional<double> threshold) const;

    /// Per process over the window, highest stress score first.
    static std::vector<ProcessAggregate> aggregate(const SnapshotRun& window);

    /// Per application (or lone process), highest stress score first; each group's members busiest first. `window` is
    /// what was aggregated: its processes' averages add up to their group's share unless they never used as much at
    /// once, as of jobs that follow each other; then that share is the mean of what they used together in each
    /// snapshot. Nor do they hold more memory than they ever held at once.
    static std::vector<ProcessGroup> group(std::vector<ProcessAggregate> aggregates, const SnapshotRun& window);
    /// Both in one.
    static std::vector<ProcessGroup> groups(const SnapshotRun& window) { return group(aggregate(window), window); }

private:
    std::size_t firstIndex(UnixSeconds atOrAfter) const;
    void dropBefore(UnixSeconds cutoff);
    SnapshotRun run(std::size_t from, std::size_t to) const;
    std::size_t countAbove(double threshold) const;
    struct WorkShares {
        double processors = 0;
        double graphics = 0;
    };
    WorkShares newestWorkShares() const;

    std::deque<Snapshot> snapshots_;
    /// One for each of them.
    std::deque<WorkShares> workShares_;
    /// How many of the oldest say nothing of the load.
    std::size_t withoutLoad_ = 0;
    SystemKind system_ = SystemKind::macos;
    std::optional<int> processorCount_;
    double retentionSeconds_ = defaultRetentionSeconds;
    /// How many of the newest snapshots lie above the newest one's own threshold without a break; kept up to date,
    /// since every evaluation asks and a machine that stays warm would have all of the history walked through each
    /// time.
    std::size_t rampLength_ = 0;
    double rampThreshold_ = 0;
};

/// Whether the graphics processor is what the power of this window went to: it draws 8 W at least and half of what it
/// and the processors draw; where theirs is not told, half of the system's power less 5 W; without either it leads
/// while the processors are under 30 % busy. Where its own power is not told it leads while it is at least half busy
/// and they are under 30 %. What those who render compute does not count against it where it is known how many
/// processors there are. Never where nothing is told of graphics work, as in the first recordings.
bool graphicsLead(const SnapshotRun& window, std::optional<int> processorCount);

/// What groups of this window use together, in per cent of one core: the sum of their shares, held to what they ever
/// used at once as a group's own share is.
double togetherCPU(const std::vector<ProcessGroup>& groups, const SnapshotRun& window);

/// What the processors did beside all that the rows tell of, in per cent of one core as those: interrupts, programs
/// that may not be read, a host's work. The mean over the snapshots that have rows; none unless it exceeds a tenth of
/// the machine, nor where the number of processors is not known. A list that was cut to its length leaves out what is
/// no busier than its last row: what a hundred such could have done is not held to be unaccounted for.
std::optional<double> unaccountedCPU(const SnapshotRun& window, std::optional<int> processorCount);

/// The applications of the last 20 seconds that use at least 0.6 % of a core or 1 % of the graphics processor, busiest
/// first; where graphics lead, what uses most of those. Their stress score is their processor use as a whole number, so
/// that the order of business changes only when a shown figure does.
std::vector<ProcessGroup> rankedSuspects(const History& history);

/// One chart point.
struct TimePoint {
    UnixSeconds time = 0;
    double value = 0;

    bool operator==(const TimePoint&) const = default;
};

/// Oldest point first; all five hold the same instants.
struct ChartSeries {
    std::vector<TimePoint> fan;   ///< fan load, per cent
    std::vector<TimePoint> cpu;   ///< processor time not idle, per cent
    std::vector<TimePoint> temp;  ///< the chip's headline temperature, °C
    std::vector<TimePoint> chip;  ///< mean of the die sensors, °C
    std::vector<TimePoint> power; ///< whole-system draw, watts

    bool operator==(const ChartSeries&) const = default;
};

/// The last 15 minutes; a run of 240 snapshots or more is thinned evenly to about 120 points.
ChartSeries chartSeries(const History& history);

/// One figure of each snapshot of the last 15 minutes, thinned as the charts are: a run of 240 snapshots or more to
/// about 120 points.
template <class Figure>
std::vector<TimePoint> thinnedSeries(const History& history, Figure figure) {
    constexpr double seconds = 900;
    constexpr std::size_t mostKept = 239;
    constexpr std::size_t points = 120;
    const SnapshotRun run = history.recent(seconds);
    const std::size_t step = run.size() > mostKept ? run.size() / points : 1;
    std::vector<TimePoint> series;
    for (std::size_t i = 0; i < run.size(); i += step)
        series.push_back({run[i].timestamp, figure(run[i])});
    return series;
}

} // namespace vantoro
