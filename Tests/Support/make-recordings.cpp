// Writes the recordings in Tests/Fixtures/recordings: `make-recordings FOLDER`. Each is a few minutes on a made-up but
// believable machine, sampled every 2 seconds; no randomness but a fixed generator, so that every run writes the same
// bytes. The text below each name says what happens in it.
#include "Model/Recording/Recording.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace vantoro;
using enum ProcessKind;

constexpr double start = 1772356440; // 2026-03-01 09:14:00 UTC
constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20U;

/// Small, repeatable disturbances.
class Noise {
public:
    /// Between -1 and 1.
    double next() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(state_ >> 33U) / static_cast<double>(1U << 30U) - 1;
    }

private:
    std::uint64_t state_ = 2026;
};

double rounded(double value, double step) {
    return std::round(value / step) / (1 / step);
}

struct Program {
    ProcessIdentity identity;
    std::uint64_t mebibytes;
    /// Per cent of one core at a time in seconds.
    std::function<double(double)> cpu;
};

/// `owner` is the application it is part of; empty for none.
Program program(ProcessKind kind, int pid, const std::string& path, const std::string& owner, std::uint64_t mebibytes,
                std::function<double(double)> cpu) {
    const std::string name = path.substr(path.rfind('/') + 1);
    const bool isUsers = kind != ProcessKind::kernel && kind != ProcessKind::systemDaemon;
    ProcessIdentity identity{.pid = pid,
                             .rawName = name.substr(0, 16),
                             .displayName = name,
                             .executablePath = kind == ProcessKind::kernel ? "" : path,
                             .user = isUsers    ? "anna"
                                     : pid == 0 ? "root"
                                                : "_windowserver",
                             .kind = kind};
    if (!owner.empty()) {
        identity.owningAppName = owner;
        identity.owningAppPath = "/Applications/" + owner + ".app";
        identity.executablePath = *identity.owningAppPath + "/Contents/" + path;
    }
    return {identity, mebibytes, std::move(cpu)};
}

auto steady(double percent) {
    return [percent](double) { return percent; };
}

auto from(double begin, double percent) {
    return [=](double time) { return time >= begin ? percent : 0.0; };
}

Program windowServer(double percent) {
    return program(systemDaemon, 88, "/usr/libexec/WindowServer", "", 420, steady(percent));
}

struct Machine {
    std::string fileName;
    std::string name;
    Cooling cooling;
    int cores;
    double seconds;
    std::vector<Program> programs;
    /// °C that a full load adds to the idle chip in the long run.
    double warming = 82;
    double idleWatts = 7;
    double fullWatts = 52;
};

void write(const Machine& machine, const std::string& folder) {
    std::ofstream file(folder + "/" + machine.fileName);
    file << headerLine({.machine = machine.name, .created = utcText(start)}) << '\n';
    Noise noise;
    constexpr double idleCelsius = 38;
    constexpr double interval = 2;
    double die = idleCelsius;
    double heat = idleCelsius;
    double rpm = 1350;
    for (double time = 0; time <= machine.seconds; time += interval) {
        Snapshot snapshot;
        snapshot.timestamp = start + time + rounded(0.01 * (noise.next() + 1), 0.001);
        snapshot.cooling = machine.cooling;
        double total = 0;
        for (const Program& program : machine.programs) {
            const double wanted = program.cpu(time);
            const double percent = rounded(wanted * (1 + 0.08 * noise.next()), 0.1);
            total += percent;
            if (wanted <= 0)
                continue;
            ProcessSample row;
            row.identity = program.identity;
            row.cpuPercent = percent;
            row.memoryBytes = program.mebibytes * mebibyte + static_cast<std::uint64_t>(time) * 16384;
            row.energyImpact = rounded(percent * 1.1, 0.1);
            snapshot.processes.push_back(std::move(row));
        }
        const double load = std::min(1.0, total / (100.0 * machine.cores));
        die += (idleCelsius + machine.warming * load - die) * (1 - std::exp(-interval / 25));
        const double soc = rounded(die + 0.6 * noise.next(), 0.01);
        heat += (soc - heat) * (1 - std::exp(-interval / 8));
        snapshot.chipHeat = heat;
        snapshot.temps = {.soc = soc,
                          .socMean = rounded(die - 4 + 0.3 * noise.next(), 0.01),
                          .gpu = rounded(idleCelsius + (die - idleCelsius) * 0.5, 0.01),
                          .battery = 31.2,
                          .enclosure = rounded(29 + (die - idleCelsius) * 0.12, 0.1)};
        if (machine.cooling == Cooling::fans) {
            const double wanted = 1350 + 4450 * std::clamp((die - 62) / 38, 0.0, 1.0);
            rpm += (wanted - rpm) * (1 - std::exp(-interval / 10));
            for (int index = 0; index < 2; ++index)
                snapshot.fans.push_back({.index = index,
                                         .rpm = std::round(rpm * (index == 0 ? 1 : 1.08)),
                                         .minRPM = index == 0 ? 1350.0 : 1458.0,
                                         .maxRPM = index == 0 ? 5800.0 : 6264.0,
                                         .targetRPM = std::round(wanted)});
        }
        const double watts = machine.idleWatts + (machine.fullWatts - machine.idleWatts) * load;
        snapshot.power = {.systemWatts = rounded(watts + 0.4 * noise.next(), 0.01),
                          .adapterWatts = machine.cooling == Cooling::fans ? rounded(watts * 1.08, 0.01) : 0,
                          .batteryWatts = machine.cooling == Cooling::fans ? 0 : rounded(watts, 0.01),
                          .gpuWatts = rounded(0.04 + load * 0.5, 0.001)};
        snapshot.cpu = {.userPercent = rounded(load * 82, 0.01),
                        .systemPercent = rounded(load * 18, 0.01),
                        .idlePercent = rounded(100 - load * 100, 0.01),
                        .loadAverage = rounded(total / 100, 0.01)};
        snapshot.memory = {.usedBytes = 11264 * mebibyte,
                           .totalBytes = 16384 * mebibyte,
                           .wiredBytes = 2048 * mebibyte,
                           .compressedBytes = 512 * mebibyte,
                           .swapOutEvents = 0};
        if (die > 96)
            snapshot.thermalPressure = ThermalPressure::fair;
        file << snapshotLine(snapshot) << '\n';
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: make-recordings FOLDER\n";
        return 2;
    }
    const std::string folder = arguments[1];

    // Not quite two minutes on an 11-core Mac with fans. After 20 seconds a build starts: six compilers, and the fans
    // climb.
    Machine compiling{"fans-compile.jsonl",
                      "MacBook · Apple M3 Pro",
                      Cooling::fans,
                      11,
                      110,
                      {program(userApp, 412, "MacOS/Terminal", "Terminal", 180, steady(3)), windowServer(9),
                       program(kernel, 0, "kernel_task", "", 900, steady(6))}};
    for (int index = 0; index < 6; ++index)
        compiling.programs.push_back(program(commandLine, 5120 + index, "/usr/bin/clang", "", 310, from(20, 96)));
    write(compiling, folder);

    // Not quite three minutes on an 8-core Mac without fans. A browser plays video in two tabs from second 30 on, on
    // battery.
    write({"fanless-browser.jsonl",
           "MacBook · Apple M2",
           Cooling::passive,
           8,
           160,
           {program(userApp, 733, "MacOS/Kestrel", "Kestrel", 640, [](double time) { return time < 30 ? 4.0 : 48.0; }),
            program(helper, 741, "Helpers/Kestrel Tab", "Kestrel", 900, from(30, 120)),
            program(helper, 742, "Helpers/Kestrel Tab", "Kestrel", 710, from(30, 85)), windowServer(18),
            program(kernel, 0, "kernel_task", "", 700, steady(4))},
           110,
           3,
           26},
          folder);

    // A minute and a half in which an 11-core Mac with fans has next to nothing to do.
    write({"calm.jsonl",
           "MacBook · Apple M3 Pro",
           Cooling::fans,
           11,
           90,
           {program(userApp, 390, "MacOS/Mail", "Mail", 260, steady(0.7)), windowServer(4),
            program(kernel, 0, "kernel_task", "", 900, steady(3))}},
          folder);
    return 0;
}
