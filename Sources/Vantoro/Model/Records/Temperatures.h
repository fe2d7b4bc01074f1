// Every kind of temperature, in two tables: the families of sensors, and the figures that are made of them. What a
// recording calls a figure, its extremes, its place in the dump and its row in the Sensors pane follow from these.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vantoro {

/// What a sensor sits on. `count` is how many there are.
enum class SensorFamily : std::uint8_t { chip, graphics, battery, enclosure, count };

/// How a family's sensors are known, and how they are believed.
struct SensorFamilyKind {
    SensorFamily family;
    /// What its keys begin with.
    std::string_view keyPrefix;
    /// What they begin with on chips that hardly have any of the former.
    std::array<std::string_view, 2> reservePrefixes = {};
    /// No more of them are read.
    std::size_t mostKeys = SIZE_MAX;
    /// Its single sensors are shown; and many are noisy, so that only what they say together is to be believed.
    bool hasSingles = false;
};

inline constexpr std::array sensorFamilies{
    SensorFamilyKind{SensorFamily::chip, "Tp", {"Te", "Tf"}, 128, true},
    SensorFamilyKind{SensorFamily::graphics, "Tg", {}, 64, true},
    SensorFamilyKind{SensorFamily::battery, "TB"},
    SensorFamilyKind{.family = SensorFamily::enclosure, .keyPrefix = "Ts", .mostKeys = 48},
};

constexpr std::size_t placeOf(SensorFamily family) {
    return static_cast<std::size_t>(family);
}

/// Degrees Celsius; 0 means no reading.
struct Temperatures {
    double soc = 0;
    double socMean = 0;
    double gpu = 0;
    double battery = 0;
    double enclosure = 0;

    bool operator==(const Temperatures&) const = default;
};

struct TemperatureFigure {
    double Temperatures::*celsius;
    /// In recordings and in the machine-readable report.
    std::string_view name;
    SensorFamily family;
    /// The hottest of its sensors; else their mean.
    bool isHottest;
    /// In the dump; empty where it has no place there.
    std::string_view dumpName;
    /// In the Sensors pane: its name, what it is as far as that is said beside it, and what is said only on asking.
    const char* label;
    const char* source;
    const char* explanation;
    /// The ends of its course's scale.
    double least;
    double most;
    /// It came after the first recordings: where it was not read it is not written, as in those.
    bool cameLater = false;
};

inline constexpr std::array temperatureFigures{
    TemperatureFigure{&Temperatures::soc, "soc", SensorFamily::chip, true, "SoC", "Hottest core", "hottest die sensor",
                      "", 30, 100},
    TemperatureFigure{&Temperatures::socMean, "socMean", SensorFamily::chip, false, "", "Whole chip",
                      "mean of the die sensors", "", 30, 100},
    TemperatureFigure{&Temperatures::gpu, "gpu", SensorFamily::graphics, true, "GPU", "GPU", "hottest graphics sensor",
                      "", 30, 100},
    TemperatureFigure{&Temperatures::battery, "battery", SensorFamily::battery, false, "battery", "Battery", "",
                      "mean of the battery sensors", 20, 60},
    TemperatureFigure{&Temperatures::enclosure, "enclosure", SensorFamily::enclosure, false, "enclosure", "Enclosure",
                      "", "mean of the enclosure sensors", 20, 60},
};

/// Whether each family has its row at its place, and some figure is made of it.
consteval bool everyFamilyHasItsRows() {
    for (std::size_t place = 0; place < sensorFamilies.size(); ++place) {
        bool hasFigure = false;
        for (const TemperatureFigure& figure : temperatureFigures)
            hasFigure = hasFigure || placeOf(figure.family) == place;
        if (placeOf(sensorFamilies[place].family) != place || !hasFigure)
            return false;
    }
    return sensorFamilies.size() == placeOf(SensorFamily::count);
}

/// Whether each field of the record has exactly one row.
consteval bool everyTemperatureHasItsRow() {
    Temperatures temps;
    for (const TemperatureFigure& figure : temperatureFigures) {
        if (temps.*figure.celsius != 0)
            return false;
        temps.*figure.celsius = 1;
    }
    return sizeof(Temperatures) == temperatureFigures.size() * sizeof(double);
}

static_assert(everyFamilyHasItsRows() && everyTemperatureHasItsRow());

} // namespace vantoro
