// Recordings: what one machine measured over a stretch of time, as JSON Lines. Line 1 is the header, every further line
// one Snapshot, oldest first. Lines are given and taken without their newline.
#pragma once

#include "Model/Records/SystemWords.h"
#include "Model/Records/Telemetry.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vantoro {

/// How many processors of each kind a machine has.
struct RecordedProcessors {
    std::int32_t performance = 0;
    std::int32_t efficiency = 0;

    /// Of both kinds; none where that is no number of processors.
    std::optional<int> count() const {
        constexpr std::int64_t most = 1 << 20;
        const std::int64_t sum = std::int64_t{performance} + efficiency;
        return sum > 0 && sum <= most ? std::optional(static_cast<int>(sum)) : std::nullopt;
    }
    bool operator==(const RecordedProcessors&) const = default;
};

struct RecordingHeader {
    /// What the machine calls itself.
    std::string machine;
    /// When the recording was begun, as utcText writes it.
    std::string created;
    /// What the machine runs; the first recordings did not say, and are all of Macs.
    std::optional<SystemKind> system = {};
    std::optional<RecordedProcessors> processors = {};

    bool operator==(const RecordingHeader&) const = default;
};

/// Why a line is refused: one short line of text that is safe to print, whatever the file holds.
struct RecordingRefusal {
    std::string reason;
    /// The line is no JSON text at all, as when its writer was cut off.
    bool isBroken = false;
};

template <class Value>
using ParsedLine = std::variant<Value, RecordingRefusal>;

/// A whole second in UTC, as "2026-03-01T09:14:00Z"; the fraction is dropped.
std::string utcText(UnixSeconds time);

/// The header as its line.
std::string headerLine(const RecordingHeader& header);

/// A snapshot as its line: numbers with full precision, texts that are not UTF-8 repaired. What a recording cannot
/// hold is brought into it: a number that is not finite becomes 0, a processor share is held to 0 to 100, and a
/// timestamp earlier than `notBefore` (the line before, when the clock was set back) is raised to it.
std::string snapshotLine(const Snapshot& snapshot,
                         UnixSeconds notBefore = -std::numeric_limits<UnixSeconds>::infinity());

/// Reads the lines of one recording in their order. Missing fields take the record's initial value, unknown ones are
/// ignored; anything else that is not as it should be refuses the line. Rows of one process share their identity.
class RecordingParser {
public:
    RecordingParser();
    ~RecordingParser();
    RecordingParser(RecordingParser&&) noexcept;
    RecordingParser& operator=(RecordingParser&&) noexcept;

    ParsedLine<RecordingHeader> parseHeader(std::string_view line);

    /// Of a line with thousands of process rows only the busiest are kept, no fewer than a History keeps. A timestamp
    /// earlier than that of the line before is refused.
    ParsedLine<Snapshot> parseSnapshot(std::string_view line);

private:
    class SnapshotEvents;
    std::unique_ptr<SnapshotEvents> events_;
    UnixSeconds latest_ = -std::numeric_limits<UnixSeconds>::infinity();
};

} // namespace vantoro
