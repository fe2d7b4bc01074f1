// Snapshots, process rows and histories in a line each.
#pragma once

#include "Model/History/History.h"

#include "Support/Testing.h"

namespace vantoro::testing {

/// The time at which the histories built here end, unless told otherwise: 2026-03-01 09:14:00 UTC.
inline constexpr UnixSeconds builtNow = 1772356440;

inline ProcessSample process(std::int32_t pid, std::string name, double cpuPercent,
                             ProcessKind kind = ProcessKind::userApp, std::optional<std::string> owningApp = {}) {
    return {.identity = ProcessIdentity{.pid = pid,
                                        .rawName = name,
                                        .displayName = std::move(name),
                                        .owningAppName = std::move(owningApp),
                                        .user = "me",
                                        .kind = kind},
            .cpuPercent = cpuPercent};
}

/// An application's processes, pids counted from `firstPid`, sharing its CPU figure evenly.
inline std::vector<ProcessSample> application(std::int32_t firstPid, const std::string& name, double cpuPercent,
                                              int processCount, ProcessKind kind = ProcessKind::helper) {
    std::vector<ProcessSample> rows;
    for (int i = 0; i < processCount; ++i)
        rows.push_back(process(firstPid + i, name + " part", cpuPercent / processCount, kind, name));
    return rows;
}

/// A fan whose speed stands for this share of its span of 2000 to 7000 rpm.
inline FanReading fanAt(double load, int index = 0) {
    return {.index = index, .rpm = 2000 + load * 5000, .minRPM = 2000, .maxRPM = 7000, .targetRPM = 2000};
}

/// A machine with one fan working this hard, 0 to 1.
inline Snapshot fanMachine(double load, std::vector<ProcessSample> processes = {}) {
    return {.timestamp = builtNow, .fans = {fanAt(load)}, .processes = std::move(processes)};
}

/// A fanless machine whose chip is this warm, in degrees Celsius.
inline Snapshot fanlessMachine(double chipHeat, std::vector<ProcessSample> processes = {}) {
    return {
        .timestamp = builtNow, .processes = std::move(processes), .cooling = Cooling::passive, .chipHeat = chipHeat};
}

/// A machine of which neither fans nor temperatures are known, its processors this busy, in per cent.
inline Snapshot bareMachine(double busyPercent, std::vector<ProcessSample> processes = {}) {
    return {.timestamp = builtNow,
            .cpu = {.userPercent = busyPercent, .idlePercent = 100 - busyPercent},
            .processes = std::move(processes),
            .cooling = Cooling::load};
}

/// A machine whose chip is this warm, with a fan that tells its speed only.
inline Snapshot speedOnlyMachine(double chipHeat, std::vector<ProcessSample> processes = {}) {
    Snapshot snapshot = fanlessMachine(chipHeat, std::move(processes));
    snapshot.cooling = Cooling::heat;
    snapshot.fans = {{.index = 0, .rpm = 1435, .name = "Left"}};
    return snapshot;
}

inline Snapshot at(UnixSeconds timestamp, Snapshot snapshot) {
    snapshot.timestamp = timestamp;
    return snapshot;
}

/// The same machine before anything warmed it: fans at their floor, a cold chip; where only work is known, none.
inline Snapshot atRest(Snapshot snapshot) {
    for (FanReading& fan : snapshot.fans)
        fan.rpm = fan.minRPM;
    snapshot.chipHeat = std::min(snapshot.chipHeat, 30.0);
    if (snapshot.cooling == Cooling::load)
        snapshot.cpu = {};
    return snapshot;
}

/// One snapshot a second that ends with this one: its reading for the last `rampSeconds`, at rest before, for at least
/// 80 seconds in all and always with its process rows.
inline History historyEndingIn(const Snapshot& newest, int rampSeconds = 10) {
    History history;
    for (int age = std::max(80, rampSeconds + 1); age >= 0; --age)
        history.append(at(newest.timestamp - age, age <= rampSeconds ? newest : atRest(newest)));
    return history;
}

} // namespace vantoro::testing
