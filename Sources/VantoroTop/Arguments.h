// What vantoro-top was asked for.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace vantoro::top {

/// Print blocks of the busiest processes.
struct StreamRequest {
    /// How many blocks; 0 without end.
    std::uint32_t samples = 0;
    std::uint32_t intervalSeconds = 1;
    std::uint32_t rows = 0;
    /// Longest line, in characters.
    std::uint32_t columns = 0;
    /// Each row is followed by a line on where its process comes from.
    bool origins = false;

    bool operator==(const StreamRequest&) const = default;
};

/// Print every process's path.
struct PathsRequest {
    bool operator==(const PathsRequest&) const = default;
};

/// Print this text and end.
struct TextRequest {
    std::string text;
    bool operator==(const TextRequest&) const = default;
};

/// Nothing this program does: a line that says why.
struct BadRequest {
    std::string reason;
    bool operator==(const BadRequest&) const = default;
};

using Request = std::variant<StreamRequest, PathsRequest, TextRequest, BadRequest>;

/// `arguments` are those after the program's name. The options of the stream come all, and in their one order.
Request parseArguments(std::span<const char* const> arguments);

} // namespace vantoro::top
