#include "Model/Records/Telemetry.h"

#include "Support/HistoryBuilder.h"

namespace vantoro {

using namespace vantoro::testing;

TEST(Telemetry, FanLoadIsThatOfTheHardestWorkingFanWithinItsLimits) {
    using Case = std::tuple<std::vector<FanReading>, double>;
    const auto fan = [](double rpm, double least, double most) {
        return FanReading{.rpm = rpm, .minRPM = least, .maxRPM = most};
    };
    for (const auto& [fans, load] : {
             Case{std::vector<FanReading>(), 0},
             Case{{fan(3000, 2000, 6000)}, 0.25},
             Case{{fan(3000, 2000, 6000), fan(4000, 2000, 6000), fan(2100, 2000, 6000)}, 0.5},
             Case{{fan(1500, 2000, 6000)}, 0},
             Case{{fan(9000, 2000, 6000)}, 1},
             Case{{fan(2001, 2000, 2001)}, 0},     // a span of exactly 1 rpm tells nothing
             Case{{fan(2001.1, 2000, 2001.1)}, 1}, // just above it does
             Case{{fan(3000, 0, 0)}, 0},           // unknown limits
             Case{{fan(3000, 6000, 2000)}, 0},     // limits the wrong way round
             Case{{fan(std::nan(""), 2000, 6000)}, 0},
         }) {
        Snapshot snapshot{.fans = fans};
        EXPECT_DOUBLE_EQ(snapshot.fanLoad(), load);
    }
    const Snapshot snapshot{.fans = {fan(3000, 2000, 6000), fan(4000, 0, 0)}};
    EXPECT_EQ(snapshot.peakRPM(), 4000);
    EXPECT_EQ(Vitals::quantising(snapshot).peakRPM(), 4000);
    EXPECT_EQ(Snapshot{}.peakRPM(), 0);
    FanReading graphics = fan(5000, 0, 0);
    graphics.name = "Graphics fan";
    EXPECT_EQ((Snapshot{.fans = {fan(3000, 2000, 6000), graphics}}).peakRPM(), 3000) << "none of the machine's own";
    EXPECT_EQ((Snapshot{.fans = {graphics}}).peakRPM(), 5000);
}

TEST(Telemetry, HeatLoadFollowsTheCurve) {
    using Case = std::tuple<double, double>;
    for (const auto& [celsius, load] :
         {Case{-20, 0}, Case{35, 0}, Case{42.5, 0.03}, Case{50, 0.06}, Case{57.5, 0.14}, Case{65, 0.22}, Case{80, 0.48},
          Case{85, 0.63}, Case{90, 0.78}, Case{100, 1}, Case{120, 1}, Case{std::nan(""), 0}})
        EXPECT_NEAR(Snapshot::heatLoad(celsius), load, 1e-12) << celsius;
    EXPECT_GT(Snapshot::heatLoad(35.0001), 0);
    EXPECT_EQ(Snapshot::heatLoad(std::numeric_limits<double>::infinity()), 1);
}

TEST(Telemetry, VitalsRoundEachFigureToTheStepAtWhichItIsShown) {
    const Snapshot snapshot{
        .fans = {{.index = 1, .rpm = 1234.9, .minRPM = 1001, .maxRPM = 6003, .targetRPM = 1235}},
        .temps = {.soc = 61.5, .socMean = 61.49, .gpu = 0.5, .battery = 30.2, .enclosure = 29.9},
        .power = {.systemWatts = 12.26, .adapterWatts = 12.24, .batteryWatts = -3.25, .gpuWatts = 0.04},
        .cpu = {.userPercent = 10.5, .systemPercent = 4.4, .idlePercent = 85.1, .loadAverage = 2.35},
        .memory = {.usedBytes = 7, .totalBytes = 9, .wiredBytes = 3, .compressedBytes = 1, .swapOutEvents = 5},
        .thermalPressure = ThermalPressure::fair};
    const Vitals vitals = Vitals::quantising(snapshot);
    EXPECT_EQ(vitals.fans,
              (std::vector{FanReading{.index = 1, .rpm = 1230, .minRPM = 1001, .maxRPM = 6003, .targetRPM = 1240}}));
    EXPECT_EQ(vitals.temps, (Temperatures{.soc = 62, .socMean = 61, .gpu = 1, .battery = 30, .enclosure = 30}));
    EXPECT_EQ(vitals.power, (PowerReading{12.5, 12, std::round(-3.25 / 0.1) * 0.1, 0}));
    EXPECT_EQ(vitals.cpu, (CPULoad{11, 4, 85, std::round(2.35 / 0.1) * 0.1}));
    EXPECT_EQ(vitals.memory, snapshot.memory);
    EXPECT_EQ(vitals.thermalPressure, ThermalPressure::fair);

    Snapshot unseen = snapshot;
    unseen.timestamp += 2;
    unseen.chipHeat += 3;
    unseen.fans[0].rpm += 0.05;
    unseen.processes = {process(1, "a", 5)};
    EXPECT_NE(unseen, snapshot);
    EXPECT_EQ(Vitals::quantising(unseen), vitals);
}

TEST(Telemetry, SharedIdentitiesBehaveLikeValues) {
    const ProcessSample original = process(7, "make", 50);
    ProcessSample copy = original;
    EXPECT_TRUE(copy.identity.sharesRecordWith(original.identity));
    EXPECT_EQ(process(7, "make", 50), copy);
    copy = process(7, "gmake", 50);
    EXPECT_NE(copy, original);
    EXPECT_EQ(ProcessSample{}, (ProcessSample{.identity = ProcessIdentity{}}));
}

} // namespace vantoro
