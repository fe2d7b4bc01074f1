#include "Model/Text/Format.h"

#include "Model/Text/Motion.h"
#include "Support/FixedFormatContext.h"

namespace vantoro {

using namespace vantoro::testing;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Format, TemperaturesFollowTheUnitAtTheMomentOfTheCall) {
    FixedFormatContext context;
    const Format format(context);
    EXPECT_EQ(format.temperature(36.5), "37°C");
    EXPECT_EQ(format.degrees(36.5), "37°");
    EXPECT_EQ(format.temperature(0.2), "0°C");
    context.texts["temperatureUnit"] = "F";
    EXPECT_EQ(format.temperature(36.5), "98°F");
    EXPECT_EQ(format.degrees(36.5), "98°");
    EXPECT_EQ(format.unitName(), "Fahrenheit");
    for (const double missing : {0.0, -5.0, std::nan("")}) {
        EXPECT_EQ(format.temperature(missing), "—");
        EXPECT_EQ(format.degrees(missing), "—");
    }
    for (const char* celsius : {"C", "f", "Fahrenheit", ""}) {
        context.texts["temperatureUnit"] = celsius;
        EXPECT_EQ(format.unitName(), "Celsius");
        EXPECT_EQ(format.temperature(10), "10°C");
    }
}

TEST(Format, BytesStepBy1024) {
    using Case = std::tuple<std::uint64_t, const char*>;
    constexpr std::uint64_t gigabyte = 1ULL << 30;
    for (const auto& [count, text] :
         {Case{0, "0 B"}, Case{1023, "1023 B"}, Case{1024, "1 KB"}, Case{1536, "1 KB"}, Case{1048575, "1023 KB"},
          Case{1048576, "1.0 MB"}, Case{5452595, "5.2 MB"}, Case{104857600, "100 MB"}, Case{157286400, "150 MB"},
          Case{gigabyte * 3 / 2, "1.5 GB"}, Case{gigabyte * 1024 * 2048, "2048 TB"}})
        EXPECT_EQ(Format::bytes(count), text);
}

TEST(Format, SpeedsAndAges) {
    EXPECT_EQ(Format::megahertz(0), "—");
    EXPECT_EQ(Format::megahertz(std::nan("")), "—");
    EXPECT_EQ(Format::megahertz(600.5), "601 MHz");
    EXPECT_EQ(Format::megahertz(999.6), "1000 MHz");
    EXPECT_EQ(Format::megahertz(1000), "1.00 GHz");
    EXPECT_EQ(Format::megahertz(4056), "4.06 GHz");

    FixedFormatContext context;
    const Format format(context);
    EXPECT_EQ(format.rpm(999.4), "999");
    EXPECT_EQ(format.rpm(1233.5), "1,234");
    EXPECT_EQ(format.rpm(1234567), "1,234,567");
    EXPECT_EQ(format.rpm(-100), "-100");
    EXPECT_EQ(format.rpm(std::nan("")), "0");
    EXPECT_EQ(format.rpm(infinity), "9,223,372,036,854,775,807");
    context.canGroup = false;
    EXPECT_EQ(format.rpm(1234), "0");

    EXPECT_EQ(Format::relative(100, 159.9), "59s ago");
    EXPECT_EQ(Format::relative(100, 160), "1m ago");
    EXPECT_EQ(Format::relative(100, 100 + 90 * 60), "90m ago");
    EXPECT_EQ(Format::relative(-1e300, 1e300), "153722867280912930m ago");
}

TEST(Format, TimesOfDayInEnglishAndUTC) {
    const DefaultFormatContext context;
    EXPECT_EQ(context.timeOfDay(1772356440), "9:14 AM");
    EXPECT_EQ(context.timeWithSeconds(1772356447.9), "9:14:07 AM");
    EXPECT_EQ(context.clockFace(1772356440 + 12 * 3600), "9:14");
    EXPECT_EQ(context.timeOfDay(0), "12:00 AM");
    EXPECT_EQ(context.timeOfDay(12 * 3600), "12:00 PM");
    EXPECT_EQ(context.timeOfDay(86399.9), "11:59 PM");
    EXPECT_EQ(context.timeOfDay(-60), "11:59 PM");
    EXPECT_EQ(context.timeOfDay(-1e-20), "12:00 AM");
    context.timeOfDay(1e300); // must be defined, whatever it says
    context.timeOfDay(std::nan(""));
}

TEST(Motion, FollowsTheSamplingInterval) {
    FixedFormatContext context;
    const Motion motion(context);
    const auto spring = [](double response) { return Animation(SpringAnimation{.responseSeconds = response}); };
    EXPECT_TRUE(motion.smooth());
    using Case = std::tuple<double, Animation>;
    for (const auto& [interval, animation] :
         {Case{0.25, LinearAnimation{.durationSeconds = 0.25}}, Case{0.5, LinearAnimation{.durationSeconds = 0.5}},
          Case{0.6, spring(0.3)}, Case{1, spring(0.42)}, Case{10, spring(0.42)}, Case{0, spring(0.42)}}) {
        context.numbers["sampleInterval"] = interval;
        EXPECT_EQ(motion.update(), animation) << interval;
    }
    context.flags["smoothUpdates"] = false;
    EXPECT_EQ(motion.update(), std::nullopt);
}

TEST(Motion, ASpringIsCriticallyDampedAndKeepsItsSpeed) {
    const Animation spring = SpringAnimation{.responseSeconds = 0.42};
    AnimatedValue value(0);
    value.set(1, 10, spring);
    EXPECT_DOUBLE_EQ(value.at(10), 0);
    // (d + (v + w d) t) e^(-w t) with d = -1, v = 0, w = 2 pi / 0.42
    EXPECT_NEAR(value.at(10.1), 0.4408, 1e-4);
    EXPECT_GT(value.at(10.44), 0.989);
    double before = 0;
    for (int i = 1; i < 100; ++i) {
        const double now = value.at(10 + i * 0.02);
        EXPECT_GE(now, before);
        EXPECT_LE(now, 1) << "never past its target";
        before = now;
    }
    EXPECT_FALSE(value.isAtRest(10.2));
    EXPECT_TRUE(value.isAtRest(11));
    const double speed = (value.at(10.1) - value.at(10.0999)) / 1e-4;
    const double place = value.at(10.1);
    value.set(0, 10.1, spring);
    EXPECT_NEAR(value.at(10.1), place, 1e-12);
    EXPECT_NEAR((value.at(10.1001) - place) / 1e-4, speed, 0.02) << "it turns round without a jolt";
    value.set(5, 10.2, std::nullopt);
    EXPECT_EQ(value.at(10.2), 5);
    EXPECT_TRUE(value.isAtRest(10.2));
    value.set(7, 20, LinearAnimation{.durationSeconds = 0.5});
    EXPECT_DOUBLE_EQ(value.at(20.25), 6);
    EXPECT_TRUE(value.isAtRest(20.5));
}

} // namespace vantoro
