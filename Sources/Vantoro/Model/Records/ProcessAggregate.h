// Summaries of processes and applications over a window of history.
#pragma once

#include "Model/Records/Telemetry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// One process over a window. CPU figures in per cent of one core.
struct ProcessAggregate {
    std::int32_t pid = 0;
    std::string displayName;
    std::optional<std::string> owningAppName;
    std::optional<std::string> owningAppPath;
    std::string executablePath;
    ProcessKind kind = ProcessKind::userApp;
    std::string user;
    double totalCPU = 0;
    double peakCPU = 0;
    double totalEnergy = 0;
    std::uint64_t peakMemory = 0;
    /// Snapshots in which it appeared, and how many of those found it at 25 % or more.
    int samples = 0;
    int busySamples = 0;
    UnixSeconds firstSeen = 0;
    UnixSeconds lastSeen = 0;
    double averageCPU = 0;
    double averageEnergy = 0;
    /// Busy samples as a share of all snapshots of the window, 0 to 1.
    double sustained = 0;
    double stressScore = 0;
    /// Share of the graphics processor, 0 to 100: the mean over all snapshots of the window; none where none tells.
    std::optional<double> gpuPercent = {};

    bool operator==(const ProcessAggregate&) const = default;
};

/// One application, or one process that belongs to none, over a window.
struct ProcessGroup {
    std::string key;
    std::string displayName;
    std::optional<std::string> owningAppPath;
    ProcessKind kind = ProcessKind::userApp;
    std::string user;
    std::vector<ProcessAggregate> members;
    double totalCPU = 0;
    double peakCPU = 0;
    std::uint64_t totalMemory = 0;
    double sustained = 0;
    double stressScore = 0;
    /// The sum of its members' shares of the graphics processor; none where none of them tells.
    std::optional<double> gpuPercent = {};

    bool operator==(const ProcessGroup&) const = default;
};

} // namespace vantoro
