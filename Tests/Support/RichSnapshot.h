// Snapshots in which no field has its initial value and the names are as hostile as names can be.
#pragma once

#include "Model/Records/Telemetry.h"

#include "Support/Testing.h"

namespace vantoro::testing {

/// All that the first recordings held.
inline Snapshot richSnapshot() {
    Snapshot snapshot;
    snapshot.timestamp = 1772356440.2500001;
    snapshot.cooling = Cooling::passive;
    snapshot.chipHeat = 61.300000000000004;
    snapshot.thermalPressure = ThermalPressure::serious;
    snapshot.fans = {{.index = 0, .rpm = 2317.5, .minRPM = 1350, .maxRPM = 5800, .targetRPM = 2400},
                     {.index = 7, .rpm = 1e-300, .minRPM = -1, .maxRPM = 1e300, .targetRPM = 0.1}};
    snapshot.temps = {.soc = 71.25, .socMean = 1.0 / 3, .gpu = 48, .battery = 31.5, .enclosure = -12.5};
    snapshot.power = {.systemWatts = 41.7, .adapterWatts = 60, .batteryWatts = -18.25, .gpuWatts = 0.041};
    snapshot.cpu = {.userPercent = 61.2, .systemPercent = 11.9, .idlePercent = 26.9, .loadAverage = 7.43};
    snapshot.memory = {.usedBytes = std::numeric_limits<std::uint64_t>::max(),
                       .totalBytes = (std::uint64_t{1} << 53U) + 1,
                       .wiredBytes = 3,
                       .compressedBytes = 4,
                       .swapOutEvents = 5};
    ProcessIdentity hostile{.pid = std::numeric_limits<std::int32_t>::max(),
                            .rawName = "quote \" backslash \\ newline \n bell \a",
                            .displayName = "日本語 👩‍👩‍👧 é",
                            .executablePath = std::string("/nul/\0/here", 11),
                            .owningAppName = "",
                            .owningAppPath = "</script>\u2028\x7F",
                            .user = "\"},{\"pid\":1",
                            .kind = ProcessKind::kernel};
    snapshot.processes.push_back(
        {.identity = hostile, .cpuPercent = 1099.9, .memoryBytes = 1234567890123, .energyImpact = 0.30000000000000004});
    hostile.pid = std::numeric_limits<std::int32_t>::min();
    hostile.owningAppName = std::nullopt;
    hostile.kind = ProcessKind::helper;
    snapshot.processes.push_back({.identity = hostile, .cpuPercent = 0.7});
    return snapshot;
}

/// With what came later.
inline Snapshot richestSnapshot() {
    Snapshot snapshot = richSnapshot();
    snapshot.memory.availableBytes = (std::uint64_t{1} << 63U) + 1;
    snapshot.power.cpuWatts = 17.125;
    snapshot.stalls = {.cpu = 0, .memory = 100, .io = 1.0 / 7};
    snapshot.throttle = {{ThrottleReason::profile, ThrottleReason::temperature}};
    snapshot.gpuPercent = 99.5;
    snapshot.cores = {{{.isPerformance = true, .busyPercent = 100, .megahertz = 3504.5}, {}}};
    snapshot.dieSensors = {{-1, 61.25}};
    snapshot.gpuSensors.emplace();
    snapshot.processes.back().gpuPercent = 0;
    return snapshot;
}

} // namespace vantoro::testing
