// What a sampler sees of the made machine, as a recording's lines. A Mac's list knows the living alone, and shows
// nothing of a process at first sight. On Linux a process counts from its start, and what the ended had used is in the
// row of their job's leader.
#include "World.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace culprit {

namespace {

using Json = nlohmann::ordered_json;
constexpr std::size_t shownRows = 20;
constexpr double epoch = 1772356440;

double toThreePlaces(double value) {
    return std::round(value * 1000) / 1000;
}

} // namespace

struct World::Row {
    int pid = 0;
    const Program* program = nullptr;
    double cpuPercent = 0;
    std::optional<double> graphicsPercent;
};

std::string World::header() const {
    Json header{{"format", "vantoro-recording"},
                {"version", 1},
                {"machine", std::string("Made machine, ") + nameOf(machine_.kind)},
                {"created", "2026-03-01T09:14:00Z"},
                {"system", machine_.isMac ? "macos" : "linux"}};
    header["processors"] = {{"performance", machine_.performanceCores}, {"efficiency", machine_.efficiencyCores}};
    return header.dump();
}

std::vector<World::Row> World::rows(double elapsed) {
    const bool isMac = machine_.isMac;
    // A kernel counts in hundredths of a second.
    const auto counted = [isMac](double seconds) { return isMac ? seconds : std::floor(seconds * 100) / 100; };
    std::vector<Row> rows;
    const auto show = [&](Process& process) {
        const bool counts = !isMac || process.isSeen;
        const double spent = counted(process.used) - counted(process.shown);
        rows.push_back({process.pid, &process.program, counts ? spent / elapsed * 100 : 0, {}});
        process.shown = process.used;
        process.isSeen = true;
    };
    const bool tellsGraphics = graphicsBusy_ >= 0.05;
    for (Running& running : running_) {
        if (running.work.isHidden)
            continue;
        const std::size_t first = rows.size();
        for (Process& process : running.staying)
            show(process);
        for (Process& process : running.passing)
            if (process.used > 0)
                show(process);
        if (!isMac && running.owed > 0) {
            if (running.isLeaderGone)
                rows.push_back({running.leader.pid, &running.leader.program, running.owed / elapsed * 100, {}});
            else if (first < rows.size())
                rows[first].cpuPercent += running.owed / elapsed * 100;
        }
        running.owed = 0;
        const double graphics = std::max(running.graphics, running.video) * 100;
        const bool isClient = running.work.graphics || running.work.video;
        if (tellsGraphics && isClient && !running.work.isUnreadable && first < rows.size())
            rows[first].graphicsPercent = graphics;
    }
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.cpuPercent > b.cpuPercent; });
    // A program that renders keeps its row, however little processor time it takes.
    std::vector<Row> kept;
    std::size_t rendering = 0;
    for (const Row& row : rows)
        rendering += row.graphicsPercent.value_or(0) >= 1 ? 1U : 0U;
    std::size_t others = shownRows - std::min(shownRows, rendering);
    for (const Row& row : rows) {
        if (kept.size() == shownRows)
            break;
        if (row.graphicsPercent.value_or(0) >= 1)
            kept.push_back(row);
        else if (others > 0) {
            kept.push_back(row);
            --others;
        }
    }
    return kept;
}

std::string World::line(double now, double elapsed, std::vector<Row> shown) {
    const bool hasSensors = machine_.kind != MachineKind::noSensors;
    const bool hasFans = machine_.kind == MachineKind::twoFans;
    const double watts = processorJoules_ / elapsed;
    const double graphicsWatts = graphicsJoules_ / elapsed;
    const double concentration = busyPerformance_ + busyEfficiency_ > 0.3
                                     ? 9 * std::sqrt(1 - (busyPerformance_ + busyEfficiency_) / machine_.cores() * 0.7)
                                     : 3;
    const double mean = die_ + random_.normal() * 0.2;
    const double hottest = die_ + concentration + random_.normal() * 0.4;
    chipHeat_ += (mean - chipHeat_) * (1 - std::exp(-elapsed / 8));
    const double adapter = at(surroundings_.adapterWatts, now, machine_.isMac ? 12 : 0);
    const char* const pressure = !hasSensors || die_ < surroundings_.slowsAt - 7 ? "nominal"
                                 : slowing_ > 0.97                               ? "fair"
                                                                                 : "serious";
    Json snapshot{{"timestamp", toThreePlaces(epoch + now)},
                  {"cooling", hasFans      ? "fans"
                              : hasSensors ? "passive"
                                           : "load"},
                  {"chipHeat", hasSensors ? toThreePlaces(chipHeat_) : 0},
                  {"thermalPressure", pressure}};
    Json fans = Json::array();
    for (int i = 0; hasFans && i < 2; ++i) {
        const double span = machine_.fanCeiling - machine_.fanFloor;
        const double rpm =
            machine_.fanFloor + span * std::clamp(fanShare_ + random_.normal() * 0.003 - i * 0.012, 0.0, 1.0);
        fans.push_back({{"index", i},
                        {"rpm", std::round(rpm)},
                        {"minRPM", std::round(machine_.fanFloor)},
                        {"maxRPM", std::round(machine_.fanCeiling)},
                        {"targetRPM", std::round(machine_.fanFloor + span * fanTarget_)}});
    }
    snapshot["fans"] = std::move(fans);
    snapshot["temps"] = {{"soc", hasSensors ? toThreePlaces(hottest) : 0},
                         {"socMean", hasSensors ? toThreePlaces(mean) : 0},
                         {"gpu", hasSensors ? toThreePlaces(die_ - 4 + graphicsWatts * 0.2) : 0},
                         {"battery", hasSensors ? toThreePlaces(27 + adapter / 12) : 0},
                         {"enclosure", hasSensors ? toThreePlaces(sink_) : 0}};
    Json power{{"systemWatts", hasSensors && machine_.tellsSystemWatts
                                   ? toThreePlaces(watts + graphicsWatts + machine_.restWatts + random_.normal() * 0.2)
                                   : 0},
               {"adapterWatts", adapter},
               {"batteryWatts", toThreePlaces(at(surroundings_.heatWatts, now) * 3)},
               {"gpuWatts", hasSensors ? toThreePlaces(graphicsWatts) : 0}};
    if (hasSensors && machine_.tellsProcessorWatts)
        power["cpuWatts"] = toThreePlaces(watts);
    snapshot["power"] = std::move(power);
    const double all = machine_.cores() * elapsed;
    const double user = std::min(100.0, userSeconds_ / all * 100);
    const double system = std::min(100 - user, systemSeconds_ / all * 100);
    snapshot["cpu"] = {{"userPercent", toThreePlaces(user)},
                       {"systemPercent", toThreePlaces(system)},
                       {"idlePercent", std::max(0.0, toThreePlaces(100 - user - system))},
                       {"loadAverage", toThreePlaces(loadAverage_)}};
    recentBusy_.push_back((user + system) / 100);
    double used = 0.12 * machine_.memoryBytes;
    for (const Running& running : running_)
        for (const std::vector<Process>* list : {&running.staying, &running.passing})
            for (const Process& process : *list)
                used += process.program.memoryBytes;
    used = std::min(used, 0.985 * machine_.memoryBytes);
    const double stall = at(surroundings_.memoryStall, now);
    swapOuts_ += stall * elapsed * 40;
    const auto bytes = [](double count) { return static_cast<std::uint64_t>(count); };
    const double compressed = machine_.isMac && stall > 0 ? 0.4 * machine_.memoryBytes : 0.02 * used;
    snapshot["memory"] = {{"usedBytes", bytes(used)},
                          {"totalBytes", bytes(machine_.memoryBytes)},
                          {"wiredBytes", bytes(machine_.isMac ? 0.16 * machine_.memoryBytes : 0)},
                          {"compressedBytes", bytes(machine_.isMac ? compressed : 0)},
                          {"swapOutEvents", bytes(swapOuts_)}};
    if (!machine_.isMac)
        snapshot["memory"]["availableBytes"] = bytes(machine_.memoryBytes - used);
    Json processes = Json::array();
    for (const Row& row : shown) {
        const Program& program = *row.program;
        const std::string folder = program.kind == "kernel"         ? ""
                                   : program.kind == "systemDaemon" ? "/usr/sbin/"
                                                                    : "/usr/bin/";
        Json object{{"pid", row.pid},
                    {"rawName", program.name.substr(0, 15)},
                    {"displayName", program.name},
                    {"executablePath", folder.empty() ? "" : folder + program.name}};
        if (!program.owner.empty())
            object["owningAppName"] = program.owner;
        object["cpuPercent"] = toThreePlaces(row.cpuPercent);
        object["memoryBytes"] = bytes(program.memoryBytes);
        object["energyImpact"] = machine_.isMac ? toThreePlaces(row.cpuPercent * 1.05) : 0;
        object["user"] = program.user;
        object["kind"] = program.kind;
        if (row.graphicsPercent)
            object["gpuPercent"] = toThreePlaces(*row.graphicsPercent);
        processes.push_back(std::move(object));
    }
    snapshot["processes"] = std::move(processes);
    if (!machine_.isMac) {
        const double wait = std::clamp((queue_ / machine_.cores() - 0.9) * 40, 0.0, 70.0);
        snapshot["stalls"] = {{"cpu", toThreePlaces(wait)},
                              {"memory", toThreePlaces(stall)},
                              {"io", toThreePlaces(at(surroundings_.diskStall, now))}};
        if (hasSensors)
            snapshot["throttle"] = slowing_ < 0.97 ? Json::array({"temperature"}) : Json::array();
    }
    if (hasSensors || graphicsSeconds_ > 0)
        snapshot["gpuPercent"] = toThreePlaces(std::clamp(graphicsSeconds_ / elapsed * 100, 0.0, 100.0));
    Json cores = Json::array();
    for (int i = 0; i < machine_.cores(); ++i) {
        const bool isPerformance = i < machine_.performanceCores;
        const double busy = isPerformance ? performanceSeconds_ / machine_.performanceCores
                                          : efficiencySeconds_ / machine_.efficiencyCores;
        cores.push_back({{"isPerformance", isPerformance},
                         {"busyPercent", toThreePlaces(std::clamp(busy / elapsed * 100, 0.0, 100.0))},
                         {"megahertz", std::round((isPerformance ? 3000 : 1900) * speedFactor())}});
    }
    snapshot["cores"] = std::move(cores);
    return snapshot.dump();
}

void World::sample(double now, bool isRecorded) {
    const double elapsed = now - lastSample_;
    std::string text = line(now, elapsed, rows(elapsed));
    if (isRecorded)
        lines_.push_back(std::move(text));
    sampleTimes_.push_back(epoch + now);
    lastSample_ = now;
    userSeconds_ = systemSeconds_ = performanceSeconds_ = efficiencySeconds_ = 0;
    graphicsSeconds_ = processorJoules_ = graphicsJoules_ = 0;
}

} // namespace culprit
