#include "CSensors/ioreport.h"

#include "Model/Readers/GPUPowerSampler.h"
#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

using testing::ScriptedEnergy;

class IOReport : public ::testing::Test {
protected:
    IOReport() { ior_use(report); }
    ~IOReport() override { ior_use(nullptr); }

    static std::optional<double> joules() {
        double value = -77;
        if (ior_gpu_energy_joules(&value) == 1)
            return value;
        EXPECT_EQ(value, -77) << "a failed reading touches nothing";
        return std::nullopt;
    }

    std::shared_ptr<ScriptedEnergy> report = std::make_shared<ScriptedEnergy>();
};

TEST_F(IOReport, TheWholeIsNotCountedAgainWithItsParts) {
    const std::tuple<std::vector<testing::EnergyChannel>, std::optional<double>> cases[] = {
        {{{"GPU SRAM", "mJ", 500}, {"GPU Energy", "mJ", 1000}, {"GPU0_0", "mJ", 500}}, 1},
        {{{"GPU SRAM", "mJ", 500}, {"GPU Energy", "kJ", 1000}, {"GPU0_0", "mJ", 700}}, 1.2},
        {{{"GPU Energy", "mJ", 0}, {"GPU0_0", "mJ", 500}}, 0},
        {{{"GPU0_1", "mJ", 1000}, {"GPU0_0", "mJ", 500}}, 1.5},
        {{{"GPU", "nJ", 2'000'000'000}, {"xGPUx", "uJ", 3'000'000}, {"GPU", "J", 4}}, 9},
        {{{"GPU", "kJ", 9}}, {}},
        {{{"GPU", "mj", 9}, {"GPU", {}, 9}, {{}, "J", 9}, {"gpu", "J", 9}, {"ECPU", "J", 9}}, {}},
        {{{"GPU", "kJ", 9}, {"GPU", "J", 0}}, 0},
        {{{std::string(124, 'x') + "GPU", "J", 1}}, 1},
        {{{std::string(125, 'x') + "GPU", "J", 1}}, {}},
        {{}, {}},
    };
    for (const auto& [channels, expected] : cases) {
        report->channels = channels;
        const std::optional<double> found = joules();
        ASSERT_EQ(found.has_value(), expected.has_value());
        EXPECT_DOUBLE_EQ(found.value_or(0), expected.value_or(0));
    }
}

TEST_F(IOReport, EachThingThatIsMissingFailsAndMayComeLater) {
    report->channels = {{"GPU", "J", 1}};
    report->loads = false;
    EXPECT_EQ(joules(), std::nullopt);
    report->loads = true;
    report->subscribes = false;
    EXPECT_EQ(joules(), std::nullopt);
    report->subscribes = true;
    report->samples = false;
    EXPECT_EQ(joules(), std::nullopt);
    EXPECT_EQ(ior_init(), 1);
    report->samples = true;
    EXPECT_EQ(joules(), 1);
    ior_use(nullptr);
    EXPECT_EQ(ior_init(), 0);
}

TEST_F(IOReport, PowerIsTheEnergyDifferentiatedOverTime) {
    double now = 100;
    GPUPowerSampler sampler([&now] { return now; });
    EXPECT_EQ(sampler.sampleWatts(), 0) << "nothing can be read";
    const auto watts = [&](std::int64_t millijoules, double at) {
        report->channels = {{"GPU", "mJ", millijoules}};
        now = at;
        return sampler.sampleWatts();
    };
    EXPECT_EQ(watts(10'000, 100), 0) << "the first primes";
    EXPECT_DOUBLE_EQ(watts(12'500, 101), 2.5);
    EXPECT_EQ(watts(13'000, 101.03), 0) << "too short";
    EXPECT_NEAR(watts(14'000, 102.03), 1, 1e-9) << "but the new reference";
    EXPECT_EQ(watts(3'000, 103.03), 0) << "went back";
    report->samples = false;
    EXPECT_EQ(watts(4'000, 104.03), 0);
    report->samples = true;
    EXPECT_NEAR(watts(5'000, 105.03), 1, 1e-9) << "over the whole gap";
    EXPECT_EQ(watts(6'000, 90), 0) << "a clock that stepped back";
}

} // namespace
} // namespace vantoro
