// The small texts of /sys, taken apart, and its folders listed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// A text without the blanks, newlines and NULs around it.
std::string_view trimmedText(std::string_view text);

/// The whole text as a decimal number, blanks around it aside. None for anything else and for what does not fit.
std::optional<std::int64_t> parseWholeNumber(std::string_view text);

/// Every number of a text of numbers separated by blanks; others are skipped.
std::vector<std::int64_t> parseWholeNumbers(std::string_view text);

/// "0-3,8" as 0, 1, 2, 3, 8: ascending, each once. What cannot be understood is skipped.
std::vector<int> parseCpuList(std::string_view text);

/// Whether `left` sorts before `right` when runs of digits count as numbers: "Core 2" before "Core 10".
bool naturallyBefore(std::string_view left, std::string_view right);

/// The names in a folder, "." and ".." aside, in natural order. Empty when it cannot be listed.
std::vector<std::string> namesIn(const std::string& folder);

/// The trimmed text of a file that is read once. None when it cannot be read.
std::optional<std::string> readTrimmed(const std::string& path);
std::optional<std::int64_t> readWholeNumber(const std::string& path);

} // namespace vantoro
