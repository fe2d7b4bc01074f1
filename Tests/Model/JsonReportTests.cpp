#include "Model/JsonReport.h"

#include "Model/Diagnosis.h"
#include "Model/LocalExplainer.h"
#include "Model/ProcessKnowledge.h"
#include "Model/RecordingFile.h"
#include "Model/Suspects.h"
#include "Support/FixedFormatContext.h"
#include "Support/RichSnapshot.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace vantoro {
namespace {

using Json = nlohmann::ordered_json;

std::string names(const Json& object) {
    std::string joined;
    for (const auto& entry : object.items())
        joined += (joined.empty() ? "" : " ") + entry.key();
    return joined;
}

constexpr auto groupNames = "key displayName friendlyName owningAppPath kind user totalCPU peakCPU totalMemory "
                            "sustained stressScore members";

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
    Verdict verdict{.severity = Severity::high,
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
    const std::string text = jsonReport(history, verdict, {group}, explanation, series);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    const Json report = Json::parse(text);

    EXPECT_EQ(names(report), "vitals verdict suspects explanation series");
    EXPECT_EQ(names(report["vitals"]), "fans temps power cpu memory thermalPressure fanLoad peakRPM");
    EXPECT_EQ(names(report["vitals"]["fans"][0]), "index rpm minRPM maxRPM targetRPM");
    EXPECT_EQ(names(report["vitals"]["temps"]), "soc socMean gpu battery enclosure");
    EXPECT_EQ(names(report["vitals"]["power"]), "systemWatts adapterWatts batteryWatts gpuWatts");
    EXPECT_EQ(names(report["vitals"]["cpu"]), "userPercent systemPercent idlePercent loadAverage");
    EXPECT_EQ(names(report["vitals"]["memory"]), "usedBytes totalBytes wiredBytes compressedBytes swapOutEvents");
    EXPECT_EQ(names(report["verdict"]),
              "severity state cooling awaitingReading stateLabel statePhrase headline detail cause sustainedFor "
              "suspect runnersUp factors advice");
    EXPECT_EQ(names(report["verdict"]["suspect"]), groupNames);
    EXPECT_EQ(names(report["suspects"][0]), groupNames);
    EXPECT_EQ(names(report["suspects"][0]["members"][0]),
              "pid displayName owningAppName owningAppPath executablePath kind user totalCPU peakCPU totalEnergy "
              "peakMemory samples busySamples averageCPU averageEnergy sustained stressScore firstSeen lastSeen");
    EXPECT_EQ(names(report["verdict"]["factors"][0]), "symbol title value detail");
    EXPECT_EQ(names(report["explanation"]), "headline subhead severity sections");
    EXPECT_EQ(names(report["explanation"]["sections"][0]), "symbol title body rows");
    EXPECT_EQ(report["explanation"]["sections"][0]["rows"][0].dump(),
              R"({"label":"l","value":"v","detail":"d","emphasised":true})");
    EXPECT_EQ(names(report["series"]), "fan cpu temp chip power");

    EXPECT_EQ(report["vitals"]["fans"][0]["rpm"], 2320);
    EXPECT_EQ(report["vitals"]["thermalPressure"], "serious");
    EXPECT_EQ(report["verdict"]["state"], "heavy");
    EXPECT_EQ(report["verdict"]["severity"], "high");
    EXPECT_EQ(report["verdict"]["headline"], "line \" \n \uFFFD");
    EXPECT_EQ(report["verdict"]["sustainedFor"], 0);
    EXPECT_EQ(report["verdict"]["advice"].dump(), R"([{"text":"quit","quitPID":42},{"text":"wait","quitPID":null}])");
    EXPECT_EQ(report["suspects"][0]["friendlyName"], friendlyName("mds_stores"));
    EXPECT_NE(report["suspects"][0]["friendlyName"], "mds_stores");
    EXPECT_TRUE(report["suspects"][0]["owningAppPath"].is_null());
    EXPECT_EQ(report["suspects"][0]["members"][0]["firstSeen"], 1772356440.2500001);
    EXPECT_EQ(report["suspects"][0]["members"][0]["peakMemory"], ~std::uint64_t{0});
    EXPECT_EQ(report["series"]["chip"][0], Json::array({1772356440.2500001, 0.30000000000000004}));
}

Json reportOn(const History& history) {
    const testing::FixedFormatContext context;
    const Format format(context);
    const Verdict verdict = DiagnosisEngine::evaluate(history, format);
    const Snapshot newest = history.snapshots().empty() ? Snapshot{} : history.snapshots().back();
    return Json::parse(jsonReport(history, verdict, rankedSuspects(history),
                                  LocalExplainer::explain(history, verdict, newest, format), chartSeries(history)));
}

TEST(JsonReport, ConcludesWhatTheRecordingsWereMadeToShow) {
    struct Case {
        std::string name;
        std::size_t snapshots;
        std::string state;
        std::string cooling;
        std::string suspect;
    };
    for (const auto& [name, snapshots, state, cooling, suspect] :
         {Case{"fans-compile", 56, "heavy", "fans", "\"clang\""},
          Case{"fanless-browser", 81, "moderate", "passive", "\"Kestrel\""},
          Case{"calm", 46, "idle", "fans", "null"}}) {
        History history;
        const RecordingResult result = readRecording(fmt::format("{}/recordings/{}.jsonl", VANTORO_FIXTURES, name),
                                                     [&](Snapshot&& snapshot) { history.append(std::move(snapshot)); });
        ASSERT_EQ(result.error, std::nullopt) << result.error->text(name);
        EXPECT_EQ(history.snapshots().size(), snapshots) << name;
        const Json report = reportOn(history);
        EXPECT_EQ(report["verdict"]["state"], state) << name;
        EXPECT_EQ(report["verdict"]["cooling"], cooling) << name;
        const Json& found = report["verdict"]["suspect"];
        EXPECT_EQ(found.is_null() ? "null" : found["key"].dump(), suspect) << name;
        EXPECT_EQ(report["series"]["fan"].size(), snapshots) << name;
    }
}

TEST(JsonReport, AnEmptyRecordingGivesAnEmptyReport) {
    const Json report = reportOn(History());
    EXPECT_EQ(report["vitals"]["cpu"]["idlePercent"], 100);
    EXPECT_TRUE(report["verdict"]["suspect"].is_null());
    EXPECT_EQ(report["suspects"], Json::array());
    EXPECT_EQ(report["series"].dump(), R"({"fan":[],"cpu":[],"temp":[],"chip":[],"power":[]})");
}

} // namespace
} // namespace vantoro
