// A history as a busy machine fills it: 20 rows a snapshot from 60 processes, whose order and figures change each time.
#pragma once

#include "Model/History/History.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vantoro::benchmarks {

class SnapshotMaker {
public:
    explicit SnapshotMaker(double intervalSeconds) : intervalSeconds_(intervalSeconds) {
        for (int pid = 1; pid <= 60; ++pid)
            identities_.push_back(ProcessIdentity{
                .pid = pid,
                .rawName = "application-" + std::to_string(pid),
                .displayName = "An application with a name of its own " + std::to_string(pid),
                .executablePath = "/usr/lib/applications/number-" + std::to_string(pid) + "/bin/application",
                .owningAppName = "Application " + std::to_string(pid / 3),
                .owningAppPath = "/usr/share/applications/application-" + std::to_string(pid / 3) + ".desktop",
                .user = "somebody",
                .kind = pid % 3 == 0 ? ProcessKind::userApp : ProcessKind::helper});
    }

    /// The next tick's snapshot, with this many process rows, busiest first as the stream prints them.
    Snapshot next(std::size_t rows) {
        Snapshot snapshot{.timestamp = 1e9 + intervalSeconds_ * static_cast<double>(tick_)};
        snapshot.fans = {{.index = 0, .rpm = 2400, .minRPM = 1200, .maxRPM = 5900, .targetRPM = 2400},
                         {.index = 1, .rpm = 2500, .minRPM = 1200, .maxRPM = 6200, .targetRPM = 2500}};
        snapshot.temps.soc = 71.5;
        snapshot.chipHeat = 70;
        snapshot.power.systemWatts = 30;
        snapshot.cpu = {40, 10, 50, 3.5};
        for (std::size_t row = 0; row < rows; ++row)
            snapshot.processes.push_back({.identity = identities_[(row * 7 + tick_) % identities_.size()],
                                          .cpuPercent = 100.0 / static_cast<double>(row + 1),
                                          .memoryBytes = 1 << 20});
        ++tick_;
        return snapshot;
    }

private:
    double intervalSeconds_;
    std::size_t tick_ = 0;
    std::vector<SharedProcessIdentity> identities_;
};

inline void fill(History& history, double intervalSeconds, std::size_t snapshots, std::size_t rows) {
    SnapshotMaker maker(intervalSeconds);
    history.setRetention(intervalSeconds * static_cast<double>(snapshots));
    for (std::size_t i = 0; i < snapshots; ++i)
        history.append(maker.next(rows));
}

} // namespace vantoro::benchmarks
