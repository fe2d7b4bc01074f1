#include "Model/Recording/Recording.h"

#include "Support/Golden.h"
#include "Support/RichSnapshot.h"

namespace vantoro {
namespace {

Snapshot parsed(RecordingParser& parser, std::string_view line) {
    ParsedLine<Snapshot> result = parser.parseSnapshot(line);
    if (const auto* refusal = std::get_if<RecordingRefusal>(&result)) {
        ADD_FAILURE() << refusal->reason;
        return {};
    }
    return std::get<Snapshot>(std::move(result));
}

Snapshot parsed(std::string_view line) {
    RecordingParser parser;
    return parsed(parser, line);
}

/// Each line of the file is followed by the reason for which it is refused, indented.
void expectRefusals(const std::string& file, const auto& parse) {
    std::istringstream cases(testing::fileText(VANTORO_FIXTURES "/refusals/" + file));
    int count = 0;
    for (std::string line, reason; std::getline(cases, line) && std::getline(cases, reason); ++count) {
        const auto result = parse(line);
        ASSERT_TRUE(std::holds_alternative<RecordingRefusal>(result)) << line;
        EXPECT_EQ("  " + std::get<RecordingRefusal>(result).reason, reason) << line;
    }
    EXPECT_GE(count, 10);
}

TEST(Recording, GivesBackWhatWasWritten) {
    const Snapshot rich = testing::richestSnapshot();
    const std::string line = snapshotLine(rich);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(parsed(line), rich);
    EXPECT_EQ(parsed(snapshotLine({})), Snapshot());
}

TEST(Recording, WritesOnlyWhatItCanReadBack) {
    Snapshot wild;
    wild.timestamp = 7;
    wild.chipHeat = std::nan("");
    wild.power.systemWatts = std::numeric_limits<double>::infinity();
    wild.cpu = {.userPercent = 100.0001, .systemPercent = -0.5, .idlePercent = std::nan("")};
    wild.processes = {{.identity = ProcessIdentity{.pid = 1, .rawName = "\xFFx\xC3"}}};
    Snapshot tame;
    tame.timestamp = 9;
    tame.cpu = {.userPercent = 100, .systemPercent = 0, .idlePercent = 0};
    tame.processes = {{.identity = ProcessIdentity{.pid = 1, .rawName = "\uFFFDx\uFFFD"}}};
    EXPECT_EQ(parsed(snapshotLine(wild, 9)), tame);
}

TEST(Recording, WhatCameLaterIsWrittenOnlyWhereItIsKnown) {
    const std::string old = snapshotLine({.timestamp = 5, .processes = {{.identity = ProcessIdentity{.pid = 1}}}});
    for (const char* const later :
         {"cpuWatts", "availableBytes", "stalls", "throttle", "gpuPercent", "cores", "dieSensors", "gpuSensors"})
        EXPECT_EQ(old.find(later), std::string::npos) << later;
    Snapshot expected;
    expected.timestamp = 5;
    EXPECT_EQ(parsed(R"({"timestamp":5,"stalls":null,"throttle":null,"gpuPercent":null,"cores":null,"dieSensors":null,)"
                     R"("gpuSensors":null,"power":{"cpuWatts":null},"memory":{"availableBytes":null}})"),
              expected);
    expected.throttle = {{ThrottleReason::power}};
    expected.stalls.memory = 3;
    expected.cores = {{{.busyPercent = 7}}};
    EXPECT_EQ(parsed(R"({"throttle":["power","power"],"stalls":{"io":9,"x":{"cpu":1}},"stalls":{"memory":3,"io":null},)"
                     R"("cores":[{"busyPercent":7,"x":[{"megahertz":1}]}],"timestamp":5})"),
              expected);
    expected.cores = {{{.busyPercent = 120}, {.busyPercent = std::nan("")}}};
    expected.gpuPercent = std::nan("");
    expected.stalls.memory = -0.25;
    const Snapshot held = parsed(snapshotLine(expected));
    EXPECT_EQ(held.cores, (std::vector<CoreReading>{{.busyPercent = 100}, {}}));
    EXPECT_EQ(held.stalls.memory, 0);
    EXPECT_FALSE(held.gpuPercent) << "what is no number is not known";
}

TEST(Recording, OfEndlessListsTheBeginningIsKept) {
    std::string cores = "{}";
    std::string sensors = "50";
    for (int i = 0; i < 5000; ++i) {
        cores += ",{}";
        sensors += ",50";
    }
    const Snapshot snapshot = parsed(R"({"timestamp":1,"cores":[)" + cores + R"(],"dieSensors":[)" + sensors + "]}");
    EXPECT_EQ(snapshot.cores->size(), 1024U);
    EXPECT_EQ(snapshot.dieSensors->size(), 1024U);
}

TEST(Recording, FieldsMayBeMissingUnknownOrNullWhereAbsent) {
    Snapshot expected;
    expected.timestamp = 5;
    EXPECT_EQ(parsed(R"({"timestamp":5})"), expected);
    EXPECT_EQ(parsed(R"({"later":{"timestamp":"x","fans":[{"rpm":[[]]}]},"timestamp":5,"more":[1e99,null,"\u0000"]})"),
              expected);
    expected.temps.gpu = 40;
    expected.fans.resize(2);
    expected.fans[1].index = 1;
    expected.processes = {{.identity = ProcessIdentity{.pid = -3}, .memoryBytes = 1000}};
    EXPECT_EQ(parsed(R"({"temps":{"gpu":40,"new":{"soc":9}},"cpu":{},"fans":[{},{"index":1.0,"x":[]}],"timestamp":5,)"
                     R"("processes":[{"owningAppName":null,"owningAppPath":null,"pid":-3,"memoryBytes":1e3}]})"),
              expected);
}

TEST(Recording, SaysWhyALineIsRefused) {
    expectRefusals("snapshots.txt", [](const std::string& line) { return RecordingParser().parseSnapshot(line); });
    expectRefusals("headers.txt", [](const std::string& line) { return RecordingParser().parseHeader(line); });
    RecordingParser parser;
    parsed(parser, R"({"timestamp":5.5})");
    parsed(parser, R"({"timestamp":5.5})");
    const ParsedLine<Snapshot> result = parser.parseSnapshot(R"({"timestamp":5.25})");
    ASSERT_TRUE(std::holds_alternative<RecordingRefusal>(result));
    EXPECT_EQ(std::get<RecordingRefusal>(result).reason, "timestamp 5.25 is earlier than 5.5 on the line before");
}

TEST(Recording, RowsOfOneProcessShareTheirIdentity) {
    RecordingParser parser;
    const Snapshot first = parsed(parser, R"({"timestamp":1,"processes":[{"pid":7,"rawName":"a"},{"pid":8}]})");
    const Snapshot second = parsed(parser, R"({"timestamp":2,"processes":[{"pid":8},{"pid":7,"rawName":"a"}]})");
    EXPECT_TRUE(first.processes[0].identity.sharesRecordWith(second.processes[1].identity));
    // The pid went to another program.
    EXPECT_EQ(parsed(parser, R"({"timestamp":3,"processes":[{"pid":7,"rawName":"b"}]})").processes[0].rawName(), "b");
    EXPECT_EQ(first.processes[0].rawName(), "a");
}

TEST(Recording, OfAVeryLongProcessListTheBusiestAreKept) {
    std::string line = R"({"timestamp":1,"processes":[{"pid":1,"cpuPercent":50})";
    for (int pid = 2; pid <= 5000; ++pid)
        line += R"(,{"pid":)" + std::to_string(pid) + R"(,"cpuPercent":)" + std::to_string(pid % 50) + "}";
    const Snapshot snapshot = parsed(line + R"(,{"pid":-1,"cpuPercent":60}]})");
    EXPECT_LE(snapshot.processes.size(), 1024U);
    EXPECT_EQ(snapshot.processes.front().pid(), 1);
    EXPECT_EQ(snapshot.processes.back().pid(), -1);
}

TEST(Recording, HeaderSaysWhatItIs) {
    const RecordingHeader written{.machine = "MacBook · \"M3\"\n", .created = utcText(1772356440.75)};
    EXPECT_EQ(headerLine(written), R"({"format":"vantoro-recording","version":1,"machine":"MacBook · \"M3\"\n",)"
                                   R"("created":"2026-03-01T09:14:00Z"})");
    RecordingParser parser;
    EXPECT_EQ(std::get<RecordingHeader>(parser.parseHeader(headerLine(written))), written);
    EXPECT_TRUE(std::holds_alternative<RecordingHeader>(
        parser.parseHeader(R"({"version":1,"new":{"version":3,"format":[]},"format":"vantoro-recording"})")));
    const RecordingHeader later{.machine = "m",
                                .created = "c",
                                .system = SystemKind::gnuLinux,
                                .processors = RecordedProcessors{.performance = 6, .efficiency = 4}};
    EXPECT_EQ(std::get<RecordingHeader>(parser.parseHeader(headerLine(later))), later);
    EXPECT_EQ(std::get<RecordingHeader>(parser.parseHeader(
                  R"({"processors":{"x":{"efficiency":9},"performance":6,"efficiency":4},"machine":"m","created":"c",)"
                  R"("performance":7,"system":"linux","format":"vantoro-recording","version":1})")),
              later);
    EXPECT_EQ(std::get<RecordingHeader>(
                  parser.parseHeader(R"({"processors":null,"system":null,"format":"vantoro-recording","version":1})")),
              RecordingHeader());
}

} // namespace
} // namespace vantoro
