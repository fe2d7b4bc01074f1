#include "Model/Readers/FamilyReading.h"

#include "Support/Testing.h"

namespace vantoro {
namespace {

constexpr SensorTrust noisy = SensorTrust::manyAndNoisy;
constexpr SensorTrust honest = SensorTrust::fewAndHonest;

/// `count` readings, 0.5 °C apart.
std::vector<double> ladder(int count, double from) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i)
        values.push_back(from + i * 0.5);
    return values;
}

TEST(FamilyReading, PlausibilityAtTheBoundsOfEachRow) {
    const std::tuple<int, int, int> rows[] = {{1, 3, 3},  {4, 3, 3},  {5, 3, 3},  {8, 5, 3},   {9, 6, 3},
                                              {11, 7, 3}, {12, 8, 4}, {29, 8, 9}, {30, 8, 10}, {128, 8, 10}};
    for (const auto& [keys, readable, distinct] : rows) {
        const auto plausible = [keys = keys](int r, int d, double hottest = 50) {
            return FamilyReading{.hottest = hottest, .readable = r, .distinct = d, .keyCount = keys}.isPlausible();
        };
        EXPECT_TRUE(plausible(readable, distinct)) << keys;
        EXPECT_FALSE(plausible(readable - 1, distinct)) << keys;
        EXPECT_FALSE(plausible(readable, distinct - 1)) << keys;
        EXPECT_TRUE(plausible(readable, distinct, 20) && plausible(readable, distinct, 120)) << keys;
        EXPECT_FALSE(plausible(readable, distinct, 19.9) || plausible(readable, distinct, 120.1)) << keys;
    }
    EXPECT_FALSE(FamilyReading{}.isPlausible());
}

TEST(FamilyReading, TakesWhatLiesInTheBand) {
    const std::vector<double> readings{
        20, 120, 19.99, 120.01, 50.04, 50.0, std::nan(""), std::numeric_limits<double>::infinity(), -5};
    EXPECT_EQ(summarise(readings, 9, noisy), (FamilyReading{.hottest = 120,
                                                            .coolest = 20,
                                                            .mean = (20 + 120 + 50.04 + 50) / 4,
                                                            .readable = 4,
                                                            .distinct = 3,
                                                            .keyCount = 9}));
    EXPECT_EQ(summarise({10, 130}, 2, noisy), (FamilyReading{.keyCount = 2}));
    EXPECT_EQ(averageOf({0, 130, -3, 20, 0.5, 129.5}), 50);
    EXPECT_EQ(averageOf({0, 130}), 0);
}

TEST(FamilyReading, DropsFiguresThatTooManySensorsShare) {
    const std::tuple<int, int> rows[] = {{10, 3}, {31, 3}, {32, 4}, {63, 7}, {64, 8}, {128, 8}};
    for (const auto& [keys, threshold] : rows) {
        std::vector<double> readings = ladder(8, 50);
        readings.insert(readings.end(), static_cast<std::size_t>(threshold - 1), 90.25);
        EXPECT_EQ(summarise(readings, keys, noisy).hottest, 90.25) << keys;
        readings.push_back(90.251); // the same to the hundredth
        const FamilyReading reading = summarise(readings, keys, noisy);
        EXPECT_EQ(reading.hottest, 53.5) << keys;
        EXPECT_EQ(reading.readable, 8 + threshold) << "counted before any is dropped";
        EXPECT_EQ(reading.distinct, 9);
        EXPECT_EQ(measuring(readings, keys, noisy), ladder(8, 50)) << keys;
    }
    const std::vector<double> alike(12, 40);
    EXPECT_EQ(summarise(alike, 12, noisy).hottest, 40) << "nothing else is left";
    EXPECT_FALSE(summarise(alike, 12, noisy).isCredible(noisy));
    EXPECT_TRUE(measuring(alike, 12, noisy).empty());
}

TEST(FamilyReading, HonestSensorsAreTakenAsTheyAre) {
    const std::vector<double> readings{45, 45, 45, 14, 61, 0, -5, 121};
    EXPECT_EQ(summarise(readings, 9, honest).hottest, 61);
    EXPECT_EQ(summarise(readings, 9, honest).mean, 42);
    EXPECT_EQ(measuring(readings, 9, honest), (std::vector<double>{14, 45, 45, 45, 61}));
    EXPECT_TRUE(summarise({14}, 1, honest).isCredible(honest)) << "a cold morning";
    EXPECT_FALSE(summarise({0}, 1, honest).isCredible(honest));
    EXPECT_FALSE(summarise({14, 14.5, 15}, 3, noisy).isCredible(noisy)) << "a placeholder on a Mac";
}

} // namespace
} // namespace vantoro
