#include "Families.h"
#include "Figures.h"

#include "Model/Recording/Recording.h"

#include <gtest/gtest.h>

namespace culprit {
namespace {

using Json = nlohmann::json;

MachineKind firstKind(const Family& family) {
    return (family.machines & 1U) != 0 ? MachineKind::twoFans : MachineKind::noSensors;
}

TEST(MadeMachines, areTheSameFromTheSameSeed) {
    const Family family = allFamilies().front();
    const std::optional<Made> made = make(family, MachineKind::fanless, 3);
    const std::optional<Made> again = make(family, MachineKind::fanless, 3);
    const std::optional<Made> other = make(family, MachineKind::fanless, 4);
    ASSERT_TRUE(made && again && other);
    EXPECT_EQ(made->lines, again->lines);
    EXPECT_NE(made->lines, other->lines);
}

/// Recordings are such as the program reads, hold no more work than there are processors, and, where
/// every process may be read, no less than the busy time but for interrupts and what a short list leaves out.
TEST(MadeMachines, giveValidRecordingsThatAddUp) {
    const std::vector<Family> families = allFamilies();
    constexpr std::size_t step = 6;
    for (std::size_t each = 2; each < families.size(); each += step) {
        const Family& family = families[each];
        SCOPED_TRACE(family.name);
        const std::optional<Made> made = make(family, firstKind(family), 1);
        ASSERT_TRUE(made);
        vantoro::RecordingParser parser;
        EXPECT_TRUE(std::holds_alternative<vantoro::RecordingHeader>(parser.parseHeader(made->lines.front())));
        ASSERT_GE(made->lines.size(), 10U);
        double shown = 0;
        double busy = 0;
        const bool isShortOrHidden = made->machine.isMac || std::string_view(family.name) == "hidden";
        for (std::size_t i = 1; i < made->lines.size(); ++i) {
            const auto parsed = parser.parseSnapshot(made->lines[i]);
            ASSERT_TRUE(std::holds_alternative<vantoro::Snapshot>(parsed)) << made->lines[i];
            const auto& snapshot = std::get<vantoro::Snapshot>(parsed);
            EXPECT_LE(snapshot.processes.size(), 20U);
            double rows = 0;
            for (const vantoro::ProcessSample& row : snapshot.processes)
                rows += row.cpuPercent;
            EXPECT_LE(rows, made->machine.cores() * 102.0);
            shown += rows;
            busy += (100 - snapshot.cpu.idlePercent) * made->machine.cores();
        }
        EXPECT_LE(shown, busy * 1.02);
        EXPECT_GE(shown, isShortOrHidden ? 0 : busy * 0.75);
    }
}

/// A report that says more than was ever there is found out, one that says what was there is not.
TEST(MadeMachines, figuresThatCouldNotExistAreFound) {
    Seen seen;
    seen.add(R"({"timestamp":1,"power":{"systemWatts":30},"temps":{"soc":70},"fans":[],"memory":{"totalBytes":8e9},
        "processes":[{"pid":1,"displayName":"cc1plus","cpuPercent":90,"memoryBytes":1e8},
                     {"pid":2,"displayName":"cc1plus","cpuPercent":80,"memoryBytes":1e8}]})");
    const auto report = [](double total, double memory, const std::string& detail, const std::string& body) {
        const Json group{{"key", "cc1plus"},        {"friendlyName", "C++ compiler"}, {"totalCPU", total},
                         {"peakCPU", 90},           {"totalMemory", memory},          {"gpuPercent", nullptr},
                         {"members", Json::array()}};
        return Json{
            {"verdict",
             {{"suspect", group},
              {"runnersUp", Json::array()},
              {"headline", ""},
              {"detail", detail},
              {"cause", ""},
              {"factors", Json::array()},
              {"advice", Json::array()}}},
            {"suspects", Json::array()},
            {"explanation",
             {{"sections", {{{"title", "What's drawing the power"}, {"body", body}, {"rows", Json::array()}}}}}}};
    };
    const struct {
        Json report;
        std::size_t impossible;
    } cases[] = {
        {report(170, 2e8, "C++ compiler averaged 170% CPU over", "add up to about 170% CPU"), 0},
        {report(171, 2e8, "", ""), 1},
        {report(170, 9e9, "", ""), 1},
        {report(170, 2e8, "C++ compiler averaged 172% CPU over", ""), 1},
        {report(170, 2e8, "", "add up to about 180% CPU"), 1},
        {report(170, 2e8, "It draws 41 W at 71 °C.", ""), 2},
        {report(170, 2e8, "The processors are 4563% busy.", ""), 1},
    };
    for (const auto& each : cases)
        EXPECT_EQ(impossibleFigures(each.report, seen, 4).size(), each.impossible) << each.report.dump();
}

} // namespace
} // namespace culprit
