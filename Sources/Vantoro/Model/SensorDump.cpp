#include "Model/SensorDump.h"

#include "Model/SMCKeys.h"
#include "Model/WholeNumber.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <fmt/format.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vantoro {

namespace {

constexpr std::array<std::string_view, 7> reportedPrefixes{"Tp", "Te", "Tf", "Tg", "TB", "Ts", "TC"};
constexpr std::string_view couldNotOpen = "Could not open the SMC.";

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

/// Where the ceiling of a fan comes from whose driver states none; null where it is stated (as on every Mac).
const char* ceilingSource(int fan) {
    const std::optional<double> source = readKey(fmt::format("F{}MS", fan));
    if (source == 1)
        return "reckoned from the fan's duty";
    return source == 2 ? "is the highest speed seen, or the least a fan is built for" : nullptr;
}

void printReader(SMCReader& reader, const PrintLine& print) {
    const Temperatures temperatures = reader.readTemperatures();
    print(fmt::format("SMCReader results → SoC {:.1f}  GPU {:.1f}  battery {:.1f}  enclosure {:.1f}", temperatures.soc,
                      temperatures.gpu, temperatures.battery, temperatures.enclosure));
    const std::vector<FanReading> fans = reader.readFans();
    if (fans.empty())
        print("Fans: none reported — Vantoro reads this Mac's condition from the chip's temperature.");
    for (const FanReading& fan : fans) {
        print(fmt::format("Fan {}: {} rpm  min {}  max {}  target {}", fan.index, truncated(fan.rpm),
                          truncated(fan.minRPM), truncated(fan.maxRPM), truncated(fan.targetRPM)));
        if (const char* const source = ceilingSource(fan.index))
            print(fmt::format("   max {}", source));
    }
    const PowerReading power = reader.readPower();
    print(fmt::format("Power: system {:.2f} W  adapter {:.2f} W", power.systemWatts, power.adapterWatts));
}

} // namespace

void SensorDump::run(const SMCReader::Options& options, const PrintLine& print) {
    if (smc_open() == 0) {
        print(couldNotOpen);
        return;
    }
    const std::uint32_t keyCount = smc_key_count();
    print(fmt::format("SMC keys: {}", keyCount));
    print("");
    KeysByPrefix byPrefix = readByPrefix(keyCount);
    for (const std::string_view prefix : reportedPrefixes) {
        const auto found = byPrefix.find(prefix);
        if (found == byPrefix.end())
            print(fmt::format("{}: none found", prefix));
        else
            printFamily(prefix, std::move(found->second), print);
    }
    print("");
    SMCReader reader(options);
    printReader(reader, print);
}

void SensorDump::watch(int samples, double intervalSeconds, const SMCReader::Options& options, const PrintLine& print) {
    if (smc_open() == 0) {
        print(couldNotOpen);
        return;
    }
    SMCReader reader(options);
    print(fmt::format("{:<10} {:<10} {:<10} {:<10}", "SoC", "GPU", "FAN 0", "FAN 1"));
    for (int i = 0; i < samples; ++i) {
        const Temperatures temperatures = reader.readTemperatures();
        const std::vector<FanReading> fans = reader.readFans();
        const auto rpm = [&fans](std::size_t fan) { return fan < fans.size() ? truncated(fans[fan].rpm) : 0; };
        print(fmt::format("{:<10.1f} {:<10.1f} {:<10} {:<10}", temperatures.soc, temperatures.gpu, rpm(0), rpm(1)));
        options.pause(static_cast<int>(rounded(intervalSeconds * 1e3)));
    }
}

} // namespace vantoro
