// Writes the recordings that the pictures of the interface are made from: `make-scenes FOLDER`. Each is 24 minutes on a
// made-up machine, sampled every 4 seconds: a build that makes the fans climb, a background job on a fanless machine,
// a machine at rest, a build on a computer that tells neither fans nor temperatures, a picture being rendered on
// one whose fans tell their speeds only, a game that works the graphics processor, and a build whose processes come and
// go. A fixed generator, so that every run writes the same figures.
#include "Model/Recording/RecordingFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace vantoro;
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

/// What an application does before and after the ramp: its processes' shares after it, scaled down before.
struct Application {
    std::string name;
    ProcessKind kind = userApp;
    std::vector<std::pair<std::string, double>> processes; ///< name and per cent
    double shareBefore = 1;
    /// The first process's share of the graphics processor.
    double graphics = 0;
    /// A job: its processes are told by their own names, "python3.11 codegen.py" of a script, and last so many seconds
    /// but for the last of them, which leads.
    double secondsEach = 0;
};

/// A figure before and after, and how many seconds it takes to get there.
struct Course {
    double before = 0;
    double after = 0;
    double lag = 0;

    double at(double sinceRamp) const {
        if (sinceRamp < 0)
            return before;
        return lag > 0 ? after + (before - after) * std::exp(-sinceRamp / lag) : after;
    }
};

struct Scene {
    std::string fileName;
    std::string machine;
    Cooling cooling = Cooling::fans;
    double ramp = 0; ///< seconds after the start
    std::vector<Application> applications;
    Course rpm, soc, mean, gpu, enclosure, watts, adapter, battery, gpuWatts, user, system, compressed;
    double load = 0;
    double totalGibibytes = 36;
    double wiredGibibytes = 4.2;
    double otherGibibytes = 16.2; ///< in use beside wired and compressed memory
    std::uint64_t swapOuts = 0;
    ThermalPressure pressureAfter = ThermalPressure::nominal;
    SystemKind speaks = SystemKind::macos;
    // What computers tell beside that; processors of one kind.
    int processors = 0;
    std::vector<double> fanSpeeds; ///< after the ramp; a third less before
    Course availableGibibytes, ioStall, cpuWatts;
};

ProcessSample processRow(const Application& application, std::size_t index, std::int32_t pid, double percent,
                         SystemKind system) {
    const std::string& name = application.processes[index].first;
    ProcessIdentity identity{
        .pid = pid, .rawName = name, .displayName = name, .user = "anna", .kind = application.kind};
    if (application.kind == userApp) {
        identity.displayName = application.name;
        identity.owningAppName = application.name;
        const bool isMac = system == SystemKind::macos;
        identity.owningAppPath =
            isMac ? "/Applications/" + application.name + ".app" : "/usr/share/applications/" + application.name;
        identity.executablePath = isMac ? *identity.owningAppPath + "/Contents/MacOS/" + name : "/usr/lib/" + name;
        identity.kind = name == application.name ? userApp : helper;
    } else if (application.secondsEach > 0) {
        const std::size_t blank = std::min(name.find(' '), name.size());
        identity.rawName = name.substr(0, blank);
        identity.displayName = blank < name.size() ? name.substr(blank + 1) : name;
        identity.owningAppName = application.name;
        identity.executablePath = "/usr/bin/" + identity.rawName;
    } else if (application.kind == commandLine && application.processes.size() > 1) {
        identity.displayName = application.name;
        identity.executablePath = "/usr/bin/" + name;
    } else if (application.kind != kernel) {
        identity.executablePath = "/usr/libexec/" + name;
    }
    if (application.kind == systemDaemon || application.kind == kernel)
        identity.user = "root";
    return {.identity = std::move(identity),
            .cpuPercent = percent,
            .memoryBytes = static_cast<std::uint64_t>((60 + 37 * (pid % 11)) * 1024.0 * 1024),
            .energyImpact = percent};
}

double tenths(double value) {
    return std::round(value * 10) / 10;
}

/// A computer that tells its load, what it can of its heat, and its fans' speeds.
void addComputer(const Scene& scene, double since, Snapshot& snapshot, Noise& noise) {
    if (scene.cooling == Cooling::load) {
        snapshot.temps = {};
        snapshot.chipHeat = 0;
    } else {
        snapshot.temps.battery = snapshot.temps.enclosure = 0;
    }
    for (const double rpm : scene.fanSpeeds) {
        const double told = rpm * (since < 0 ? 0.66 : 1) + (rpm > 0 ? 6 * noise.next() : 0);
        snapshot.fans.push_back({.index = static_cast<int>(snapshot.fans.size()), .rpm = std::round(told)});
    }
    snapshot.power = {.systemWatts = scene.watts.after > 0 ? snapshot.power.systemWatts : 0,
                      .gpuWatts = scene.gpuWatts.after > 0 ? snapshot.power.gpuWatts : 0};
    if (scene.cpuWatts.after > 0)
        snapshot.power.cpuWatts = tenths(scene.cpuWatts.at(since) + 0.8 * noise.next());
    snapshot.memory = {.totalBytes = snapshot.memory.totalBytes,
                       .availableBytes = static_cast<std::uint64_t>(
                           (scene.availableGibibytes.at(since) + 0.02 * noise.next()) * gibibyte)};
    snapshot.memory.usedBytes = snapshot.memory.totalBytes - *snapshot.memory.availableBytes;
    snapshot.stalls.io = std::max(0.1, tenths(scene.ioStall.at(since) * (1 + 0.3 * noise.next())));
    snapshot.stalls.memory = 0;
    snapshot.cores.emplace();
    const double busy = 100 - snapshot.cpu.idlePercent;
    for (int core = 0; core < scene.processors; ++core)
        snapshot.cores->push_back({.isPerformance = true,
                                   .busyPercent = core == 2 && since > 0 ? 98 : std::clamp(busy - 2 + core, 0.0, 97.0),
                                   .megahertz = 2100 + 24 * std::min(busy, 90.0)});
}

Snapshot moment(const Scene& scene, double time, double& heat, Noise& noise) {
    constexpr double start = 1772374440; // 2026-03-01 14:14:00 UTC
    const double since = time - scene.ramp;
    Snapshot snapshot{.timestamp = start + time, .cooling = scene.cooling};
    std::int32_t pid = 300;
    for (const Application& application : scene.applications)
        for (std::size_t i = 0; i < application.processes.size(); ++i) {
            const double share = application.processes[i].second * (since < 0 ? application.shareBefore : 1);
            const double percent = tenths(share * (1 + 0.03 * noise.next()));
            pid += 11;
            const bool comesAndGoes = application.secondsEach > 0 && i + 1 < application.processes.size();
            const double began = time + static_cast<double>(i) * 2.6;
            const std::int32_t own =
                comesAndGoes ? 48000 + static_cast<std::int32_t>(20 * std::floor(began / application.secondsEach) +
                                                                 static_cast<double>(i))
                             : pid;
            if (percent > 0)
                snapshot.processes.push_back(
                    processRow(application, i, application.kind == kernel ? 0 : own, percent, scene.speaks));
            if (i > 0 || application.graphics <= 0)
                continue;
            const double graphics = application.graphics * (since < 0 ? application.shareBefore : 1);
            snapshot.processes.back().gpuPercent = std::clamp(tenths(graphics * (1 + 0.02 * noise.next())), 0.0, 97.0);
            snapshot.gpuPercent =
                std::min(snapshot.gpuPercent.value_or(0) + *snapshot.processes.back().gpuPercent, 98.0);
        }
    const double soc = scene.soc.at(since) + 0.7 * noise.next();
    heat += (soc - heat) * (time > 0 ? 1 - std::exp(-interval / 8) : 1);
    snapshot.chipHeat = heat;
    snapshot.temps = {.soc = tenths(soc),
                      .socMean = tenths(scene.mean.at(since) + 0.3 * noise.next()),
                      .gpu = tenths(scene.gpu.at(since) + 0.4 * noise.next()),
                      .battery = scene.cooling == Cooling::fans ? 36.0 : 33.0,
                      .enclosure = tenths(scene.enclosure.at(since))};
    if (scene.cooling == Cooling::fans)
        for (int index = 0; index < 2; ++index) {
            const double floor = 2317;
            const double rpm = scene.rpm.at(since) + 12 * noise.next();
            const double climbed = index == 0 ? rpm : floor + (rpm - floor) * 0.9443;
            snapshot.fans.push_back({.index = index,
                                     .rpm = std::round(std::max(floor, climbed)),
                                     .minRPM = floor,
                                     .maxRPM = 6550,
                                     .targetRPM = since < 0 ? floor : std::round(climbed) + 90});
        }
    snapshot.power = {.systemWatts = tenths(scene.watts.at(since) + 0.7 * noise.next()),
                      .adapterWatts = tenths(scene.adapter.at(since)),
                      .batteryWatts = tenths(scene.battery.at(since)),
                      .gpuWatts = std::max(0.1, tenths(scene.gpuWatts.at(since) + 0.3 * noise.next()))};
    const double user = std::max(0.0, tenths(scene.user.at(since) + 1.5 * noise.next()));
    const double system = tenths(scene.system.at(since) + 0.3 * noise.next());
    snapshot.cpu = {.userPercent = user,
                    .systemPercent = system,
                    .idlePercent = tenths(100 - user - system),
                    .loadAverage = since < 0 ? 1.4 : scene.load};
    const double compressed = scene.compressed.at(since);
    snapshot.memory = {
        .usedBytes = static_cast<std::uint64_t>((scene.wiredGibibytes + compressed + scene.otherGibibytes) * gibibyte),
        .totalBytes = static_cast<std::uint64_t>(scene.totalGibibytes * gibibyte),
        .wiredBytes = static_cast<std::uint64_t>(scene.wiredGibibytes * gibibyte),
        .compressedBytes = static_cast<std::uint64_t>(compressed * gibibyte),
        .swapOutEvents = scene.swapOuts};
    if (since > 60)
        snapshot.thermalPressure = scene.pressureAfter;
    if (scene.speaks == SystemKind::gnuLinux)
        addComputer(scene, since, snapshot, noise);
    return snapshot;
}

bool write(const Scene& scene, const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / scene.fileName;
    std::filesystem::remove(path);
    RecordingWriter writer;
    RecordingHeader header{.machine = scene.machine, .created = "2026-03-01T14:14:00Z"};
    if (scene.speaks != SystemKind::macos) {
        header.system = scene.speaks;
        header.processors = RecordedProcessors{.performance = scene.processors};
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

const Application firefox{"Firefox",
                          userApp,
                          {{"Firefox", 33},
                           {"plugin-container", 12},
                           {"plugin-container", 8},
                           {"Web Content", 5},
                           {"Web Content", 3},
                           {"Web Content", 2},
                           {"rdd", 1}},
                          0.7};

Scene building() {
    return {.fileName = "design-fans.jsonl.gz",
            .machine = "MacBook · Apple M3 Pro",
            .ramp = 1020,
            .applications = {{"Xcode",
                              userApp,
                              {{"swift-frontend", 94},
                               {"swift-frontend", 93},
                               {"swift-frontend", 91},
                               {"swift-frontend", 88},
                               {"SourceKitService", 52},
                               {"clang", 31},
                               {"ld", 17},
                               {"XCBBuildService", 9},
                               {"Xcode", 5},
                               {"lldb-rpc-server", 4},
                               {"git", 3}},
                              0.06},
                             firefox,
                             {"WindowServer", systemDaemon, {{"WindowServer", 38}}, 0.4},
                             {"mds_stores", systemDaemon, {{"mds_stores", 31}}, 0.2},
                             {"node", commandLine, {{"node", 22}}, 0.5},
                             {"kernel_task", kernel, {{"kernel_task", 13}}, 0.5}},
            .rpm = {2325, 4850, 110},
            .soc = {48, 88.4, 70},
            .mean = {44.5, 75.4, 70},
            .gpu = {45, 66, 90},
            .enclosure = {33, 38.4, 200},
            .watts = {9, 46, 8},
            .adapter = {20, 62, 20},
            .battery = {13, 13.8, 0},
            .gpuWatts = {2.0, 2.4, 0},
            .user = {9, 52, 6},
            .system = {3, 6.4, 6},
            .compressed = {4, 7, 120},
            .load = 7.8,
            .pressureAfter = ThermalPressure::fair};
}

Scene analysing() {
    Application browser = firefox;
    browser.processes = {
        {"firefox", 21}, {"plugin-container", 9}, {"plugin-container", 6}, {"Web Content", 3}, {"rdd", 2}};
    return {.fileName = "design-fanless.jsonl.gz",
            .machine = "MacBook · Apple M3",
            .cooling = Cooling::passive,
            .ramp = 850,
            .applications = {{"photoanalysisd", systemDaemon, {{"photoanalysisd", 318}}, 0.02},
                             browser,
                             {"WindowServer", systemDaemon, {{"WindowServer", 24}}, 0.4},
                             {"kernel_task", kernel, {{"kernel_task", 18}}, 0.3}},
            .soc = {46, 86, 80},
            .mean = {42, 71, 80},
            .gpu = {43, 58, 90},
            .enclosure = {32, 39, 240},
            .watts = {5.5, 19.3, 8},
            .battery = {5.5, 19.3, 8},
            .gpuWatts = {0, 0, 0},
            .user = {6, 44, 6},
            .system = {3, 7, 6},
            .compressed = {1.8, 2.9, 120},
            .load = 4.6,
            .totalGibibytes = 16,
            .wiredGibibytes = 3,
            .otherGibibytes = 7.4,
            .swapOuts = 5120,
            .pressureAfter = ThermalPressure::fair};
}

Scene resting() {
    Application browser = firefox;
    for (auto& [name, percent] : browser.processes)
        percent *= 14.0 / 64;
    return {.fileName = "design-calm.jsonl.gz",
            .machine = "MacBook · Apple M3 Pro",
            .applications = {browser,
                             {"WindowServer", systemDaemon, {{"WindowServer", 9}}},
                             {"Music", userApp, {{"Music", 4}}},
                             {"coreaudiod", systemDaemon, {{"coreaudiod", 2}}},
                             {"zsh", commandLine, {{"zsh", 1}}}},
            .rpm = {2317, 2317, 0},
            .soc = {43, 43, 0},
            .mean = {40, 40, 0},
            .gpu = {38, 38, 0},
            .enclosure = {31, 31, 0},
            .watts = {6, 6, 0},
            .adapter = {8, 8, 0},
            .battery = {0, 0, 0},
            .gpuWatts = {0, 0, 0},
            .user = {3, 3, 0},
            .system = {1, 1, 0},
            .compressed = {3.7, 3.7, 0},
            .load = 1.1};
}

std::vector<Application> desktop(int browserPercent) {
    Application browser = firefox;
    for (auto& [name, percent] : browser.processes)
        percent *= browserPercent / 64.0;
    return {browser,
            {"pipewire", systemDaemon, {{"pipewire", 2.4}}},
            {"systemd-journald", systemDaemon, {{"systemd-journald", 0.8}}}};
}

Scene compiling() {
    Application make{"make", commandLine, {{"make", 2}}, 0.02};
    for (int job = 0; job < 11; ++job)
        make.processes.emplace_back("cc1plus", 44);
    std::vector<Application> applications = desktop(23);
    applications.push_back(make);
    applications.push_back({"localsearch-3", systemDaemon, {{"localsearch-3", 9.2}}, 0.5});
    applications.push_back({"gnome-shell", systemDaemon, {{"gnome-shell", 6.3}}, 0.5});
    return {.fileName = "design-busy.jsonl.gz",
            .machine = "Linux computer · 8 processors",
            .cooling = Cooling::load,
            .ramp = 1060,
            .applications = std::move(applications),
            .user = {4, 59, 16},
            .system = {2, 6.4, 16},
            .load = 9.1,
            .totalGibibytes = 16,
            .speaks = SystemKind::gnuLinux,
            .processors = 8,
            .availableGibibytes = {10.4, 9.5, 60},
            .ioStall = {0.8, 6.4, 0}};
}

Scene rendering() {
    std::vector<Application> applications = desktop(46);
    applications.push_back({"Blender", userApp, {{"Blender", 1338}}, 0.01});
    applications.push_back({"kwin_wayland", systemDaemon, {{"kwin_wayland", 14}}, 0.6});
    return {.fileName = "design-heat.jsonl.gz",
            .machine = "Linux computer · 16 processors",
            .cooling = Cooling::heat,
            .ramp = 880,
            .applications = std::move(applications),
            .soc = {47, 88, 70},
            .mean = {43, 81, 70},
            .gpu = {41, 46, 90},
            .gpuWatts = {9, 11, 60},
            .user = {4, 85, 6},
            .system = {1.5, 2.2, 6},
            .load = 16.4,
            .totalGibibytes = 64,
            .speaks = SystemKind::gnuLinux,
            .processors = 16,
            .fanSpeeds = {1840, 2760, 1120, 980, 0},
            .availableGibibytes = {45, 39.9, 60},
            .ioStall = {0.4, 0.6, 0},
            .cpuWatts = {19, 142, 6}};
}

/// A laptop whose fans' limits are known.
Scene laptop(std::string fileName, std::vector<Application> applications) {
    return {.fileName = std::move(fileName),
            .machine = "Linux computer · 16 processors",
            .ramp = 784,
            .applications = std::move(applications),
            .rpm = {2325, 4950, 90},
            .soc = {46, 79, 70},
            .mean = {43, 71, 70},
            .gpu = {42, 76, 60},
            .watts = {14, 96, 8},
            .gpuWatts = {4, 58, 4},
            .user = {4, 13, 6},
            .system = {1.2, 2, 6},
            .load = 3.2,
            .totalGibibytes = 32,
            .speaks = SystemKind::gnuLinux,
            .processors = 16,
            .availableGibibytes = {22, 20.6, 60},
            .ioStall = {0.2, 0.3, 0},
            .cpuWatts = {7, 16, 6}};
}

Scene playing() {
    std::vector<Application> applications = desktop(64);
    applications[0].graphics = 5;
    applications.push_back({"SuperTuxKart", userApp, {{"SuperTuxKart", 112}}, 0.01, 92});
    applications.push_back({"gnome-shell", systemDaemon, {{"gnome-shell", 11}}, 0.5, 3});
    applications.push_back({"localsearch-3", systemDaemon, {{"localsearch-3", 38}}, 0.5});
    return laptop("design-graphics.jsonl.gz", std::move(applications));
}

Scene buildingInTerminal() {
    Application make{"make", commandLine, {}, 0.02};
    make.secondsEach = 27;
    for (int job = 0; job < 9; ++job)
        make.processes.emplace_back("cc1plus", 98);
    for (const auto& [name, percent] :
         {std::pair("as", 41.0), {"as", 33.0}, {"ld", 87.0}, {"python3.11 codegen.py", 96.0}, {"make", 3.0}})
        make.processes.emplace_back(name, percent);
    std::vector<Application> applications = desktop(31);
    applications.push_back(make);
    applications.push_back({"gnome-shell", systemDaemon, {{"gnome-shell", 12}}, 0.5});
    applications.push_back({"localsearch-3", systemDaemon, {{"localsearch-3", 9.2}}, 0.5});
    Scene scene = laptop("design-job.jsonl.gz", std::move(applications));
    scene.ramp = 1080;
    scene.user = {4, 76, 8};
    scene.system = {1.5, 9.4, 8};
    scene.gpuWatts = {3, 4, 0};
    scene.cpuWatts = {7, 64, 6};
    scene.watts = {14, 88, 8};
    scene.soc = {46, 86, 70};
    scene.load = 17.2;
    return scene;
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: make-scenes FOLDER\n";
        return 2;
    }
    bool written = true;
    for (const Scene& scene :
         {building(), analysing(), resting(), compiling(), rendering(), playing(), buildingInTerminal()})
        written = write(scene, arguments[1]) && written;
    return written ? 0 : 1;
}
