#include "Model/Recording/RecordingFile.h"

#include "Support/Folders.h"
#include "Support/Golden.h"
#include "Support/RichSnapshot.h"

#include <csignal>
#include <sys/resource.h>
#include <zlib.h>

namespace vantoro {
namespace {

const std::string header = headerLine({.machine = "m", .created = "c"}) + "\n";

std::string tick(double timestamp) {
    return snapshotLine({.timestamp = timestamp}) + "\n";
}

std::string gzipped(std::string content) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string result(deflateBound(&stream, content.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(content.data());
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    return result;
}

class RecordingFile : public ::testing::Test {
protected:
    struct Read {
        std::vector<double> times;
        /// "LINE: REASON"; empty for none.
        std::string error;
        std::string warning;
    };

    std::string path(const std::string& name) const { return folder_.path() + "/" + name; }

    Read read(const std::string& name) const {
        Read result;
        const auto [ignoredHeader, error, warning] =
            readRecording(path(name), [&](Snapshot&& snapshot) { result.times.push_back(snapshot.timestamp); });
        result.error = error ? error->text("F") : "";
        result.warning = warning ? warning->text("F") : "";
        return result;
    }

    Read read(const std::string& name, const std::string& content) const {
        folder_.write(name, content);
        return read(name);
    }

    testing::TemporaryFolder folder_;
};

TEST_F(RecordingFile, GivesBackWhatWasWritten) {
    for (const std::string name : {"a.jsonl", "a.jsonl.gz"}) {
        const RecordingHeader wanted{.machine = "MacBook · M3", .created = "2026-03-01T09:14:00Z"};
        const Snapshot rich = testing::richSnapshot();
        RecordingWriter writer;
        ASSERT_FALSE(writer.open(path(name), wanted).failed());
        for (int i = 0; i < 50; ++i)
            ASSERT_FALSE(writer.append(rich).failed());
        // Every line is in the file before the next: a reader sees them while the recorder still runs.
        EXPECT_EQ(read(name).times.size(), 50U) << name;
        EXPECT_FALSE(writer.close().failed());
        EXPECT_TRUE(writer.append(rich).failed());

        std::vector<Snapshot> snapshots;
        const RecordingResult result =
            readRecording(path(name), [&](Snapshot&& snapshot) { snapshots.push_back(std::move(snapshot)); });
        EXPECT_EQ(result.header, wanted);
        EXPECT_EQ(read(name).error + read(name).warning, "");
        EXPECT_EQ(snapshots, std::vector<Snapshot>(50, rich));
    }
    EXPECT_LT(std::filesystem::file_size(path("a.jsonl.gz")), std::filesystem::file_size(path("a.jsonl")) / 4);
}

TEST_F(RecordingFile, AClockSetBackDoesNotSpoilTheRecording) {
    RecordingWriter writer;
    ASSERT_FALSE(writer.open(path("a.jsonl"), {}).failed());
    for (const double time : {100.0, 40.0, 50.0, std::numeric_limits<double>::infinity(), 101.0})
        ASSERT_FALSE(writer.append({.timestamp = time}).failed());
    EXPECT_EQ(read("a.jsonl").times, (std::vector<double>{100, 100, 100, 100, 101}));
}

TEST_F(RecordingFile, NeverOverwrites) {
    folder_.write("a.jsonl", "precious");
    RecordingWriter writer;
    EXPECT_EQ(writer.open(path("a.jsonl"), {}), "the file already exists");
    EXPECT_EQ(writer.append({}), "the file already exists");
    EXPECT_EQ(testing::fileText(path("a.jsonl")), "precious");
    EXPECT_EQ(RecordingWriter().open(path("no/such/folder"), {}), "No such file or directory");
}

TEST_F(RecordingFile, SaysWhenNothingMoreFits) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    RecordingWriter writer;
    ASSERT_FALSE(writer.open(path("a.jsonl"), {}).failed());
    rlimit small = before;
    small.rlim_cur = 2500;
    setrlimit(RLIMIT_FSIZE, &small);
    Outcome<> outcome;
    for (int i = 0; i < 50 && !outcome.failed(); ++i)
        outcome = writer.append({});
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(outcome, "File too large");
    EXPECT_EQ(writer.append({}), outcome);
    EXPECT_FALSE(read("a.jsonl").times.empty());
    EXPECT_EQ(read("a.jsonl").error, "");
}

TEST_F(RecordingFile, ARefusedHeaderLeavesNoFile) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t bytes : {0, 10}) {
        rlimit small = before;
        small.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &small);
        for (const std::string name : {"a.jsonl", "a.jsonl.gz"}) {
            RecordingWriter writer;
            EXPECT_EQ(writer.open(path(name), {}), "File too large");
            EXPECT_FALSE(std::filesystem::exists(path(name)));
            EXPECT_EQ(writer.append({}), "File too large");
        }
        setrlimit(RLIMIT_FSIZE, &before);
    }
    std::signal(SIGXFSZ, handler);
}

TEST_F(RecordingFile, RefusesBadInputWithItsLine) {
    const std::string broken = "not a JSON object (broken at byte ";
    for (const auto& [content, error] : std::vector<std::pair<std::string, std::string>>{
             {"", "F:1: no header: the file is empty"},
             {"\n", "F:1: no header: " + broken + "1)"},
             {header.substr(0, 20), "F:1: no header: " + broken + "21)"},
             {tick(1), "F:1: no header: format is not \"vantoro-recording\""},
             {header + "\n" + tick(1), "F:2: " + broken + "1)"},
             {header + tick(1) + "\n", "F:3: " + broken + "1)"},
             {header + tick(1) + "[1]", "F:3: not a JSON object"},
             {header + tick(1) + "{\"timestamp\":2\n" + tick(3), "F:3: " + broken + "15)"},
             {header + tick(5) + tick(6) + tick(4), "F:4: timestamp 4 is earlier than 6 on the line before"},
             {header + std::string(RecordingReader::longestLine + 1, ' ') + tick(1),
              "F:2: the line is longer than 16 MiB"},
         }) {
        EXPECT_EQ(read("a.jsonl", content).error, error) << content.substr(0, 200);
        EXPECT_EQ(read("a.jsonl.gz", gzipped(content)).error, error) << content.substr(0, 200);
    }
    EXPECT_EQ(read("missing").error, "F: No such file or directory");
    EXPECT_EQ(read(".").error, "F: Is a directory");
    EXPECT_EQ((RecordingNotice{3, "why"}.text("a\nb\x1B\u009B\u202E\xFF")), "a?b????:3: why");
}

TEST_F(RecordingFile, TakesLongLinesAndACutOffEnd) {
    const std::string spaces(3'000'000, ' ');
    const std::string begun = header + "{" + spaces + tick(1).substr(1);
    const std::string whole = header + tick(1) + tick(2);
    EXPECT_EQ(read("a.jsonl", begun + tick(2)).times, (std::vector<double>{1, 2}));
    const std::size_t first = header.size() + tick(1).size();
    for (std::size_t length = first; length <= whole.size(); length += length + 9 < whole.size() ? 7 : 1) {
        const Read what = read("a.jsonl", whole.substr(0, length));
        EXPECT_EQ(what.error, "");
        const bool hasSecond = length >= whole.size() - 1;
        EXPECT_EQ(what.times.size(), hasSecond ? 2U : 1U) << length;
        EXPECT_EQ(what.warning, hasSecond || length == first ? "" : "F:3: the last line is cut off and left out");
    }
}

TEST_F(RecordingFile, CompressedDataMayBeCutOffButNotDamaged) {
    std::string plain = header;
    for (int i = 0; i < 100; ++i)
        plain += tick(i + 0.125 * (i % 7));
    const std::string whole = gzipped(plain);
    std::size_t most = 0;
    for (std::size_t length = 200; length < whole.size(); length += 11) {
        const Read what = read("a.jsonl.gz", whole.substr(0, length));
        EXPECT_EQ(what.error, "") << length;
        EXPECT_NE(what.warning, "") << length;
        EXPECT_GE(what.times.size(), most);
        most = what.times.size();
    }
    EXPECT_GT(most, 80U);

    std::string damaged = whole;
    damaged[damaged.size() - 6] = static_cast<char>(damaged[damaged.size() - 6] ^ 1);
    EXPECT_EQ(read("a.jsonl.gz", damaged).error, "F:102: the compressed data is damaged");
    EXPECT_EQ(read("a.jsonl.gz", plain).error, "F:1: the compressed data is damaged");
    // Two compressed files strung together are one.
    EXPECT_EQ(read("a.jsonl.gz", gzipped(header + tick(1)) + gzipped(tick(2))).times, (std::vector<double>{1, 2}));
}

} // namespace
} // namespace vantoro
