// What reading and writing a recording's file have in common.
#pragma once

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

namespace vantoro {

/// zlib's largest window, with a gzip header and trailer.
inline constexpr int gzipWindowBits = 15 + 16;

inline bool isGzipName(std::string_view path) {
    return path.ends_with(".gz");
}

/// What the last failed system call complained of.
inline std::string lastSystemReason() {
    return std::system_category().message(errno);
}

} // namespace vantoro
