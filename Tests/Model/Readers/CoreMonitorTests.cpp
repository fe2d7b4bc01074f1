#include "Model/Readers/CoreMonitor.h"

#include "Support/ScriptedSensors.h"

namespace vantoro {
namespace {

using testing::ScriptedProcessors;
using testing::ScriptedStates;
using testing::ScriptedTables;

class CoreMonitorTest : public ::testing::Test {
protected:
    ~CoreMonitorTest() override { cpufreq_use(nullptr, nullptr); }

    std::string labels(ProcessorCounts counts) {
        processors->processorCounts = counts;
        const CoreMonitor monitor(processors);
        std::string text;
        for (const Core& core : monitor.cores())
            text += core.label() + ' ';
        return text + std::to_string(monitor.performanceCount()) + '+' + std::to_string(monitor.efficiencyCount());
    }

    std::shared_ptr<ScriptedProcessors> processors = std::make_shared<ScriptedProcessors>();
};

TEST_F(CoreMonitorTest, NamesItsCoresByKind) {
    EXPECT_EQ(labels({.performance = 2, .efficiency = 2, .all = 4}), "E0 E1 P0 P1 2+2");
    EXPECT_EQ(labels({.all = 3}), "P0 P1 P2 3+0");
    EXPECT_EQ(labels({.performance = 1, .efficiency = 1, .all = 3}), "E0 P0 P1 1+1");
    EXPECT_EQ(labels({.performance = 2}), "P0 P1 2+0");
    EXPECT_EQ(labels({}), "0+0");
    processors->processorTiers = {.performance = "super", .efficiency = "performance"};
    EXPECT_EQ(labels({.performance = 2, .efficiency = 3}), "P0 P1 P2 S0 S1 2+3");
    EXPECT_TRUE(CoreMonitor(nullptr).cores().empty());
}

TEST_F(CoreMonitorTest, LoadIsTheShareOfTicksThatWereNotIdle) {
    processors->processorCounts = {.all = 2};
    CoreMonitor monitor(processors);
    const auto busy = [&](std::vector<HostTicks> ticks) {
        processors->ticks = std::move(ticks);
        monitor.sample();
        return std::pair(monitor.cores()[0].busy, monitor.cores()[1].busy);
    };
    EXPECT_EQ(busy({{.user = 4294967290, .idle = 10}, {}}), std::pair(0.0, 0.0)) << "the first primes";
    EXPECT_EQ(busy({{.user = 5, .idle = 21}, {.user = 1, .system = 1, .idle = 1, .nice = 1}}), std::pair(0.5, 0.75));
    processors->code = 5;
    EXPECT_EQ(busy({{}, {}}), std::pair(0.5, 0.75)) << "a failure changes nothing";
    processors->code = 0;
    EXPECT_EQ(busy({}), std::pair(0.5, 0.75)) << "nor does an answer of nothing";
    EXPECT_EQ(busy({{}, {}, {}}), std::pair(0.5, 0.75)) << "another count of processors primes anew";
    EXPECT_EQ(busy({{.idle = 4}, {}, {.user = 1}}), std::pair(0.0, 0.0)) << "no ticks are no load";
}

TEST_F(CoreMonitorTest, FrequenciesGoToTheCoresOfTheirKind) {
    const auto tables = std::make_shared<ScriptedTables>();
    tables->atPath = {{{"voltage-states1-sram", {600'000, 2'000'000}}, {"voltage-states5-sram", {700'000, 3'000'000}}}};
    const auto states = std::make_shared<ScriptedStates>();
    states->channels = {{"PCPU0", {{"V1", 0}}}, {"ECPU0", {{"V1", 0}}}, {"PCPU1", {}}, {"PCPU2", {}}};
    cpufreq_use(tables, states);
    processors->processorCounts = {.performance = 2, .efficiency = 1, .all = 3};
    processors->ticks.resize(3);
    CoreMonitor monitor(processors);
    EXPECT_EQ(monitor.maxEfficiencyMHz(), 2000);
    EXPECT_EQ(monitor.maxPerformanceMHz(), 3000);
    const auto megahertz = [&monitor] {
        monitor.sample();
        return std::vector{monitor.cores()[0].megahertz, monitor.cores()[1].megahertz, monitor.cores()[2].megahertz};
    };
    EXPECT_EQ(megahertz(), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(megahertz(), (std::vector<double>{600, 700, 700}));
    for (auto& channel : states->channels)
        for (auto& [name, residency] : channel.states)
            residency += 10;
    EXPECT_EQ(megahertz(), (std::vector<double>{2000, 3000, 700}));
    states->samples = false;
    EXPECT_EQ(megahertz(), (std::vector<double>{2000, 3000, 700}));

    cpufreq_use(nullptr, nullptr);
    const CoreMonitor without(processors);
    EXPECT_EQ(without.maxPerformanceMHz(), 0);
}

} // namespace
} // namespace vantoro
