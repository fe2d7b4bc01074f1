#include "Model/Diagnosis/Diagnosis.h"

#include "Support/HistoryBuilder.h"

namespace vantoro {

using namespace vantoro::testing;

TEST(Diagnosis, BandsTheLoad) {
    using enum StressLevel;
    using Case = std::tuple<double, StressLevel>;
    for (const auto& [load, state] :
         {Case{0.0, idle}, Case{0.0599, idle}, Case{0.06, light}, Case{0.2199, light}, Case{0.22, moderate},
          Case{0.4799, moderate}, Case{0.48, heavy}, Case{0.7799, heavy}, Case{0.78, extreme}, Case{1, extreme}})
        EXPECT_EQ(DiagnosisEngine::stressLevel(load), state) << load;
    Snapshot both = fanMachine(0.5);
    both.chipHeat = 100;
    both.cpu.idlePercent = 25;
    const History history = historyEndingIn(both);
    const std::size_t newest = history.snapshots().size() - 1;
    EXPECT_EQ(history.load(newest, Cooling::fans), 0.5);
    EXPECT_EQ(history.load(newest, Cooling::passive), 1);
    EXPECT_EQ(history.load(newest, Cooling::heat), 1);
    EXPECT_EQ(history.load(newest, Cooling::load), 0.75);
}

TEST(Diagnosis, MemoryIsShortOfWhatCouldBeHad) {
    constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30U;
    MemoryLoad memory{.totalBytes = 16 * gigabyte, .wiredBytes = 15 * gigabyte, .swapOutEvents = 9};
    EXPECT_TRUE(DiagnosisEngine::isMemoryShort(memory));
    EXPECT_EQ(DiagnosisEngine::memoryText(memory), "");
    memory.availableBytes = 19 * gigabyte / 2;
    EXPECT_EQ(DiagnosisEngine::memoryPressure(memory), 1 - 9.5 / 16) << "what was ever swapped out does not count";
    EXPECT_EQ(DiagnosisEngine::memoryText(memory), "6.5 of 16 GB");
    memory.availableBytes = 20 * gigabyte;
    EXPECT_EQ(DiagnosisEngine::memoryText(memory), "0 of 16 GB");
}

TEST(Diagnosis, TheLargestWaitIsToldAndOnlyWhatIsFelt) {
    using Stall = DiagnosisEngine::Stall;
    const auto wordsOf = [](const StallShares& shares) {
        std::string words;
        for (const Stall& stall : DiagnosisEngine::stallsOf(shares))
            words += std::string(stall.waitedFor) + (stall.isFelt ? "! " : " ");
        return words;
    };
    EXPECT_EQ(wordsOf({}), "");
    EXPECT_EQ(wordsOf({.cpu = 39, .memory = 5, .io = 10}), "the processors the disk! memory! ");
    EXPECT_EQ(wordsOf({.memory = 0, .io = 0}), "memory the disk ");
}

TEST(Diagnosis, SeverityFollowsTheStateUnlessHeatPresses) {
    using Case = std::tuple<double, ThermalPressure, double, Severity>;
    using enum ThermalPressure;
    for (const auto& [load, pressure, idlePercent, severity] :
         {Case{0, nominal, 100, Severity::calm}, Case{0.1, nominal, 40, Severity::calm},
          Case{0.1, nominal, 39, Severity::normal}, Case{0, fair, 39, Severity::normal},
          Case{0.3, nominal, 100, Severity::normal}, Case{0.5, nominal, 0, Severity::elevated},
          Case{0.9, fair, 0, Severity::high}, Case{0, serious, 100, Severity::critical},
          Case{0.9, critical, 0, Severity::critical}}) {
        Snapshot now = fanMachine(load);
        now.thermalPressure = pressure;
        now.cpu.idlePercent = idlePercent;
        EXPECT_EQ(DiagnosisEngine::evaluate(historyEndingIn(now), Format(DefaultFormatContext())).severity, severity)
            << load << ' ' << idlePercent;
    }
}

TEST(Diagnosis, WordsDurations) {
    using Case = std::tuple<double, const char*>;
    for (const auto& [seconds, text] :
         {Case{0.0, "0 seconds"}, Case{46.9, "46 seconds"}, Case{89.9, "89 seconds"}, Case{90, "2 minutes"},
          Case{149, "2 minutes"}, Case{150, "3 minutes"}, Case{3569, "59 minutes"}, Case{3570, "an hour"},
          Case{7169, "an hour"}, Case{7170, "2 hours"}, Case{10700, "2 hours"}, Case{10799, "3 hours"}})
        EXPECT_EQ(DiagnosisEngine::duration(seconds), text) << seconds;
}

} // namespace vantoro
