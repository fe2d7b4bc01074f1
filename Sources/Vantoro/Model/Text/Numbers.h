// Numbers: read from text as other programs print it (always with a decimal point, whatever the user's locale, and
// never an infinity or NaN), made whole, and instants. A measurement may be anything a sensor or a recording says; a
// plain conversion of one that no integer holds would be undefined.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace vantoro {

/// Wall-clock instant: seconds since 1970-01-01 UTC, with fraction.
using UnixSeconds = double;

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

/// The number without its fraction; clamped to 64 bits, 0 for NaN.
inline std::int64_t truncated(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63, the first number too large
    if (std::isnan(value))
        return 0;
    if (value >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (value < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

/// The same without a sign: 0 for what is below.
inline std::uint64_t truncatedToUnsigned(double value) {
    if (!(value > 0))
        return 0;
    // The nearest double to the largest count is one too many, and converting it would be undefined.
    constexpr double firstTooLarge = 18446744073709551616.0;
    return value >= firstTooLarge ? std::numeric_limits<std::uint64_t>::max() : static_cast<std::uint64_t>(value);
}

/// The nearest whole number, halves away from zero; clamped to 64 bits, 0 for NaN.
inline std::int64_t rounded(double value) {
    return truncated(std::round(value));
}

} // namespace vantoro
