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
    return static_cast<int>(socKeys_.size() + gpuKeys_.size() + batteryKeys_.size() + enclosureKeys_.size());
}

void SMCReader::discoverSensors() {
    constexpr std::size_t fewestDieKeys = 4;
    std::vector<std::string> reserve;
    for (std::string& key : floatKeys(smc_key_count())) {
        const std::string_view family = std::string_view(key).substr(0, 2);
        if (family == "Tp" || (family == "Ts" && options_.measuresCoresUnderTs))
            socKeys_.push_back(std::move(key));
        else if (family == "Tg")
            gpuKeys_.push_back(std::move(key));
        else if (family == "TB")
            batteryKeys_.push_back(std::move(key));
        else if (family == "Ts")
            enclosureKeys_.push_back(std::move(key));
        else if (family == "Te" || family == "Tf")
            reserve.push_back(std::move(key));
    }
    // Some chips name their die's sensors after the clusters.
    if (socKeys_.size() < fewestDieKeys && reserve.size() >= fewestDieKeys)
        socKeys_ = std::move(reserve);
    socKeys_.resize(std::min<std::size_t>(socKeys_.size(), 128));
    gpuKeys_.resize(std::min<std::size_t>(gpuKeys_.size(), 64));
    enclosureKeys_.resize(std::min<std::size_t>(enclosureKeys_.size(), 48));
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
    const FamilyReading soc = summarisePatiently(socKeys_, options_.trust, socReadings_);
    const FamilyReading gpu = summarisePatiently(gpuKeys_, options_.trust, gpuReadings_);
    const double battery = averageOf(readAll(batteryKeys_));
    const double enclosure = averageOf(readAll(enclosureKeys_));
    const bool believesSoc = soc.isCredible(options_.trust);
    lastGood_ = {.soc = believesSoc ? soc.hottest : lastGood_.soc,
                 .socMean = believesSoc ? soc.mean : lastGood_.socMean,
                 .gpu = gpu.isCredible(options_.trust) ? gpu.hottest : lastGood_.gpu,
                 .battery = battery > 0 ? battery : lastGood_.battery,
                 .enclosure = enclosure > 0 ? enclosure : lastGood_.enclosure};
    return lastGood_;
}

PowerReading SMCReader::readPower() {
    if (!isAvailable_)
        return {};
    return {.systemWatts = readKey("PSTR").value_or(0),
            .adapterWatts = readKey("PDTR").value_or(0),
            .batteryWatts = readKey("PPBR").value_or(0)};
}

std::vector<double> SMCReader::latestDieSensors() const {
    return measuring(socReadings_, static_cast<int>(socKeys_.size()), options_.trust);
}

std::vector<double> SMCReader::latestGPUSensors() const {
    return measuring(gpuReadings_, static_cast<int>(gpuKeys_.size()), options_.trust);
}

std::vector<double> SMCReader::measuringSensors(const std::vector<std::string>& keys) {
    if (!isAvailable_)
        return {};
    return measuring(readAll(keys), static_cast<int>(keys.size()), options_.trust);
}

} // namespace vantoro
