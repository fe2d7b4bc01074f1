// What is said of recordings that are refused, nothing of the file unfiltered, and what reading and writing their files
// have in common.
#pragma once

#include "Model/Recording/JsonScanner.h"
#include "Model/Recording/Recording.h"
#include "Model/Records/Verdict.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace vantoro {

/// A word of the file in quotes: shortened, and with anything but printable ASCII replaced.
inline std::string quoted(std::string_view word) {
    constexpr std::size_t longestQuote = 40;
    std::string safe(word.substr(0, longestQuote));
    std::ranges::replace_if(
        safe, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
    return fmt::format("\"{}{}\"", safe, word.size() > longestQuote ? "..." : "");
}

/// Every case of an enumeration: "fans", "passive", "heat" or "load".
template <class Enum>
std::string wordsFor() {
    const auto names = caseNames<Enum>();
    std::string words;
    for (std::size_t i = 0; i < names.size(); ++i)
        words += fmt::format("{}\"{}\"", i == 0 ? "" : i + 1 == names.size() ? " or " : ", ", names[i]);
    return words;
}

/// The number as it would be written.
inline std::string numberText(const JsonNumber& number) {
    if (number.wholeMagnitude)
        return fmt::format("{}{}", number.isNegative ? "-" : "", *number.wholeMagnitude);
    return fmt::format("{}", number.value);
}

/// For a line that is no JSON text from this position on, or none but not an object.
inline RecordingRefusal notAnObject(const std::optional<JsonFault>& fault) {
    if (!fault)
        return {.reason = "not a JSON object"};
    if (fault->isNumberTooLarge)
        return {.reason = fmt::format("a number is not finite (byte {})", fault->position + 1)};
    return {.reason = fmt::format("not a JSON object (broken at byte {})", fault->position + 1), .isBroken = true};
}

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
