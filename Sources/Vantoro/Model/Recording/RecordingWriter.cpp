#include "Model/Recording/RecordingFile.h"

#include "Model/Recording/RecordingFields.h"
#include "Model/Recording/RecordingReasons.h"
#include "Model/Recording/RecordJson.h"
#include "Model/Records/Verdict.h"
#include "Platform/Posix/Descriptor.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <fmt/format.h>
#include <limits>
#include <unistd.h>
#include <zlib.h>

namespace vantoro {

std::string utcText(UnixSeconds time) {
    using namespace std::chrono;
    // The years that a four-digit date can name.
    constexpr double first = -62135596800;
    constexpr double last = 253402300799;
    const double seconds = std::isfinite(time) ? std::clamp(std::floor(time), first, last) : 0;
    const sys_seconds instant{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
    const sys_days day = floor<days>(instant);
    const year_month_day date{day};
    const hh_mm_ss clock{instant - day};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
                       clock.minutes().count(), clock.seconds().count());
}

std::string headerLine(const RecordingHeader& header) {
    Json line = Json::object();
    line["format"] = "vantoro-recording";
    line["version"] = 1;
    line["machine"] = header.machine;
    line["created"] = header.created;
    if (header.system)
        line["system"] = caseName(*header.system);
    if (header.processors)
        line["processors"] = {{"performance", std::max(header.processors->performance, 0)},
                              {"efficiency", std::max(header.processors->efficiency, 0)}};
    return jsonText(line);
}

std::string snapshotLine(const Snapshot& snapshot, UnixSeconds notBefore) {
    Json line = recordJson(snapshot);
    CPULoad cpu = snapshot.cpu;
    for (double* const share : {&cpu.userPercent, &cpu.systemPercent, &cpu.idlePercent})
        *share = std::clamp(finite(*share), 0.0, 100.0);
    line["cpu"] = recordJson(cpu);
    line["timestamp"] = finite(std::max(finite(snapshot.timestamp), notBefore));
    return jsonText(line);
}

class RecordingWriter::State {
public:
    State(const std::string& path, const RecordingHeader& header)
        : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)) {
        if (!file_) {
            outcome_ = errno == EEXIST ? "the file already exists" : lastSystemReason();
            return;
        }
        if (isGzipName(path)) {
            gzip_ = std::make_unique<z_stream>();
            constexpr int memoryLevel = 8;
            if (deflateInit2(gzip_.get(), Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipWindowBits, memoryLevel,
                             Z_DEFAULT_STRATEGY) != Z_OK) {
                gzip_.reset();
                outcome_ = "out of memory";
                removeFile(path);
                return;
            }
        }
        writeLine(headerLine(header));
        if (outcome_.failed())
            removeFile(path);
    }
    ~State() { static_cast<void>(close()); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    Outcome<> append(const Snapshot& snapshot) {
        if (!file_ && !outcome_.failed())
            outcome_ = "the file is closed";
        if (outcome_.failed())
            return outcome_;
        writeLine(snapshotLine(snapshot, latest_));
        if (std::isfinite(snapshot.timestamp))
            latest_ = std::max(latest_, snapshot.timestamp);
        return outcome_;
    }

    Outcome<> close() {
        if (gzip_) {
            if (!outcome_.failed())
                deflateAll({}, Z_FINISH);
            deflateEnd(gzip_.get());
            gzip_.reset();
        }
        if (!file_.close() && !outcome_.failed())
            outcome_ = lastSystemReason();
        return outcome_;
    }

    const Outcome<>& outcome() const { return outcome_; }

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
        } while (gzip_->avail_out == 0 && !outcome_.failed());
    }

    void write(std::string_view bytes) {
        if (!outcome_.failed() && !file_.write(bytes))
            outcome_ = lastSystemReason();
    }

    Descriptor file_;
    std::unique_ptr<z_stream> gzip_;
    UnixSeconds latest_ = -std::numeric_limits<UnixSeconds>::infinity();
    Outcome<> outcome_;
};

RecordingWriter::RecordingWriter() = default;
RecordingWriter::~RecordingWriter() = default;
RecordingWriter::RecordingWriter(RecordingWriter&&) noexcept = default;
RecordingWriter& RecordingWriter::operator=(RecordingWriter&&) noexcept = default;

Outcome<> RecordingWriter::open(const std::string& path, const RecordingHeader& header) {
    state_ = std::make_unique<State>(path, header);
    return state_->outcome();
}

Outcome<> RecordingWriter::append(const Snapshot& snapshot) {
    return state_ ? state_->append(snapshot) : "the file is not open";
}

Outcome<> RecordingWriter::close() {
    return state_ ? state_->close() : Outcome<>();
}

} // namespace vantoro
