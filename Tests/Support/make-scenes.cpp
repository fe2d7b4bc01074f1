// Writes the recordings that the pictures of the interface are made from, those of FOLDER/scenes.json: `make-scenes
// FOLDER`. Each is 24 minutes on a made-up machine, sampled every 4 seconds: a build that makes the fans climb, a
// background job on a fanless machine, a machine at rest, a build on a computer that tells neither fans nor
// temperatures, a picture being rendered on one whose fans tell their speeds only, a game that works the graphics
// processor, and a build whose processes come and go. A fixed generator, so that every run writes the same figures.
#include "Model/Recording/RecordingFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace vantoro;
using nlohmann::json;
using enum ProcessKind;

constexpr double gibibyte = 1024.0 * 1024 * 1024;
constexpr double seconds = 1444;
constexpr double interval = 4;

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

/// One of scenes.json. Its applications are daemons unless they say otherwise, with the shares that their processes
/// have after the ramp, which comes so many seconds after the start. A figure has a value before and after, and the
/// seconds that it takes to get there; one that is not stated is 0. What states its processors is no Mac. The first
/// process of an application that states its "graphics" has this share of the graphics processor. Those of a job last
/// "secondsEach" but for the last, which leads it; a script is told as "python3.11 codegen.py".
struct Scene {
    explicit Scene(const json& stated) : all(&stated), ramp(number("ramp")), isMac(!stated.contains("processors")) {
        const std::vector<std::string> coolings{"fans", "passive", "heat", "load"};
        cooling = static_cast<Cooling>(std::ranges::find(coolings, stated.value("cooling", "fans")) - coolings.begin());
    }

    double number(const char* name, double otherwise = 0) const { return all->value(name, otherwise); }
    std::uint64_t bytes(const char* gibibytes, double otherwise) const {
        return static_cast<std::uint64_t>(number(gibibytes, otherwise) * gibibyte);
    }
    double at(const char* name, double sinceRamp) const {
        const std::vector<double> course = all->value(name, std::vector<double>{0, 0, 0});
        if (sinceRamp < 0)
            return course[0];
        return course[2] > 0 ? course[1] + (course[0] - course[1]) * std::exp(-sinceRamp / course[2]) : course[1];
    }
    bool states(const char* name) const { return at(name, seconds) > 0; }

    const json* all;
    double ramp;
    bool isMac;
    Cooling cooling = Cooling::fans;
};

ProcessKind kindOf(const json& application) {
    const std::string kind = application.value("kind", "systemDaemon");
    return kind == "userApp" ? userApp : kind == "commandLine" ? commandLine : kind == "kernel" ? kernel : systemDaemon;
}

ProcessSample processRow(const json& application, const std::string& name, std::int32_t pid, double percent,
                         bool isMac) {
    const ProcessKind kind = kindOf(application);
    const std::string owner = application["name"];
    ProcessIdentity identity{.pid = kind == kernel ? 0 : pid,
                             .rawName = name,
                             .displayName = name,
                             .user = kind == systemDaemon || kind == kernel ? "root" : "anna",
                             .kind = kind};
    if (kind == userApp) {
        identity.displayName = owner;
        identity.owningAppName = owner;
        identity.owningAppPath = isMac ? "/Applications/" + owner + ".app" : "/usr/share/applications/" + owner;
        identity.executablePath = isMac ? *identity.owningAppPath + "/Contents/MacOS/" + name : "/usr/lib/" + name;
        identity.kind = name == owner ? userApp : helper;
    } else if (application.contains("secondsEach")) {
        const std::size_t blank = std::min(name.find(' '), name.size());
        identity.rawName = name.substr(0, blank);
        identity.displayName = blank < name.size() ? name.substr(blank + 1) : name;
        identity.owningAppName = owner;
        identity.executablePath = "/usr/bin/" + identity.rawName;
    } else if (kind == commandLine && application["processes"].size() > 1) {
        identity.displayName = owner;
        identity.executablePath = "/usr/bin/" + name;
    } else if (kind != kernel) {
        identity.executablePath = "/usr/libexec/" + name;
    }
    return {.identity = std::move(identity),
            .cpuPercent = percent,
            .memoryBytes = static_cast<std::uint64_t>((60 + 37 * ((kind == kernel ? 0 : pid) % 11)) * 1024.0 * 1024),
            .energyImpact = percent};
}

double tenths(double value) {
    return std::round(value * 10) / 10;
}

/// A computer that tells its load, what it can of its heat, and its fans' speeds, a third less before the ramp.
void addComputer(const Scene& scene, double since, Snapshot& snapshot, Noise& noise) {
    if (scene.cooling == Cooling::load) {
        snapshot.temps = {};
        snapshot.chipHeat = 0;
    } else {
        snapshot.temps.battery = snapshot.temps.enclosure = 0;
    }
    for (const double rpm : scene.all->value("fanSpeeds", std::vector<double>())) {
        const double told = rpm * (since < 0 ? 0.66 : 1) + (rpm > 0 ? 6 * noise.next() : 0);
        snapshot.fans.push_back({.index = static_cast<int>(snapshot.fans.size()), .rpm = std::round(told)});
    }
    snapshot.power = {.systemWatts = scene.states("watts") ? snapshot.power.systemWatts : 0,
                      .gpuWatts = scene.states("gpuWatts") ? snapshot.power.gpuWatts : 0};
    if (scene.states("cpuWatts"))
        snapshot.power.cpuWatts = tenths(scene.at("cpuWatts", since) + 0.8 * noise.next());
    snapshot.memory = {.totalBytes = snapshot.memory.totalBytes,
                       .availableBytes = static_cast<std::uint64_t>(
                           (scene.at("availableGibibytes", since) + 0.02 * noise.next()) * gibibyte)};
    snapshot.memory.usedBytes = snapshot.memory.totalBytes - *snapshot.memory.availableBytes;
    snapshot.stalls.io = std::max(0.1, tenths(scene.at("ioStall", since) * (1 + 0.3 * noise.next())));
    snapshot.stalls.memory = 0;
    snapshot.cores.emplace();
    const double busy = 100 - snapshot.cpu.idlePercent;
    for (int core = 0; core < scene.number("processors"); ++core)
        snapshot.cores->push_back({.isPerformance = true,
                                   .busyPercent = core == 2 && since > 0 ? 98 : std::clamp(busy - 2 + core, 0.0, 97.0),
                                   .megahertz = 2100 + 24 * std::min(busy, 90.0)});
}

Snapshot moment(const Scene& scene, double time, double& heat, Noise& noise) {
    constexpr double start = 1772374440; // 2026-03-01 14:14:00 UTC
    const double since = time - scene.ramp;
    const auto at = [&](const char* name) { return scene.at(name, since); };
    Snapshot snapshot{.timestamp = start + time, .cooling = scene.cooling};
    std::int32_t pid = 300;
    for (const json& application : (*scene.all)["applications"]) {
        const double times = since < 0 ? application.value("shareBefore", 1.0) : 1;
        const double lasts = application.value("secondsEach", 0.0);
        const json& processes = application["processes"];
        for (std::size_t i = 0; i < processes.size(); ++i) {
            const double share = processes[i][1].get<double>() * application.value("times", 1.0) * times;
            const double percent = tenths(share * (1 + 0.03 * noise.next()));
            pid += 11;
            // Each begins at a time of its own.
            const int round = lasts > 0 ? static_cast<int>((time + 2.6 * static_cast<double>(i)) / lasts) : 0;
            const std::int32_t own =
                lasts > 0 && i + 1 < processes.size() ? 48000 + 20 * round + static_cast<int>(i) : pid;
            if (percent > 0)
                snapshot.processes.push_back(processRow(application, processes[i][0], own, percent, scene.isMac));
        }
        if (!application.contains("graphics"))
            continue;
        ProcessSample& first = snapshot.processes[snapshot.processes.size() - processes.size()];
        first.gpuPercent = tenths(application["graphics"].get<double>() * times * (1 + 0.02 * noise.next()));
        snapshot.gpuPercent = std::min(snapshot.gpuPercent.value_or(0) + *first.gpuPercent, 98.0);
    }
    const double soc = at("soc") + 0.7 * noise.next();
    heat += (soc - heat) * (time > 0 ? 1 - std::exp(-interval / 8) : 1);
    snapshot.chipHeat = heat;
    snapshot.temps = {.soc = tenths(soc),
                      .socMean = tenths(at("mean") + 0.3 * noise.next()),
                      .gpu = tenths(at("gpu") + 0.4 * noise.next()),
                      .battery = scene.cooling == Cooling::fans ? 36.0 : 33.0,
                      .enclosure = tenths(at("enclosure"))};
    if (scene.cooling == Cooling::fans)
        for (int index = 0; index < 2; ++index) {
            const double floor = 2317;
            const double rpm = at("rpm") + 12 * noise.next();
            const double climbed = index == 0 ? rpm : floor + (rpm - floor) * 0.9443;
            snapshot.fans.push_back({.index = index,
                                     .rpm = std::round(std::max(floor, climbed)),
                                     .minRPM = floor,
                                     .maxRPM = 6550,
                                     .targetRPM = since < 0 ? floor : std::round(climbed) + 90});
        }
    snapshot.power = {.systemWatts = tenths(at("watts") + 0.7 * noise.next()),
                      .adapterWatts = tenths(at("adapter")),
                      .batteryWatts = tenths(at("battery")),
                      .gpuWatts = std::max(0.1, tenths(at("gpuWatts") + 0.3 * noise.next()))};
    const double user = std::max(0.0, tenths(at("user") + 1.5 * noise.next()));
    const double system = tenths(at("system") + 0.3 * noise.next());
    snapshot.cpu = {.userPercent = user,
                    .systemPercent = system,
                    .idlePercent = tenths(100 - user - system),
                    .loadAverage = since < 0 ? 1.4 : scene.number("load")};
    const double wired = scene.number("wiredGibibytes", 4.2);
    const double compressed = at("compressed");
    snapshot.memory = {
        .usedBytes = static_cast<std::uint64_t>((wired + compressed + scene.number("otherGibibytes", 16.2)) * gibibyte),
        .totalBytes = scene.bytes("totalGibibytes", 36),
        .wiredBytes = scene.bytes("wiredGibibytes", 4.2),
        .compressedBytes = static_cast<std::uint64_t>(compressed * gibibyte),
        .swapOutEvents = static_cast<std::uint64_t>(scene.number("swapOuts"))};
    if (since > 60)
        snapshot.thermalPressure = static_cast<ThermalPressure>(scene.number("pressureAfter"));
    if (!scene.isMac)
        addComputer(scene, since, snapshot, noise);
    return snapshot;
}

bool write(const Scene& scene, const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / (*scene.all)["file"].get<std::string>();
    std::filesystem::remove(path);
    RecordingWriter writer;
    RecordingHeader header{.machine = (*scene.all)["machine"], .created = "2026-03-01T14:14:00Z"};
    if (!scene.isMac) {
        header.system = SystemKind::gnuLinux;
        header.processors = RecordedProcessors{.performance = static_cast<int>(scene.number("processors"))};
    }
    Outcome<> outcome = writer.open(path.string(), header);
    Noise noise;
    double heat = 0;
    for (double time = 0; !outcome.failed() && time <= seconds; time += interval)
        outcome = writer.append(moment(scene, time, heat, noise));
    if (!outcome.failed())
        outcome = writer.close();
    if (outcome.failed())
        std::cerr << path << ": " << outcome.fault() << '\n';
    return !outcome.failed();
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: make-scenes FOLDER\n";
        return 2;
    }
    std::ifstream file(arguments[1] + std::string("/scenes.json"));
    bool written = true;
    for (const json& stated : json::parse(file))
        written = write(Scene(stated), arguments[1]) && written;
    return written ? 0 : 1;
}
