#include "Model/Recording/RecordingFile.h"
#include "Model/Recording/RecordingReasons.h"
#include "Model/Text/TerminalText.h"
#include "Platform/Posix/Descriptor.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>
#include <utility>
#include <vector>
#include <zlib.h>

namespace vantoro {

namespace {

constexpr std::size_t chunkBytes = std::size_t{64} << 10U;

enum class StreamEnd { none, clean, cutOff, broken };

/// The file's bytes, decompressed where they need to be.
class ByteStream {
public:
    explicit ByteStream(const std::string& path) : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (!file_) {
            failWithSystem();
            return;
        }
        if (!isGzipName(path))
            return;
        input_.resize(chunkBytes);
        gzip_ = std::make_unique<z_stream>();
        if (inflateInit2(gzip_.get(), gzipWindowBits) != Z_OK) {
            gzip_.reset();
            fail("out of memory");
        }
    }
    ~ByteStream() {
        if (gzip_)
            inflateEnd(gzip_.get());
    }
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;

    /// Fills some of the buffer and returns how much; 0 only at the end.
    std::size_t read(char* buffer, std::size_t size) {
        while (end_ == StreamEnd::none) {
            const std::size_t count = gzip_ ? inflateSome(buffer, size) : readFile(buffer, size);
            if (count > 0)
                return count;
        }
        return 0;
    }

    StreamEnd end() const { return end_; }
    const std::string& reason() const { return reason_; }
    /// It is the system that could not read, whatever the file holds.
    bool isUnreadable() const { return isUnreadable_; }

private:
    void failWithSystem() {
        isUnreadable_ = true;
        fail(lastSystemReason());
    }

    void fail(std::string reason) {
        end_ = StreamEnd::broken;
        reason_ = std::move(reason);
    }

    std::size_t readFile(char* buffer, std::size_t size) {
        const std::optional<std::size_t> count = file_.read(buffer, size);
        if (!count)
            failWithSystem();
        else if (*count == 0)
            end_ = isInsideMember_ ? StreamEnd::cutOff : StreamEnd::clean;
        return count.value_or(0);
    }

    std::size_t inflateSome(char* buffer, std::size_t size) {
        if (gzip_->avail_in == 0) {
            const std::size_t count = readFile(input_.data(), input_.size());
            if (count == 0)
                return 0;
            gzip_->next_in = reinterpret_cast<Bytef*>(input_.data());
            gzip_->avail_in = static_cast<uInt>(count);
        }
        gzip_->next_out = reinterpret_cast<Bytef*>(buffer);
        gzip_->avail_out = static_cast<uInt>(size);
        isInsideMember_ = true;
        const int status = inflate(gzip_.get(), Z_NO_FLUSH);
        const std::size_t count = size - gzip_->avail_out;
        if (status == Z_STREAM_END) {
            // Another member may follow, as when recordings are strung together.
            isInsideMember_ = false;
            inflateReset(gzip_.get());
        } else if (status != Z_OK && status != Z_BUF_ERROR) {
            fail("the compressed data is damaged");
        }
        return count;
    }

    Descriptor file_;
    std::unique_ptr<z_stream> gzip_;
    std::vector<char> input_;
    bool isInsideMember_ = false;
    StreamEnd end_ = StreamEnd::none;
    bool isUnreadable_ = false;
    std::string reason_;
};

struct Line {
    std::string_view text;
    bool hasNewline = false;
};

/// Cuts the stream into lines.
class LineStream {
public:
    explicit LineStream(const std::string& path) : bytes_(path) {}

    /// The next line, valid until the call after; none at the end of the stream and beyond the longest line.
    std::optional<Line> next() {
        std::size_t searched = start_;
        for (;;) {
            const auto* const newline =
                static_cast<const char*>(std::memchr(buffer_.data() + searched, '\n', filled_ - searched));
            if (newline != nullptr) {
                const auto length = static_cast<std::size_t>(newline - (buffer_.data() + start_));
                if (length > RecordingReader::longestLine)
                    return tooLong();
                const Line line{{buffer_.data() + start_, length}, true};
                start_ += length + 1;
                return line;
            }
            if (filled_ - start_ > RecordingReader::longestLine)
                return tooLong();
            searched = makeRoom();
            const std::size_t count = bytes_.read(buffer_.data() + filled_, buffer_.size() - filled_);
            if (count == 0)
                break;
            filled_ += count;
        }
        if (filled_ == start_ || bytes_.end() == StreamEnd::broken)
            return std::nullopt;
        const Line line{{buffer_.data() + start_, filled_ - start_}, false};
        start_ = filled_;
        return line;
    }

    bool isTooLong() const { return isTooLong_; }
    const ByteStream& bytes() const { return bytes_; }

private:
    std::optional<Line> tooLong() {
        isTooLong_ = true;
        return std::nullopt;
    }

    /// Moves the unfinished line to the front and leaves room behind it; returns where that room begins.
    std::size_t makeRoom() {
        std::memmove(buffer_.data(), buffer_.data() + start_, filled_ - start_);
        filled_ -= start_;
        start_ = 0;
        if (buffer_.size() - filled_ < chunkBytes)
            buffer_.resize(buffer_.size() * 2);
        return filled_;
    }

    ByteStream bytes_;
    std::vector<char> buffer_ = std::vector<char>(2 * chunkBytes);
    std::size_t start_ = 0;
    std::size_t filled_ = 0;
    bool isTooLong_ = false;
};

} // namespace

std::string RecordingNotice::text(std::string_view file) const {
    const std::string safeFile = terminalText(file);
    if (line == 0)
        return fmt::format("{}: {}", safeFile, reason);
    return fmt::format("{}:{}: {}", safeFile, line, reason);
}

class RecordingReader::State {
public:
    explicit State(const std::string& path) : lines_(path) {
        const std::optional<Line> line = nextLine();
        if (line)
            readHeader(line->text);
        else if (!error)
            fail("no header: the file is empty");
    }

    std::optional<Snapshot> next() {
        if (hasEnded_ || error)
            return std::nullopt;
        const std::optional<Line> line = nextLine();
        if (!line) {
            hasEnded_ = true;
            if (!error && lines_.bytes().end() == StreamEnd::cutOff)
                warning = {lineNumber_, "the recording is cut off here; what it holds is used"};
            return std::nullopt;
        }
        ParsedLine<Snapshot> parsed = parser_.parseSnapshot(line->text);
        if (auto* const snapshot = std::get_if<Snapshot>(&parsed))
            return std::move(*snapshot);
        auto& refusal = std::get<RecordingRefusal>(parsed);
        if (refusal.isBroken && !line->hasNewline) {
            hasEnded_ = true;
            warning = {lineNumber_, "the last line is cut off and left out"};
        } else {
            fail(std::move(refusal.reason));
        }
        return std::nullopt;
    }

    RecordingHeader header;
    std::optional<RecordingNotice> error;
    std::optional<RecordingNotice> warning;

private:
    void readHeader(std::string_view line) {
        ParsedLine<RecordingHeader> parsed = parser_.parseHeader(line);
        if (auto* const refusal = std::get_if<RecordingRefusal>(&parsed))
            fail(std::move(refusal->reason));
        else
            header = std::get<RecordingHeader>(std::move(parsed));
    }

    std::optional<Line> nextLine() {
        const std::optional<Line> line = lines_.next();
        ++lineNumber_;
        if (line)
            return line;
        if (lines_.isTooLong())
            fail(fmt::format("the line is longer than {} MiB", longestLine >> 20U));
        else if (lines_.bytes().end() == StreamEnd::broken)
            error = {lines_.bytes().isUnreadable() ? 0 : lineNumber_, lines_.bytes().reason()};
        return std::nullopt;
    }

    void fail(std::string reason) { error = {lineNumber_, std::move(reason)}; }

    LineStream lines_;
    RecordingParser parser_;
    std::size_t lineNumber_ = 0;
    bool hasEnded_ = false;
};

RecordingReader::RecordingReader(const std::string& path) : state_(std::make_unique<State>(path)) {}
RecordingReader::~RecordingReader() = default;
RecordingReader::RecordingReader(RecordingReader&&) noexcept = default;
RecordingReader& RecordingReader::operator=(RecordingReader&&) noexcept = default;

const RecordingHeader& RecordingReader::header() const {
    return state_->header;
}

std::optional<Snapshot> RecordingReader::next() {
    return state_->next();
}

const std::optional<RecordingNotice>& RecordingReader::error() const {
    return state_->error;
}

const std::optional<RecordingNotice>& RecordingReader::warning() const {
    return state_->warning;
}

RecordingResult readRecording(const std::string& path, const std::function<void(Snapshot&&)>& take) {
    RecordingReader reader(path);
    while (std::optional<Snapshot> snapshot = reader.next())
        take(std::move(*snapshot));
    return {.header = reader.header(), .error = reader.error(), .warning = reader.warning()};
}

} // namespace vantoro
