// Writes recordings into files: plain (.jsonl) or gzip-compressed (a name that ends in ".gz").
#pragma once

#include "Model/Recording/Recording.h"
#include "Model/Text/Outcome.h"

#include <memory>
#include <string>

namespace vantoro {

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
