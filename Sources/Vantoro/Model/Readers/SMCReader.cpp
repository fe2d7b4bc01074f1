#include "Model/Readers/SMCReader.h"

#include "Model/Readers/FamilyReading.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vantoro {

namespace {

/// A key holds one character for the fan's number.
constexpr std::string_view fanNumbers = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int mostFans = 10;

/// A name of four bytes is a text of four characters exactly when all of them are ASCII.
bool isFourCharacters(std::string_view name) {
    return name.size() == 4 && std::ranges::all_of(name, [](unsigned char c) { return c < 0x80; });
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

std::vector<std::string> floatKeys(std::uint32_t count) {
    // Controllers hold a few thousand keys. A count that was misread must not keep the program busy for hours.
    constexpr std::uint32_t most = 65'536;
    std::vector<std::string> keys;
    for (std::uint32_t index = 0; index < std::min(count, most); ++index) {
        char key[5] = {};
        char type[5] = {};
        std::uint32_t size = 0;
        if (smc_key_at_index(index, key, type, &size) == 0)
            continue;
        if (isFourCharacters(key) && std::string_view(type) == "flt ")
            keys.emplace_back(key);
    }
    return keys;
}

std::optional<double> readKey(const std::string& key) {
    double value = 0;
    if (smc_read_number(key.c_str(), &value) == 0 || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string fanKey(int fan, std::string_view suffix) {
    return std::string{'F', fanNumbers.at(static_cast<std::size_t>(fan))}.append(suffix);
}

SMCReader::Options SMCReader::Options::of(const std::shared_ptr<SMCService>& service,
                                          std::function<void(int milliseconds)> pause) {
    Options options{.pause = std::move(pause)};
    if (!service)
        return options;
    options.trust = service->trust();
    options.measuresCoresUnderTs = service->measuresCoresUnderTs();
    if (!service->isController())
        options.standIn = service;
    return options;
}

SMCReader::SMCReader(Options options) : options_(std::move(options)) {
    generation_ = options_.standIn ? options_.standIn->generation() : 0;
    discover();
}

void SMCReader::discover() {
    isOpen_ = smc_open() != 0;
    if (!isOpen_)
        return;
    discoverSensors();
    discoverFans();
}

void SMCReader::refresh() {
    if (!options_.standIn || options_.standIn->generation() == generation_)
        return;
    generation_ = options_.standIn->generation();
    options_.trust = options_.standIn->trust();
    if (isOpen_)
        smc_close();
    families_ = {};
    fanCount_ = 0;
    reportsNoFans_ = false;
    lastGood_ = {};
    discover();
}

Cooling SMCReader::cooling() const {
    if (!options_.standIn)
        return reportsNoFans_ ? Cooling::passive : Cooling::fans;
    if (isOpen_ && fanLimits_.isFresh())
        return Cooling::fans;
    if (!isOpen_ || !chip_.isFresh())
        return Cooling::load;
    return reportsNoFans_ ? Cooling::passive : Cooling::heat;
}

SMCReader::~SMCReader() {
    if (isOpen_)
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
        // A controller's many say little more than its first; elsewhere the hottest may be the last package's.
        if (!options_.standIn || !sensorFamilies[place].hasSingles)
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
        fanCount_ = std::clamp(*count, 0, options_.standIn ? static_cast<int>(fanNumbers.size()) : mostFans);
        reportsNoFans_ = *count < 1;
        return;
    }
    for (int fan = 0; fan < probedFans; ++fan)
        if (readKey(fanKey(fan, "Ac")))
            fanCount_ = fan + 1;
}

FanReading SMCReader::readFan(int fan, double rpm) const {
    FanReading reading{.index = fan, .rpm = rpm, .targetRPM = readKey(fanKey(fan, "Tg")).value_or(rpm)};
    const auto least = readKey(fanKey(fan, "Mn"));
    const auto most = readKey(fanKey(fan, "Mx"));
    if (!options_.standIn) {
        reading.minRPM = least.value_or(0);
        reading.maxRPM = most.value_or(std::max(rpm, 1.0));
        return reading;
    }
    reading.name = options_.standIn->fanName(fan);
    constexpr double learned = 2;
    constexpr double learning = 3;
    const auto source = readKey(fanKey(fan, "MS"));
    if (least && most && *most - *least > 1) {
        reading.minRPM = *least;
        reading.maxRPM = *most;
        reading.hasLearnedLimits = source == learned;
    } else {
        reading.learnsLimits = source == learning;
    }
    return reading;
}

std::vector<FanReading> SMCReader::readFans() {
    std::vector<FanReading> fans;
    for (int fan = 0; isOpen_ && fan < fanCount_; ++fan)
        if (const std::optional<double> rpm = readKey(fanKey(fan, "Ac")))
            fans.push_back(readFan(fan, *rpm));
    fanLimits_.note(std::ranges::any_of(fans, [](const FanReading& fan) { return fan.maxRPM > 0; }));
    return fans;
}

/// False when the family has nothing to be believed at this moment.
bool SMCReader::takeFamily(const SensorFamilyKind& kind) {
    Family& family = families_.at(placeOf(kind.family));
    const FamilyReading reading = kind.hasSingles ? summarisePatiently(family.keys, options_.trust, family.readings)
                                                  : FamilyReading{.mean = averageOf(readAll(family.keys))};
    const bool isCredible = kind.hasSingles ? reading.isCredible(options_.trust) : reading.mean > 0;
    // Many noisy sensors that read, but nonsense, say nothing of what became of the temperature.
    const bool isGone = options_.standIn && (options_.trust == SensorTrust::fewAndHonest || reading.readable == 0);
    for (const TemperatureFigure& figure : temperatureFigures)
        if (figure.family == kind.family && (isCredible || isGone))
            lastGood_.*figure.celsius = figure.isHottest ? reading.hottest : reading.mean;
    return isCredible;
}

Temperatures SMCReader::readTemperatures() {
    if (!isOpen_)
        return {};
    for (const SensorFamilyKind& kind : sensorFamilies)
        if (const bool isCredible = takeFamily(kind); kind.family == SensorFamily::chip)
            chip_.note(isCredible);
    return lastGood_;
}

PowerReading SMCReader::readPower() {
    if (!isOpen_)
        return {};
    return {.systemWatts = readKey("PSTR").value_or(0),
            .adapterWatts = readKey("PDTR").value_or(0),
            .batteryWatts = readKey("PPBR").value_or(0)};
}

std::vector<double> SMCReader::latest(SensorFamily family) const {
    return measuring(families_.at(placeOf(family)).readings, static_cast<int>(keys(family).size()), options_.trust);
}

std::vector<double> SMCReader::measuringSensors(const std::vector<std::string>& keys) {
    if (!isOpen_)
        return {};
    return measuring(readAll(keys), static_cast<int>(keys.size()), options_.trust);
}

} // namespace vantoro
