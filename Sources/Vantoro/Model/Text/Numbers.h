// Numbers from text as other programs print it: always with a decimal point, whatever the user's locale, and never an
// infinity or NaN.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantoro {

/// A decimal number (sign, fraction and exponent allowed) that takes up the whole text; none when it does not read or
/// is too large for a double.
std::optional<double> parseDecimal(std::string_view text);

/// A whole number in decimal that takes up the whole text, with an optional sign; none when it does not fit.
std::optional<std::int32_t> parseInt32(std::string_view text);
std::optional<std::int64_t> parseInt64(std::string_view text);
/// The same without a sign.
std::optional<std::uint64_t> parseUnsigned(std::string_view text);

/// The text without the white space at both its ends.
std::string_view trimmed(std::string_view text);

} // namespace vantoro
