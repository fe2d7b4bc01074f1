#include "Model/Readers/SMCReader.h"

#include "Model/Readers/FamilyReading.h"
#include "Model/Readers/SMCKeys.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace vantoro {

namespace {

/// A key holds one digit for the fan's number.
constexpr int mostFans = 10;

std::string fanKey(int fan, std::string_view suffix) {
    return std::string{'F', static_cast<char>('0' + fan)}.append(suffix);
}

std::vector<double> readAll(const std::vector<std::string>& keys) {
    std::vector<double> values;
    values.reserve(keys.size());
    for (const std::string& key : keys)
        if (const std::optional<double> value = readKey(key))
            values.push_back(*value);
    return values;
}

/// Many noisy sensors seldom all say nonsense twice: another look often helps. Honest ones would only say it again.
FamilyReading summarisePatiently(const std::vector<std::string>& keys, SensorTrust trust,
                                 std::vector<double>& readings) {
    const int tries = trust == SensorTrust::manyAndNoisy ? 3 : 1;
    FamilyReading reading;
    for (int i = 0; i < tries && (i == 0 || !reading.isCredible(trust)); ++i) {
        readings = readAll(keys);
        reading = summarise(readings, static_cast<int>(keys.size()), trust);
    }
    return reading;
}

/// The controller's own count of its fans. A count that no integer holds is as good as none: on no account may it take
/// the program down.
std::optional<int> readFanCount() {
    const std::optional<double> count = readKey("FNum");
    if (!count || *count <= std::numeric_limits<int>::min() || *count >= std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*count);
}

} // namespace

SMCReader::SMCReader(Options options) : options_(std::move(options)) {
    isAvailable_ = smc_open() != 0;
    if (!isAvailable_)
        return;
    discoverSensors();
    discoverFans();
}

SMCReader::~SMCReader() {
    if (isAvailable_)
        smc_close();
}

int SMCReader::sensorCount() const {
    std::size_t count = 0;
    for (const Family& family : families_)
        count += family.keys.size();
    return static_cast<int>(count);
}

void SMCReader::discoverSensors() {
    constexpr std::size_t fewestKeys = 4;
    std::array<std::vector<std::string>, sensorFamilies.size()> reserves;
    for (std::string& key : floatKeys(smc_key_count())) {
        const std::string_view prefix = std::string_view(key).substr(0, 2);
        for (const SensorFamilyKind& kind : sensorFamilies) {
            const bool isCore = prefix == "Ts" && options_.measuresCoresUnderTs;
            const std::size_t place = placeOf(isCore ? SensorFamily::chip : kind.family);
            if (prefix == kind.keyPrefix)
                families_.at(place).keys.push_back(std::move(key));
            else if (std::ranges::find(kind.reservePrefixes, prefix) != kind.reservePrefixes.end())
                reserves.at(place).push_back(std::move(key));
            else
                continue;
            break;
        }
    }
    for (std::size_t place = 0; place < families_.size(); ++place) {
        std::vector<std::string>& keys = families_[place].keys;
        // Some chips name their die's sensors after the clusters.
        if (keys.size() < fewestKeys && reserves[place].size() >= fewestKeys)
            keys = std::move(reserves[place]);
        keys.resize(std::min(keys.size(), sensorFamilies[place].mostKeys));
    }
}

void SMCReader::discoverFans() {
    constexpr int pauseMilliseconds = 20;
    constexpr int probedFans = 8;
    if (options_.simulatesFanless) {
        reportsNoFans_ = true;
        return;
    }
    std::optional<int> count = readFanCount();
    for (int i = 1; i < 3 && !count; ++i) {
        if (options_.pause)
            options_.pause(pauseMilliseconds);
        count = readFanCount();
    }
    if (count) {
        fanCount_ = std::clamp(*count, 0, mostFans);
        reportsNoFans_ = *count < 1;
        return;
    }
    for (int fan = 0; fan < probedFans; ++fan)
        if (readKey(fanKey(fan, "Ac")))
            fanCount_ = fan + 1;
}

std::vector<FanReading> SMCReader::readFans() {
    std::vector<FanReading> fans;
    for (int fan = 0; isAvailable_ && fan < fanCount_; ++fan) {
        const std::optional<double> rpm = readKey(fanKey(fan, "Ac"));
        if (!rpm)
            continue;
        fans.push_back({.index = fan,
                        .rpm = *rpm,
                        .minRPM = readKey(fanKey(fan, "Mn")).value_or(0),
                        .maxRPM = readKey(fanKey(fan, "Mx")).value_or(std::max(*rpm, 1.0)),
                        .targetRPM = readKey(fanKey(fan, "Tg")).value_or(*rpm)});
    }
    return fans;
}

Temperatures SMCReader::readTemperatures() {
    if (!isAvailable_)
        return {};
    for (const SensorFamilyKind& kind : sensorFamilies) {
        Family& family = families_.at(placeOf(kind.family));
        const FamilyReading reading = kind.hasSingles ? summarisePatiently(family.keys, options_.trust, family.readings)
                                                      : FamilyReading{.mean = averageOf(readAll(family.keys))};
        if (kind.hasSingles ? !reading.isCredible(options_.trust) : reading.mean <= 0)
            continue;
        for (const TemperatureFigure& figure : temperatureFigures)
            if (figure.family == kind.family)
                lastGood_.*figure.celsius = figure.isHottest ? reading.hottest : reading.mean;
    }
    return lastGood_;
}

PowerReading SMCReader::readPower() {
    if (!isAvailable_)
        return {};
    return {.systemWatts = readKey("PSTR").value_or(0),
            .adapterWatts = readKey("PDTR").value_or(0),
            .batteryWatts = readKey("PPBR").value_or(0)};
}

std::vector<double> SMCReader::latest(SensorFamily family) const {
    return measuring(families_.at(placeOf(family)).readings, static_cast<int>(keys(family).size()), options_.trust);
}

std::vector<double> SMCReader::measuringSensors(const std::vector<std::string>& keys) {
    if (!isAvailable_)
        return {};
    return measuring(readAll(keys), static_cast<int>(keys.size()), options_.trust);
}

} // namespace vantoro
