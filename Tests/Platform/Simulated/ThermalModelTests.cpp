#include "Platform/Simulated/ThermalModel.h"

#include "Support/Testing.h"

namespace vantoro {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

ThermalModelState after(const ThermalDesign& design, ThermalModelState state, double load, double seconds) {
    advance(design, state, load, seconds);
    return state;
}

double share(const ThermalDesign& design, const ThermalModelState& state, std::size_t fan) {
    return (state.fans[fan].rpm - design.fans[fan].minRPM) / (design.fans[fan].maxRPM - design.fans[fan].minRPM);
}

void expectSound(const ThermalDesign& design, const ThermalModelState& state) {
    EXPECT_GT(state.caseCelsius, design.ambientCelsius - 1);
    EXPECT_GT(state.hottestCelsius, state.chipCelsius);
    EXPECT_LT(state.hottestCelsius, design.limitCelsius + 4);
    EXPECT_TRUE(std::isfinite(state.batteryCelsius));
    EXPECT_NEAR(state.systemWatts, state.adapterWatts + state.batteryWatts, 1e-9);
    EXPECT_GT(state.systemWatts, state.chipWatts);
    EXPECT_TRUE(state.batteryCharge >= 0 && state.batteryCharge <= 1) << state.batteryCharge;
    for (std::size_t i = 0; i < state.fans.size(); ++i)
        EXPECT_TRUE(share(design, state, i) >= -1e-9 && share(design, state, i) <= 1) << state.fans[i].rpm;
}

} // namespace

TEST(ThermalModel, TheSameLoadGivesTheSameStateInWhateverPortionsItComes) {
    const ThermalDesign design = ThermalDesign::withFans();
    const ThermalModelState rested = restingState(design);
    const ThermalModelState whole = after(design, after(design, rested, 0.7, 300), 0.1, 60);
    EXPECT_EQ(after(design, after(design, rested, 0.7, 300), 0.1, 60), whole);
    for (const double portion : {0.013, 0.1, 2.0, 7.7}) {
        ThermalModelState state = rested;
        for (const auto& [load, seconds] : {std::pair{0.7, 300.0}, std::pair{0.1, 60.0}}) {
            double left = seconds;
            for (; left > portion; left -= portion)
                advance(design, state, load, portion);
            advance(design, state, load, left);
        }
        EXPECT_NEAR(state.hottestCelsius, whole.hottestCelsius, 0.05) << portion;
        EXPECT_NEAR(state.fans[0].rpm, whole.fans[0].rpm, 10) << portion;
        EXPECT_NEAR(state.cpuJoules, whole.cpuJoules, 1e-3 * whole.cpuJoules) << portion;
        EXPECT_NEAR(static_cast<double>(state.steps), static_cast<double>(whole.steps), 1) << portion;
    }
}

TEST(ThermalModel, RestStaysRest) {
    for (const ThermalDesign& design : {ThermalDesign::withFans(), ThermalDesign::fanless()}) {
        const ThermalModelState rested = restingState(design);
        const ThermalModelState later = after(design, rested, 0.02, 3600);
        expectSound(design, later);
        EXPECT_NEAR(rested.hottestCelsius, design.fans.empty() ? 38 : 42, 1);
        EXPECT_NEAR(later.hottestCelsius, rested.hottestCelsius, 1);
        EXPECT_EQ(later.pressure, 0);
        EXPECT_EQ(rested.cpuJoules, 0);
        for (const FanState& fan : later.fans)
            EXPECT_NEAR(fan.rpm, 1350, 1);
    }
}

TEST(ThermalModel, UnderFullLoadTheFansClimbAndHoldTheChip) {
    const ThermalDesign design = ThermalDesign::withFans();
    ThermalModelState state = restingState(design);
    double before = state.fans[0].rpm;
    double joules = 0;
    for (int second = 1; second <= 600; ++second) {
        advance(design, state, 1, 1);
        expectSound(design, state);
        EXPECT_GE(state.fans[0].rpm, before - 1) << second;
        before = state.fans[0].rpm;
        joules += state.chipWatts;
        EXPECT_TRUE(second > 10 || share(design, state, 0) < 0.05) << "fans lag behind";
        EXPECT_TRUE(second < 90 || share(design, state, 0) > 0.6) << second;
    }
    EXPECT_NEAR(state.hottestCelsius, 95, 2);
    EXPECT_LT(share(design, state, 1), 0.97);
    EXPECT_EQ(state.pressure, 0);
    EXPECT_NEAR(state.cpuJoules + state.gpuJoules, joules, 0.01 * joules);
    advance(design, state, 0, 300);
    EXPECT_LT(state.hottestCelsius, 46);
    EXPECT_LT(share(design, state, 0), 0.02);
}

TEST(ThermalModel, AFanlessMachineSlowsDownAndRecovers) {
    const ThermalDesign design = ThermalDesign::fanless();
    ThermalModelState state = restingState(design);
    advance(design, state, 1, 60);
    EXPECT_EQ(state.pressure, 0);
    const std::size_t fastest = state.performance.performanceState;
    EXPECT_EQ(fastest, design.performance.megahertz.size() - 1);
    int highest = 0;
    for (int second = 0; second < 1740; ++second) {
        advance(design, state, 1, 1);
        expectSound(design, state);
        EXPECT_GE(state.pressure, highest) << "judgements do not flutter";
        highest = std::max(highest, state.pressure);
    }
    EXPECT_EQ(state.pressure, 2);
    EXPECT_NEAR(state.hottestCelsius, 101, 2);
    EXPECT_LT(state.performance.performanceState, fastest);
    advance(design, state, 0, 600);
    EXPECT_EQ(state.pressure, 0);
    EXPECT_LT(state.hottestCelsius, 48);
    EXPECT_GT(state.ceiling, 0.99);
}

TEST(ThermalModel, NonsenseDoesNoHarm) {
    const ThermalDesign design = ThermalDesign::fanless();
    const ThermalModelState rested = restingState(design);
    for (const double seconds : {0.0, -5.0, -infinity, notANumber})
        EXPECT_EQ(after(design, rested, 1, seconds), rested) << seconds;
    EXPECT_EQ(after(design, rested, notANumber, 60), after(design, rested, 0, 60));
    EXPECT_EQ(after(design, rested, -3, 60), after(design, rested, 0, 60));
    EXPECT_EQ(after(design, rested, infinity, 60), after(design, rested, 1, 60));
    for (const double seconds : {1e12, infinity})
        expectSound(design, after(design, rested, 1, seconds));
}

} // namespace vantoro
