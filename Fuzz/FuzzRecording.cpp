// A recording's lines: the first as the header, the others as snapshots. What is read must be written and read again
// unchanged, and a reason must be safe to print.
#include "Model/Recording/Recording.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace vantoro;

void require(bool holds) {
    if (!holds)
        std::abort();
}

void checkReason(std::string_view reason) {
    require(!reason.empty() && reason.size() < 300);
    require(std::ranges::all_of(reason, [](char c) { return c >= 0x20 && c <= 0x7E; }));
}

template <class Value>
const Value* valueOf(const ParsedLine<Value>& parsed) {
    if (const auto* refusal = std::get_if<RecordingRefusal>(&parsed))
        checkReason(refusal->reason);
    return std::get_if<Value>(&parsed);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    RecordingParser parser;
    for (bool isHeader = true; !rest.empty(); isHeader = false) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        if (isHeader) {
            const auto parsed = parser.parseHeader(line);
            if (const RecordingHeader* header = valueOf(parsed)) {
                const auto again = parser.parseHeader(headerLine(*header));
                require(valueOf(again) != nullptr && *valueOf(again) == *header);
            }
            continue;
        }
        const auto parsed = parser.parseSnapshot(line);
        if (const Snapshot* snapshot = valueOf(parsed)) {
            const auto again = RecordingParser().parseSnapshot(snapshotLine(*snapshot));
            require(valueOf(again) != nullptr && *valueOf(again) == *snapshot);
        }
    }
    return 0;
}
