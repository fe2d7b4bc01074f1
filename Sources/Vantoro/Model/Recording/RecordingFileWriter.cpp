#include "Model/Recording/RecordingFile.h"
#include "Model/Recording/RecordingFileSupport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fcntl.h>
#include <limits>
#include <zlib.h>

namespace vantoro {

class RecordingWriter::State {
public:
    State(const std::string& path, const RecordingHeader& header)
        : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)) {
        if (!file_.isOpen()) {
            failure_ = errno == EEXIST ? "the file already exists" : lastSystemReason();
            return;
        }
        if (isGzipName(path)) {
            gzip_ = std::make_unique<z_stream>();
            constexpr int memoryLevel = 8;
            if (deflateInit2(gzip_.get(), Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipWindowBits, memoryLevel,
                             Z_DEFAULT_STRATEGY) != Z_OK) {
                gzip_.reset();
                failure_ = "out of memory";
                removeFile(path);
                return;
            }
        }
        writeLine(headerLine(header));
        if (failure_)
            removeFile(path);
    }
    ~State() { close(); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    Failure append(const Snapshot& snapshot) {
        if (!file_.isOpen() && !failure_)
            failure_ = "the file is closed";
        if (failure_)
            return failure_;
        writeLine(snapshotLine(snapshot, latest_));
        if (std::isfinite(snapshot.timestamp))
            latest_ = std::max(latest_, snapshot.timestamp);
        return failure_;
    }

    Failure close() {
        if (gzip_) {
            if (!failure_)
                deflateAll({}, Z_FINISH);
            deflateEnd(gzip_.get());
            gzip_.reset();
        }
        if (!file_.close() && !failure_)
            failure_ = lastSystemReason();
        return failure_;
    }

    const Failure& failure() const { return failure_; }

private:
    /// What was just made and holds nothing yet is of no use to anybody, and stands in the way of another try.
    void removeFile(const std::string& path) {
        file_.close();
        ::unlink(path.c_str());
    }

    void writeLine(std::string line) {
        line.push_back('\n');
        if (gzip_)
            deflateAll(line, Z_SYNC_FLUSH);
        else
            write(line);
    }

    /// Compresses the bytes and writes all that comes of it.
    void deflateAll(std::string_view bytes, int flush) {
        // zlib reads, and never writes, through this pointer.
        gzip_->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        gzip_->avail_in = static_cast<uInt>(bytes.size());
        std::array<char, 16384> output;
        do {
            gzip_->next_out = reinterpret_cast<Bytef*>(output.data());
            gzip_->avail_out = static_cast<uInt>(output.size());
            deflate(gzip_.get(), flush);
            write({output.data(), output.size() - gzip_->avail_out});
        } while (gzip_->avail_out == 0 && !failure_);
    }

    void write(std::string_view bytes) {
        if (!failure_ && !file_.write(bytes))
            failure_ = lastSystemReason();
    }

    FileDescriptor file_;
    std::unique_ptr<z_stream> gzip_;
    UnixSeconds latest_ = -std::numeric_limits<UnixSeconds>::infinity();
    Failure failure_;
};

RecordingWriter::RecordingWriter() = default;
RecordingWriter::~RecordingWriter() = default;
RecordingWriter::RecordingWriter(RecordingWriter&&) noexcept = default;
RecordingWriter& RecordingWriter::operator=(RecordingWriter&&) noexcept = default;

RecordingWriter::Failure RecordingWriter::open(const std::string& path, const RecordingHeader& header) {
    state_ = std::make_unique<State>(path, header);
    return state_->failure();
}

RecordingWriter::Failure RecordingWriter::append(const Snapshot& snapshot) {
    return state_ ? state_->append(snapshot) : Failure("the file is not open");
}

RecordingWriter::Failure RecordingWriter::close() {
    return state_ ? state_->close() : std::nullopt;
}

} // namespace vantoro
