#include "Model/Readers/SensorDump.h"

#include "Model/Records/Verdict.h"
#include "Model/Text/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

std::string_view couldNotOpen(SensorDump::Unknown unknown) {
    return unknown == SensorDump::Unknown::said ? "No sensors were found." : "Could not open the SMC.";
}

/// For one sensor: slow drivers take a few hundred milliseconds, stuck ones for ever.
constexpr double longestWaitSeconds = 2;

/// Those of the families, and last the one of some older controllers' processors.
std::vector<std::string_view> reportedPrefixes() {
    std::vector<std::string_view> prefixes;
    for (const SensorFamilyKind& kind : sensorFamilies) {
        prefixes.push_back(kind.keyPrefix);
        std::ranges::copy_if(kind.reservePrefixes, std::back_inserter(prefixes),
                             [](std::string_view prefix) { return !prefix.empty(); });
    }
    prefixes.emplace_back("TC");
    return prefixes;
}

struct KeyValue {
    std::string key;
    double value = 0;
};

using KeysByPrefix = std::map<std::string, std::vector<KeyValue>, std::less<>>;

KeysByPrefix readByPrefix(std::uint32_t keyCount) {
    KeysByPrefix byPrefix;
    for (std::string& key : floatKeys(keyCount)) {
        double value = 0;
        if (smc_read_number(key.c_str(), &value) == 0)
            continue;
        std::string prefix = key.substr(0, 2);
        byPrefix[std::move(prefix)].push_back({std::move(key), value});
    }
    return byPrefix;
}

/// What is no number comes last.
bool isHotter(const KeyValue& a, const KeyValue& b) {
    return a.value > b.value || (!std::isnan(a.value) && std::isnan(b.value));
}

void printFamily(std::string_view prefix, std::vector<KeyValue> pairs, const PrintLine& print) {
    constexpr std::size_t mostShown = 5;
    std::ranges::stable_sort(pairs, isHotter);
    const auto isPlausible = [](const KeyValue& pair) { return pair.value > 0 && pair.value < 130; };
    const auto hottestPlausible = std::ranges::find_if(pairs, isPlausible);
    print(fmt::format("{}: {} keys, {} plausible, max {:.1f}°C", prefix, pairs.size(),
                      std::ranges::count_if(pairs, isPlausible),
                      hottestPlausible != pairs.end() ? hottestPlausible->value : 0.0));
    std::string hottest = "   hottest: ";
    for (std::size_t i = 0; i < std::min(pairs.size(), mostShown); ++i)
        hottest += fmt::format("{}{}={:.1f}", i > 0 ? "  " : "", pairs[i].key, pairs[i].value);
    print(hottest);
}

/// Where the limits of a fan come from whose driver states none; null where they are stated (as on every Mac).
const char* limitSource(int fan) {
    const std::optional<double> source = readKey(fanKey(fan, "MS"));
    if (source == 1)
        return "max reckoned from the fan's duty";
    return source == 2 ? "limits learned by watching" : nullptr;
}

/// Figures with so many decimals, in the words for what is not known.
class Words {
public:
    explicit Words(SensorDump::Unknown unknown) : saysUnknown_(unknown == SensorDump::Unknown::said) {}

    bool saysUnknown() const { return saysUnknown_; }

    std::string figure(std::optional<double> value, int decimals, std::string_view unit = "") const {
        if (!value && saysUnknown_)
            return "unknown";
        return fmt::format("{:.{}f}{}", value.value_or(0), decimals, unit);
    }
    /// A temperature of 0 is none.
    std::string celsius(double value) const { return figure(value != 0 ? std::optional(value) : std::nullopt, 1); }
    /// A speed that the reader makes up where the key is missing.
    std::string speed(double read, const std::string& key) const {
        return saysUnknown_ && !readKey(key) ? "unknown" : fmt::format("{}", truncated(read));
    }

private:
    bool saysUnknown_;
};

void printFans(SMCReader& reader, bool hasChip, const Words& words, const PrintLine& print) {
    const std::vector<FanReading> fans = reader.readFans();
    if (fans.empty() && !words.saysUnknown())
        print("Fans: none reported — Vantoro reads this Mac's condition from the chip's temperature.");
    else if (fans.empty())
        print(fmt::format("Fans: {}{}", reader.reportsNoFans() ? "this machine has none" : "none reported",
                          hasChip ? " — Vantoro reads its condition from the chip's temperature." : "."));
    for (const FanReading& fan : fans) {
        print(fmt::format(
            "{}: {} rpm  min {}  max {}  target {}", fan.name.empty() ? fmt::format("Fan {}", fan.index) : fan.name,
            truncated(fan.rpm), words.speed(fan.minRPM, fanKey(fan.index, "Mn")),
            words.speed(fan.maxRPM, fanKey(fan.index, "Mx")), words.speed(fan.targetRPM, fanKey(fan.index, "Tg"))));
        if (const char* const source = limitSource(fan.index))
            print(fmt::format("   {}", source));
    }
}

void printReader(SMCReader& reader, const Words& words, const PrintLine& print) {
    const Temperatures temperatures = reader.readTemperatures();
    std::string results = words.saysUnknown() ? "Results →" : "SMCReader results →";
    std::string_view gap = " ";
    for (const TemperatureFigure& figure : temperatureFigures) {
        if (figure.dumpName.empty())
            continue;
        results += fmt::format("{}{} {}", gap, figure.dumpName, words.celsius(temperatures.*figure.celsius));
        gap = "  ";
    }
    print(results);
    printFans(reader, temperatures.soc != 0, words, print);
    print(fmt::format("Power: system {}  adapter {}", words.figure(readKey("PSTR"), 2, " W"),
                      words.figure(readKey("PDTR"), 2, " W")));
}

} // namespace

void SensorDump::run(const SMCReader::Options& options, Unknown unknown, const PrintLine& print) {
    if (options.standIn)
        options.standIn->waitForSlowSensors(longestWaitSeconds);
    if (smc_open() == 0) {
        print(couldNotOpen(unknown));
        return;
    }
    const std::uint32_t keyCount = smc_key_count();
    print(fmt::format("{} keys: {}", unknown == Unknown::said ? "Sensor" : "SMC", keyCount));
    print("");
    KeysByPrefix byPrefix = readByPrefix(keyCount);
    for (const std::string_view prefix : reportedPrefixes()) {
        const auto found = byPrefix.find(prefix);
        if (found == byPrefix.end())
            print(fmt::format("{}: none found", prefix));
        else
            printFamily(prefix, std::move(found->second), print);
    }
    print("");
    SMCReader reader(options);
    if (unknown == Unknown::said) {
        // Where only counters exist, power is the difference of two readings.
        constexpr int betweenMilliseconds = 400;
        reader.readPower();
        options.pause(betweenMilliseconds);
    }
    printReader(reader, Words(unknown), print);
}

void SensorDump::watch(int samples, double intervalSeconds, const SMCReader::Options& options, Unknown unknown,
                       const PrintLine& print) {
    if (smc_open() == 0) {
        print(couldNotOpen(unknown));
        return;
    }
    SMCReader reader(options);
    const Words words(unknown);
    print(fmt::format("{:<10} {:<10} {:<10} {:<10}", "SoC", "GPU", "FAN 0", "FAN 1"));
    for (int i = 0; i < samples; ++i) {
        const Temperatures temperatures = reader.readTemperatures();
        const std::vector<FanReading> fans = reader.readFans();
        const auto rpm = [&](std::size_t fan) {
            return words.figure(fan < fans.size() ? std::optional<double>(truncated(fans[fan].rpm)) : std::nullopt, 0);
        };
        print(fmt::format("{:<10} {:<10} {:<10} {:<10}", words.celsius(temperatures.soc),
                          words.celsius(temperatures.gpu), rpm(0), rpm(1)));
        options.pause(static_cast<int>(rounded(intervalSeconds * 1e3)));
    }
}

void SensorDump::strain(const std::vector<Core>& cores, const StrainReading& strain, const PrintLine& print) {
    const Words words(Unknown::said);
    std::string kinds = fmt::format("Cores: {}", cores.size());
    const auto efficient = std::ranges::count_if(cores, [](const Core& core) { return !core.isPerformance; });
    if (efficient != 0 && efficient != std::ssize(cores))
        kinds += fmt::format(" ({} performance, {} efficiency)", std::ssize(cores) - efficient, efficient);
    std::optional<double> lowest;
    std::optional<double> highest;
    for (const Core& core : cores) {
        if (core.megahertz <= 0)
            continue;
        lowest = std::min(lowest.value_or(core.megahertz), core.megahertz);
        highest = std::max(highest.value_or(core.megahertz), core.megahertz);
    }
    const std::string least = fmt::format("{:.0f}", lowest.value_or(0));
    const std::string most = fmt::format("{:.0f} MHz", highest.value_or(0));
    print(fmt::format("{}, clocks {}", kinds,
                      !highest                        ? "unknown"
                      : most.starts_with(least + ' ') ? most
                                                      : least + " to " + most));
    print(fmt::format("Processors draw {}  graphics busy {}", words.figure(strain.cpuWatts, 2, " W"),
                      words.figure(strain.gpuPercent, 0, "%")));
    print(fmt::format("Work waits for processors {}  memory {}  disk {}", words.figure(strain.stalls.cpu, 1, "%"),
                      words.figure(strain.stalls.memory, 1, "%"), words.figure(strain.stalls.io, 1, "%")));
    std::string reasons;
    for (const ThrottleReason reason : strain.throttle.value_or(std::vector<ThrottleReason>()))
        reasons += fmt::format("{}{}", reasons.empty() ? "" : ", ", caseName(reason));
    print(fmt::format("Slowed down by: {}", !strain.throttle ? "unknown" : reasons.empty() ? "nothing" : reasons));
}

std::string SensorDump::graphicsWork(const std::optional<GraphicsShares>& shares) {
    if (!shares)
        return "unknown";
    double most = 0;
    for (const GraphicsShares::Program& program : shares->programs)
        most = std::max(most, program.percent);
    const std::size_t count = shares->programs.size();
    const std::string known = count == 0   ? "no program"
                              : count == 1 ? fmt::format("1 program, {:.0f}%", most)
                                           : fmt::format("{} programs, the busiest {:.0f}%", count, most);
    return known + (shares->hasAll ? "" : " (as far as they are told)");
}

} // namespace vantoro
