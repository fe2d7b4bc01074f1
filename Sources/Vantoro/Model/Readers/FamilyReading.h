// What the sensors of one family say together. Pure functions of what each of them read.
#pragma once

#include "Platform/SMCService.h"

#include <vector>

namespace vantoro {

/// Degrees Celsius; 0 where nothing was accepted.
struct FamilyReading {
    double hottest = 0;
    double coolest = 0;
    double mean = 0;
    /// Sensors that read within the plausible band, and how many different figures those gave, in tenths of a degree.
    int readable = 0;
    int distinct = 0;
    /// All sensors of the family.
    int keyCount = 0;

    /// Whether enough sensors read, and differ enough, for many noisy sensors to be believed.
    bool isPlausible() const;
    /// Whether sensors of this kind are to be believed.
    bool isCredible(SensorTrust trust) const;

    bool operator==(const FamilyReading&) const = default;
};

/// Sums up the readings of a family of `keyCount` sensors, of which those that could not be read are missing. Readings
/// outside 20 to 120 °C are left out, of few and honest sensors those outside 0 to 120 °C and 0 itself; where sensors
/// are many, so are figures that so many of them show alike that they must be placeholders, unless nothing else is
/// left.
FamilyReading summarise(const std::vector<double>& readings, int keyCount, SensorTrust trust);

/// The same choice of readings, ascending; possibly none.
std::vector<double> measuring(const std::vector<double>& readings, int keyCount, SensorTrust trust);

/// The mean of the readings above 0 and below 130 °C; 0 when there is none.
double averageOf(const std::vector<double>& readings);

} // namespace vantoro
