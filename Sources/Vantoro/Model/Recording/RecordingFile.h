// Recordings in files: plain (.jsonl) or gzip-compressed (a name that ends in ".gz").
#pragma once

#include "Model/Recording/Recording.h"
#include "Model/Text/Outcome.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

/// Something to say about a recording.
struct RecordingNotice {
    /// The line it is about, from 1; 0 when it is about the file.
    std::size_t line = 0;
    std::string reason;

    /// "FILE:LINE: REASON", or "FILE: REASON"; always one line.
    std::string text(std::string_view file) const;

    bool operator==(const RecordingNotice&) const = default;
};

/// Reads a recording line by line, so that its length costs no memory.
class RecordingReader {
public:
    /// Longer lines are refused.
    static constexpr std::size_t longestLine = std::size_t{16} << 20U;

    /// Opens the file and reads its header; what goes wrong shows in error().
    explicit RecordingReader(const std::string& path);
    ~RecordingReader();
    RecordingReader(RecordingReader&&) noexcept;
    RecordingReader& operator=(RecordingReader&&) noexcept;

    const RecordingHeader& header() const;

    /// The next snapshot; none at the end and after an error, which refuses the whole recording.
    std::optional<Snapshot> next();

    const std::optional<RecordingNotice>& error() const;

    /// Known at the end: the recorder was cut off, and what it could not finish is left out.
    const std::optional<RecordingNotice>& warning() const;

private:
    class State;
    std::unique_ptr<State> state_;
};

struct RecordingResult {
    RecordingHeader header;
    std::optional<RecordingNotice> error;
    std::optional<RecordingNotice> warning;
};

/// Reads a whole recording and hands over each snapshot. With an error in the result, what was handed over is void.
RecordingResult readRecording(const std::string& path, const std::function<void(Snapshot&&)>& take);

/// Writes a recording, each line out to the system before the call returns. A fault is one line; after one every
/// further call gives it again.
class RecordingWriter {
public:
    RecordingWriter();
    /// Closes the file; call close() to learn whether that worked.
    ~RecordingWriter();
    RecordingWriter(RecordingWriter&&) noexcept;
    RecordingWriter& operator=(RecordingWriter&&) noexcept;

    /// Makes the file, which must not exist, and writes the header. When that fails there is no file.
    Outcome<> open(const std::string& path, const RecordingHeader& header);
    Outcome<> append(const Snapshot& snapshot);
    Outcome<> close();

private:
    class State;
    std::unique_ptr<State> state_;
};

} // namespace vantoro
