#include "Model/Readers/FamilyReading.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <unordered_map>

namespace vantoro {

namespace {

constexpr double lowestPlausible = 20;
constexpr double highestPlausible = 120;

bool inPlausibleBand(double celsius) {
    return celsius >= lowestPlausible && celsius <= highestPlausible;
}

/// A chip that rests in a cold room is colder than the placeholders of those that have many sensors.
bool isAccepted(double celsius, SensorTrust trust) {
    return trust == SensorTrust::manyAndNoisy ? inPlausibleBand(celsius) : celsius > 0 && celsius <= highestPlausible;
}

std::vector<double> accepted(const std::vector<double>& readings, SensorTrust trust) {
    std::vector<double> values;
    values.reserve(readings.size());
    std::ranges::copy_if(readings, std::back_inserter(values),
                         [trust](double celsius) { return isAccepted(celsius, trust); });
    return values;
}

/// How many sensors must show the same figure for it to be a placeholder.
int placeholderThreshold(int keyCount) {
    return keyCount >= 64 ? 8 : std::max(keyCount, 24) / 8;
}

long hundredths(double celsius) {
    return std::lround(celsius * 100);
}

/// Without the figures that blocks report which are powered down: those that many sensors share to the hundredth.
std::vector<double> withoutPlaceholders(const std::vector<double>& values, int keyCount) {
    std::unordered_map<long, int> counts;
    for (const double value : values)
        ++counts[hundredths(value)];
    std::vector<double> kept;
    std::ranges::copy_if(values, std::back_inserter(kept),
                         [&](double value) { return counts[hundredths(value)] < placeholderThreshold(keyCount); });
    return kept;
}

int distinctTenths(const std::vector<double>& values) {
    std::vector<int> tenths(values.size());
    std::ranges::transform(values, tenths.begin(), [](double value) { return static_cast<int>(value * 10); });
    std::ranges::sort(tenths);
    return static_cast<int>(std::unique(tenths.begin(), tenths.end()) - tenths.begin());
}

double meanOf(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

} // namespace

bool FamilyReading::isPlausible() const {
    const int n = keyCount;
    const int leastReadable = n <= 4 ? 3 : n <= 11 ? 2 * n / 3 : 8;
    const int leastDistinct = n <= 8 ? 3 : n <= 29 ? n / 3 : 10;
    return inPlausibleBand(hottest) && readable >= leastReadable && distinct >= leastDistinct;
}

bool FamilyReading::isCredible(SensorTrust trust) const {
    return trust == SensorTrust::fewAndHonest ? readable > 0 : isPlausible();
}

FamilyReading summarise(const std::vector<double>& readings, int keyCount, SensorTrust trust) {
    const std::vector<double> all = accepted(readings, trust);
    if (all.empty())
        return {.keyCount = keyCount};
    std::vector<double> kept = trust == SensorTrust::manyAndNoisy ? withoutPlaceholders(all, keyCount) : all;
    if (kept.empty())
        kept = all;
    const auto [coolest, hottest] = std::ranges::minmax_element(kept);
    return {.hottest = *hottest,
            .coolest = *coolest,
            .mean = meanOf(kept),
            .readable = static_cast<int>(all.size()),
            .distinct = distinctTenths(all),
            .keyCount = keyCount};
}

std::vector<double> measuring(const std::vector<double>& readings, int keyCount, SensorTrust trust) {
    std::vector<double> values = accepted(readings, trust);
    if (trust == SensorTrust::manyAndNoisy)
        values = withoutPlaceholders(values, keyCount);
    std::ranges::sort(values);
    return values;
}

double averageOf(const std::vector<double>& readings) {
    std::vector<double> values;
    std::ranges::copy_if(readings, std::back_inserter(values), [](double value) { return value > 0 && value < 130; });
    return values.empty() ? 0 : meanOf(values);
}

} // namespace vantoro
