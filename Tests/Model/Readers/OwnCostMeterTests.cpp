// What the program says of its own cost.
#include "Model/Readers/OwnCostMeter.h"

#include "Support/Testing.h"

namespace vantoro {
namespace {

struct Account : OwnCost {
    std::optional<ProcessorTime> processorTime() override {
        ++readings;
        return used;
    }
    std::optional<std::uint64_t> memoryBytes() override {
        ++memoryReadings;
        return bytes;
    }

    std::optional<ProcessorTime> used = ProcessorTime{};
    std::optional<std::uint64_t> bytes = 1000;
    int readings = 0;
    int memoryReadings = 0;
};

TEST(OwnCostMeterTests, TellsTheLastMinuteAndReadsSeldom) {
    const auto account = std::make_shared<Account>();
    OwnCostMeter meter(account);
    double now = 100;
    // Half a core for a minute, then a tenth of one.
    for (int tick = 0; tick < 4 * 60; ++tick, now += 0.25) {
        meter.note(now);
        account->used->seconds += 0.125;
    }
    EXPECT_LE(account->readings, 13);
    EXPECT_EQ(account->memoryReadings, 0) << "nobody looks";
    EXPECT_EQ(meter.figure(now - 0.5)->percentOfCore, std::nullopt) << "not a minute yet";
    EXPECT_NEAR(meter.figure(now)->percentOfCore.value_or(0), 50, 1);
    for (int tick = 0; tick < 4 * 60; ++tick, now += 0.25) {
        account->used->seconds += 0.025;
        meter.figure(now);
    }
    EXPECT_NEAR(meter.figure(now)->percentOfCore.value_or(0), 10, 4);
    EXPECT_LE(account->memoryReadings, 14);
    EXPECT_EQ(meter.figure(now)->memoryBytes, 1000);
}

TEST(OwnCostMeterTests, ClaimsNothingItCannotKnow) {
    EXPECT_FALSE(OwnCostMeter(nullptr).figure(1).has_value());
    using Case = std::tuple<const char*, double, std::optional<OwnCost::ProcessorTime>, bool, bool>;
    using Time = OwnCost::ProcessorTime;
    for (const auto& [what, gap, then, hasFigure, hasPercent] :
         {Case{"a minute", 60, Time{2, true}, true, true}, Case{"slept", 3600, Time{2, true}, true, false},
          Case{"the clock was set back", -500, Time{2, true}, true, false},
          Case{"its programs became visible", 60, Time{2, false}, true, false},
          Case{"an account that went back", 60, Time{0, true}, true, true},
          Case{"no account any more", 60, std::nullopt, false, false}}) {
        const auto account = std::make_shared<Account>();
        account->used = Time{1, true};
        account->bytes = std::nullopt;
        OwnCostMeter meter(account);
        meter.note(1000);
        account->used = then;
        const auto figure = meter.figure(1000 + gap);
        ASSERT_EQ(figure.has_value(), hasFigure) << what;
        if (!figure)
            continue;
        EXPECT_EQ(figure->percentOfCore.has_value(), hasPercent) << what;
        EXPECT_GE(figure->percentOfCore.value_or(0), 0) << what;
        EXPECT_EQ(figure->memoryBytes, std::nullopt);
    }
}

} // namespace
} // namespace vantoro
