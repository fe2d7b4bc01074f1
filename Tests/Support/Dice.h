// Machines of every kind, drawn at random, the same every time.
#pragma once

#include "Support/HistoryBuilder.h"

#include <random>

namespace vantoro::testing {

/// Draws machines of every kind, with and without each of the figures that a machine may not have.
class Dice {
public:
    double between(double low, double high) { return low + (high - low) * share_(engine_); }
    bool coin() { return share_(engine_) < 0.5; }
    template <class Choices>
    auto oneOf(const Choices& choices) {
        return choices[static_cast<std::size_t>(between(0, static_cast<double>(std::size(choices)) - 0.001))];
    }

    std::vector<ProcessSample> processes() {
        static const std::vector<const char*> names{"Editor",           "make",        "kswapd0",        "gnome-shell",
                                                    "systemd-journald", "kernel_task", "photoanalysisd", "bird",
                                                    "cc1plus",          "worker"};
        std::vector<ProcessSample> rows;
        for (int count = static_cast<int>(between(0, 6)); count > 0; --count)
            rows.push_back(process(100 + count, plainNames ? "worker " + std::to_string(count) : oneOf(names),
                                   coin() ? between(0, 6) : between(0, 800),
                                   static_cast<ProcessKind>(static_cast<int>(between(0, 4.999)))));
        return rows;
    }

    Snapshot machine(Cooling cooling) {
        Snapshot now{.timestamp = builtNow, .processes = processes(), .cooling = cooling};
        const double busy = coin() ? between(0, 100) : coin() ? 100 : 0;
        now.cpu = {.userPercent = busy * 0.8, .systemPercent = busy * 0.2, .idlePercent = 100 - busy};
        if (cooling == Cooling::fans)
            for (int index = 0; index < static_cast<int>(between(0, 3)); ++index)
                now.fans.push_back(fanAt(between(0, 1), index));
        if (cooling == Cooling::heat)
            for (int index = 0; index < static_cast<int>(between(0, 7)); ++index)
                now.fans.push_back({.index = index, .rpm = coin() ? between(0, 3000) : 0});
        if (cooling != Cooling::load && coin())
            now.temps = {.soc = between(20, 105), .socMean = between(20, 100), .battery = coin() ? 30.0 : 0.0};
        now.chipHeat = cooling == Cooling::load ? 0 : coin() ? between(20, 105) : 0;
        if (coin())
            now.power = {.systemWatts = coin() ? between(0, 200) : 0,
                         .adapterWatts = coin() ? between(0, 200) : 0,
                         .batteryWatts = coin() ? between(0, 60) : 0,
                         .gpuWatts = coin() ? between(0, 300) : 0};
        now.memory.totalBytes = coin() ? 16'000'000'000 : 0;
        now.memory.swapOutEvents = coin() ? 1 : 0;
        now.memory.wiredBytes = static_cast<std::uint64_t>(between(0, 16e9));
        if (coin())
            now.memory.availableBytes = static_cast<std::uint64_t>(between(0, 16e9));
        now.thermalPressure = coin() ? ThermalPressure::nominal : oneOf(allThermalPressures);
        if (coin())
            now.stalls = {.cpu = between(0, 100), .memory = between(0, 100), .io = between(0, 100)};
        if (coin())
            now.gpuPercent = between(0, 100);
        return now;
    }

    bool plainNames = false;

private:
    std::mt19937 engine_{1}; // NOLINT(*-msc51-cpp): the same machines every time
    std::uniform_real_distribution<double> share_{0, 1};
};

} // namespace vantoro::testing
