#include "Model/Recording.h"
#include "Support/RichSnapshot.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace vantoro {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

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

std::string reason(std::string_view line) {
    RecordingParser parser;
    const ParsedLine<Snapshot> result = parser.parseSnapshot(line);
    const auto* refusal = std::get_if<RecordingRefusal>(&result);
    return refusal ? refusal->reason : "(accepted)";
}

TEST(Recording, GivesBackWhatWasWritten) {
    const Snapshot rich = testing::richSnapshot();
    const std::string line = snapshotLine(rich);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(parsed(line), rich);
    EXPECT_EQ(parsed(snapshotLine({})), Snapshot());
}

TEST(Recording, WritesOnlyWhatItCanReadBack) {
    Snapshot wild;
    wild.timestamp = 7;
    wild.chipHeat = std::nan("");
    wild.power.systemWatts = infinity;
    wild.cpu = {.userPercent = 100.0001, .systemPercent = -0.5, .idlePercent = std::nan("")};
    wild.processes = {{.identity = ProcessIdentity{.pid = 1, .rawName = "\xFFx\xC3"}}};
    const Snapshot back = parsed(snapshotLine(wild, 9));
    EXPECT_EQ(back.timestamp, 9);
    EXPECT_EQ(back.chipHeat, 0);
    EXPECT_EQ(back.power.systemWatts, 0);
    EXPECT_EQ(back.cpu, (CPULoad{.userPercent = 100, .systemPercent = 0, .idlePercent = 0}));
    EXPECT_EQ(back.processes[0].rawName(), "\uFFFDx\uFFFD");
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
    struct Case {
        std::string_view line;
        std::string_view reason;
    };
    const std::vector<Case> cases{
        {"", "not a JSON object (broken at byte 1)"},
        {R"({"timestamp":5)", "not a JSON object (broken at byte 15)"},
        {R"({"timestamp":NaN})", "not a JSON object (broken at byte 14)"},
        {R"({"cooling":"water","x":})", "not a JSON object (broken at byte 24)"},
        {"[]", "not a JSON object"},
        {"5", "not a JSON object"},
        {"{}", "timestamp is missing"},
        {R"({"x":{"timestamp":5}})", "timestamp is missing"},
        {R"({"timestamp":null})", "timestamp is null, not a number"},
        {R"({"timestamp":"5"})", "timestamp is a string, not a number"},
        {R"({"timestamp":1e999})", "timestamp is not a finite number"},
        {R"({"timestamp":5,"chipHeat":true})", "chipHeat is a truth value, not a number"},
        {R"({"timestamp":5,"cooling":"water"})", R"(cooling is "water", not "fans" or "passive")"},
        {R"({"timestamp":5,"cooling":1})", "cooling is a number, not a string"},
        {R"({"timestamp":5,"thermalPressure":"a\n\u001b[31mé"})",
         R"(thermalPressure is "a??[31m??", not "nominal", "fair", "serious" or "critical")"},
        {R"({"timestamp":5,"thermalPressure":"0123456789012345678901234567890123456789x"})",
         R"(thermalPressure is "0123456789012345678901234567890123456789...", )"
         R"(not "nominal", "fair", "serious" or "critical")"},
        {R"({"timestamp":5,"fans":{}})", "fans is an object, not a list"},
        {R"({"timestamp":5,"fans":null})", "fans is null, not a list"},
        {R"({"timestamp":5,"fans":[{},[]]})", "fans[1] is a list, not an object"},
        {R"({"timestamp":5,"fans":[{},{"index":0.5}]})", "fans[1].index is 0.5, not a whole number"},
        {R"({"timestamp":5,"temps":[]})", "temps is a list, not an object"},
        {R"({"timestamp":5,"temps":{"soc":{}}})", "temps.soc is an object, not a number"},
        {R"({"timestamp":5,"power":{"gpuWatts":-1e400}})", "power.gpuWatts is not a finite number"},
        {R"({"timestamp":5,"cpu":{"userPercent":100.5}})", "cpu.userPercent is 100.5, outside 0 to 100"},
        {R"({"timestamp":5,"cpu":{"idlePercent":-1}})", "cpu.idlePercent is -1, outside 0 to 100"},
        {R"({"timestamp":5,"memory":{"usedBytes":-1}})", "memory.usedBytes is -1, outside 0 to 18446744073709551615"},
        {R"({"timestamp":5,"memory":{"usedBytes":1.5}})", "memory.usedBytes is 1.5, not a whole number"},
        {R"({"timestamp":5,"memory":{"swapOutEvents":18446744073709551616}})",
         "memory.swapOutEvents is 1.8446744073709552e+19, outside 0 to 18446744073709551615"},
        {R"({"timestamp":5,"processes":[5]})", "processes[0] is a number, not an object"},
        {R"({"timestamp":5,"processes":[{"pid":1},{}]})", "processes[1].pid is missing"},
        {R"({"timestamp":5,"processes":[{"pid":2147483648}]})",
         "processes[0].pid is 2147483648, outside -2147483648 to 2147483647"},
        {R"({"timestamp":5,"processes":[{"pid":1,"kind":"App"}]})",
         R"(processes[0].kind is "App", not "userApp", "helper", "commandLine", "systemDaemon" or "kernel")"},
        {R"({"timestamp":5,"processes":[{"pid":1,"user":null}]})", "processes[0].user is null, not a string"},
        {R"({"timestamp":5,"processes":[{"pid":1,"owningAppName":7}]})",
         "processes[0].owningAppName is a number, not a string"},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(reason(line), expected) << line;
}

TEST(Recording, TimeNeverRunsBackwards) {
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
    const Snapshot third = parsed(parser, R"({"timestamp":3,"processes":[{"pid":7,"rawName":"b"}]})");
    EXPECT_EQ(third.processes[0].rawName(), "b");
    EXPECT_EQ(first.processes[0].rawName(), "a");
}

TEST(Recording, OfAVeryLongProcessListTheBusiestAreKept) {
    std::string line = R"({"timestamp":1,"processes":[{"pid":1,"cpuPercent":50})";
    for (int pid = 2; pid <= 200'000; ++pid)
        line += R"(,{"pid":)" + std::to_string(pid) + R"(,"cpuPercent":)" + std::to_string(pid % 50) + "}";
    const Snapshot snapshot = parsed(line + R"(,{"pid":-1,"cpuPercent":60}]})");
    EXPECT_LE(snapshot.processes.size(), 1024U);
    EXPECT_EQ(snapshot.processes.front().pid(), 1);
    EXPECT_EQ(snapshot.processes.back().pid(), -1);
}

TEST(Recording, HeaderSaysWhatItIs) {
    const RecordingHeader header{.machine = "MacBook · \"M3\"\n", .created = utcText(1772356440.75)};
    EXPECT_EQ(headerLine(header), R"({"format":"vantoro-recording","version":1,"machine":"MacBook · \"M3\"\n",)"
                                  R"("created":"2026-03-01T09:14:00Z"})");
    RecordingParser parser;
    EXPECT_EQ(std::get<RecordingHeader>(parser.parseHeader(headerLine(header))), header);

    struct Case {
        std::string_view line;
        std::string_view reason;
    };
    const std::vector<Case> cases{
        {"", "no header: not a JSON object (broken at byte 1)"},
        {"[]", "no header: not a JSON object"},
        {R"({"timestamp":5})", "no header: format is not \"vantoro-recording\""},
        {R"({"format":"other","version":1})", "no header: format is not \"vantoro-recording\""},
        {R"({"format":7,"version":1})", "format is a number, not a string"},
        {R"({"format":"vantoro-recording"})", "version is missing"},
        {R"({"format":"vantoro-recording","version":2})", "version 2 is not one that can be read"},
        {R"({"format":"vantoro-recording","version":"1"})", "version is a string, not a number"},
        {R"({"format":"vantoro-recording","version":1.5})", "version is 1.5, not a whole number"},
        {R"({"format":"vantoro-recording","version":1,"machine":null})", "machine is null, not a string"},
    };
    for (const auto& [line, expected] : cases) {
        const ParsedLine<RecordingHeader> result = parser.parseHeader(line);
        ASSERT_TRUE(std::holds_alternative<RecordingRefusal>(result)) << line;
        EXPECT_EQ(std::get<RecordingRefusal>(result).reason, expected) << line;
    }
    const ParsedLine<RecordingHeader> later =
        parser.parseHeader(R"({"version":1,"new":{"version":3,"format":[]},"format":"vantoro-recording"})");
    EXPECT_TRUE(std::holds_alternative<RecordingHeader>(later));
}

} // namespace
} // namespace vantoro
