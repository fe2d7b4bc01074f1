#include "Model/Explanation/Reports.h"

#include "Support/Golden.h"
#include "Support/RichSnapshot.h"

#include <nlohmann/json.hpp>

namespace vantoro {
namespace {

TEST(JsonReport, WritesWhateverValuesThereAre) {
    History history;
    history.append(testing::richSnapshot());
    const ProcessGroup group{.key = "mds_stores",
                             .displayName = "mds_stores",
                             .members = {{.pid = -7, .peakMemory = ~std::uint64_t{0}, .averageCPU = 1.0 / 3}}};
    const Verdict verdict{.headline = "line \" \n \xFF",
                          .suspect = group,
                          .advice = {{"quit", 42}, {"wait", std::nullopt}},
                          .sustainedFor = std::numeric_limits<double>::quiet_NaN()};
    const Explanation explanation{.sections = {{"s", "t", "b", {{"l", "v", "d", true}}}}};
    const ChartSeries series{.chip = {{1772356440.25, 0.30000000000000004}}};
    testing::expectGolden("report-of-everything.json",
                          jsonReport(history, verdict, {group}, explanation, series) + "\n");
    testing::expectGolden("report-of-nothing.json", jsonReport({}, {}, {}, {}, {}) + "\n");
}

} // namespace
} // namespace vantoro
