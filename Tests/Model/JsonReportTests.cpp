#include "Model/JsonReport.h"

#include "Support/Golden.h"
#include "Support/RichSnapshot.h"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace vantoro {
namespace {

TEST(JsonReport, WritesEveryFieldOfEveryRecordInOrder) {
    History history;
    history.append(testing::richSnapshot());
    const ProcessGroup group{.key = "mds_stores",
                             .displayName = "mds_stores",
                             .kind = ProcessKind::systemDaemon,
                             .user = "root",
                             .members = {{.pid = -7,
                                          .displayName = "mds",
                                          .owningAppName = "A",
                                          .peakMemory = ~std::uint64_t{0},
                                          .samples = 3,
                                          .firstSeen = 1772356440.2500001,
                                          .averageCPU = 1.0 / 3}},
                             .totalCPU = 0.1,
                             .totalMemory = 12};
    const Verdict verdict{.severity = Severity::high,
                          .state = StressLevel::heavy,
                          .headline = "line \" \n \xFF",
                          .suspect = group,
                          .runnersUp = {group},
                          .factors = {{"cpu", "CPU", "73%", "d"}},
                          .advice = {{"quit", 42}, {"wait", std::nullopt}},
                          .sustainedFor = std::numeric_limits<double>::quiet_NaN()};
    const Explanation explanation{
        .headline = "h", .severity = Severity::elevated, .sections = {{"s", "t", "b", {{"l", "v", "d", true}}}}};
    ChartSeries series;
    series.chip = {{1772356440.2500001, 0.30000000000000004}};
    testing::expectGolden("report-of-everything.json",
                          jsonReport(history, verdict, {group}, explanation, series) + "\n");
    testing::expectGolden("report-of-nothing.json", jsonReport({}, {}, {}, {}, {}) + "\n");
}

} // namespace
} // namespace vantoro
