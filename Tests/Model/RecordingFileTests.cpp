#include "Model/RecordingFile.h"
#include "Support/RichSnapshot.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <vector>
#include <zlib.h>

namespace vantoro {
namespace {

namespace fs = std::filesystem;

const std::string header = headerLine({.machine = "m", .created = "c"}) + "\n";

std::string tick(double timestamp) {
    Snapshot snapshot;
    snapshot.timestamp = timestamp;
    return snapshotLine(snapshot) + "\n";
}

class RecordingFile : public ::testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "vantoro-recording-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }

    static std::string content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static void put(const std::string& path, std::string_view content) {
        std::ofstream(path, std::ios::binary) << content;
    }

    static std::string gzipped(const std::string& content) {
        z_stream stream{};
        EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
        std::string result(deflateBound(&stream, content.size()) + 64, '\0');
        std::string input = content;
        stream.next_in = reinterpret_cast<Bytef*>(input.data());
        stream.avail_in = static_cast<uInt>(input.size());
        stream.next_out = reinterpret_cast<Bytef*>(result.data());
        stream.avail_out = static_cast<uInt>(result.size());
        EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
        result.resize(stream.total_out);
        deflateEnd(&stream);
        return result;
    }

    struct Read {
        std::vector<double> times;
        /// "LINE: REASON"; empty for none.
        std::string error;
        std::string warning;
    };

    Read read(const std::string& name) const {
        Read result;
        const auto [ignoredHeader, error, warning] =
            readRecording(path(name), [&](Snapshot&& snapshot) { result.times.push_back(snapshot.timestamp); });
        if (error)
            result.error = error->text("F");
        if (warning)
            result.warning = warning->text("F");
        return result;
    }

    fs::path folder_;
};

TEST_F(RecordingFile, GivesBackWhatWasWritten) {
    for (const std::string name : {"a.jsonl", "a.jsonl.gz"}) {
        const RecordingHeader wanted{.machine = "MacBook · M3", .created = "2026-03-01T09:14:00Z"};
        const Snapshot rich = testing::richSnapshot();
        RecordingWriter writer;
        ASSERT_EQ(writer.open(path(name), wanted), std::nullopt);
        for (int i = 0; i < 50; ++i)
            ASSERT_EQ(writer.append(rich), std::nullopt);
        // Every line is in the file before the next: a reader sees them while the recorder still runs.
        EXPECT_EQ(read(name).times.size(), 50U) << name;
        EXPECT_EQ(writer.close(), std::nullopt);
        EXPECT_NE(writer.append(rich), std::nullopt);

        std::vector<Snapshot> snapshots;
        const RecordingResult result =
            readRecording(path(name), [&](Snapshot&& snapshot) { snapshots.push_back(std::move(snapshot)); });
        EXPECT_EQ(result.header, wanted);
        EXPECT_EQ(result.error, std::nullopt);
        EXPECT_EQ(result.warning, std::nullopt);
        ASSERT_EQ(snapshots.size(), 50U);
        EXPECT_EQ(snapshots.back(), rich);
    }
    EXPECT_LT(fs::file_size(path("a.jsonl.gz")), fs::file_size(path("a.jsonl")) / 4);
}

TEST_F(RecordingFile, AClockSetBackDoesNotSpoilTheRecording) {
    RecordingWriter writer;
    ASSERT_EQ(writer.open(path("a.jsonl"), {}), std::nullopt);
    Snapshot snapshot;
    for (const double time : {100.0, 40.0, 50.0, std::numeric_limits<double>::infinity(), 101.0}) {
        snapshot.timestamp = time;
        ASSERT_EQ(writer.append(snapshot), std::nullopt);
    }
    EXPECT_EQ(read("a.jsonl").times, (std::vector<double>{100, 100, 100, 100, 101}));
}

TEST_F(RecordingFile, NeverOverwrites) {
    put(path("a.jsonl"), "precious");
    RecordingWriter writer;
    EXPECT_EQ(writer.open(path("a.jsonl"), {}), "the file already exists");
    EXPECT_EQ(writer.append({}), "the file already exists");
    EXPECT_EQ(content(path("a.jsonl")), "precious");
    EXPECT_EQ(RecordingWriter().open(path("no/such/folder"), {}), "No such file or directory");
}

TEST_F(RecordingFile, SaysWhenNothingMoreFits) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    RecordingWriter writer;
    ASSERT_EQ(writer.open(path("a.jsonl"), {}), std::nullopt);
    rlimit small = before;
    small.rlim_cur = 2500;
    setrlimit(RLIMIT_FSIZE, &small);
    RecordingWriter::Failure failure;
    for (int i = 0; i < 50 && !failure; ++i)
        failure = writer.append({});
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(failure, "File too large");
    EXPECT_EQ(writer.append({}), failure);
    const Read what = read("a.jsonl");
    EXPECT_FALSE(what.times.empty());
    EXPECT_EQ(what.error, "");
}

TEST_F(RecordingFile, RefusesBadInputWithItsLine) {
    struct Case {
        std::string content;
        std::string error;
    };
    const std::string broken = "not a JSON object (broken at byte ";
    const std::vector<Case> cases{
        {"", "F:1: no header: the file is empty"},
        {"\n", "F:1: no header: " + broken + "1)"},
        {header.substr(0, 20), "F:1: no header: " + broken + "21)"},
        {tick(1), "F:1: no header: format is not \"vantoro-recording\""},
        {header + "\n" + tick(1), "F:2: " + broken + "1)"},
        {header + tick(1) + "\n", "F:3: " + broken + "1)"},
        {header + tick(1) + "[1]", "F:3: not a JSON object"},
        {header + tick(1) + "{\"timestamp\":2,\"cooling\":\"ice\"}",
         "F:3: cooling is \"ice\", not \"fans\" or \"passive\""},
        {header + tick(1) + "{\"timestamp\":2\n" + tick(3), "F:3: " + broken + "15)"},
        {header + tick(5) + tick(6) + tick(4), "F:4: timestamp 4 is earlier than 6 on the line before"},
        {header + std::string(RecordingReader::longestLine + 1, ' ') + tick(1), "F:2: the line is longer than 16 MiB"},
    };
    for (const auto& [content, error] : cases) {
        put(path("a.jsonl"), content);
        EXPECT_EQ(read("a.jsonl").error, error) << content.substr(0, 200);
        put(path("a.jsonl.gz"), gzipped(content));
        EXPECT_EQ(read("a.jsonl.gz").error, error) << content.substr(0, 200);
    }
    EXPECT_EQ(read("missing").error, "F: No such file or directory");
    EXPECT_EQ(read(".").error, "F: Is a directory");
    EXPECT_EQ((RecordingNotice{3, "why"}.text("a\nb\x1B")), "a?b?:3: why");
}

TEST_F(RecordingFile, TakesLinesOfAnyLengthUpToTheCap) {
    const std::string spaces(10'000'000, ' ');
    put(path("a.jsonl"), header + "{" + spaces + tick(1).substr(1) + tick(2) + tick(3).substr(0, tick(3).size() - 1));
    const Read what = read("a.jsonl");
    EXPECT_EQ(what.times, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(what.error + what.warning, "");
}

TEST_F(RecordingFile, ACutOffEndIsLeftOutWithAWarning) {
    const std::string whole = header + tick(1) + tick(2);
    for (std::size_t length = header.size() + tick(1).size(); length <= whole.size(); ++length) {
        put(path("a.jsonl"), whole.substr(0, length));
        const Read what = read("a.jsonl");
        EXPECT_EQ(what.error, "");
        const bool hasSecond = length >= whole.size() - 1;
        EXPECT_EQ(what.times.size(), hasSecond ? 2U : 1U) << length;
        const bool isClean = hasSecond || length == header.size() + tick(1).size();
        EXPECT_EQ(what.warning, isClean ? "" : "F:3: the last line is cut off and left out") << length;
    }
}

TEST_F(RecordingFile, CompressedDataMayBeCutOffButNotDamaged) {
    std::string plain = header;
    for (int i = 0; i < 300; ++i)
        plain += tick(i + 0.125 * (i % 7));
    const std::string whole = gzipped(plain);
    std::size_t most = 0;
    for (std::size_t length = 200; length < whole.size(); length += 7) {
        put(path("a.jsonl.gz"), whole.substr(0, length));
        const Read what = read("a.jsonl.gz");
        EXPECT_EQ(what.error, "") << length;
        EXPECT_NE(what.warning, "") << length;
        EXPECT_GE(what.times.size(), most);
        most = what.times.size();
    }
    EXPECT_GT(most, 250U);

    std::string damaged = whole;
    damaged[damaged.size() - 6] = static_cast<char>(damaged[damaged.size() - 6] ^ 1);
    put(path("a.jsonl.gz"), damaged);
    EXPECT_EQ(read("a.jsonl.gz").error, "F:302: the compressed data is damaged");
    put(path("a.jsonl.gz"), plain);
    EXPECT_EQ(read("a.jsonl.gz").error, "F:1: the compressed data is damaged");
    // Two compressed files strung together are one.
    put(path("a.jsonl.gz"), gzipped(header + tick(1)) + gzipped(tick(2)));
    EXPECT_EQ(read("a.jsonl.gz").times, (std::vector<double>{1, 2}));
}

} // namespace
} // namespace vantoro
