#include "Model/Text/Numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <locale>
#include <sstream>
#include <string>

namespace vantoro {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t countDigits(std::string_view text) {
    std::size_t count = 0;
    while (count < text.size() && isDigit(text[count]))
        ++count;
    return count;
}

/// The classic locale's own reading, for numbers too long to be exact in the short way.
std::optional<double> parseSlowly(std::string_view text) {
    constexpr std::size_t longestNumber = 400;
    if (text.size() > longestNumber)
        return std::nullopt;
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double value = 0;
    if (!(stream >> value) || !std::isfinite(value))
        return std::nullopt;
    return value;
}

template <std::integral Number>
std::optional<Number> parseWhole(std::string_view text) {
    if (std::signed_integral<Number> && text.size() > 1 && text.front() == '+' && isDigit(text[1]))
        text.remove_prefix(1);
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

} // namespace

std::optional<double> parseDecimal(std::string_view text) {
    const std::string_view whole = text;
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    const std::string_view integerDigits = text.substr(0, countDigits(text));
    text.remove_prefix(integerDigits.size());
    std::string_view fractionDigits;
    if (!text.empty() && text.front() == '.') {
        fractionDigits = text.substr(1, countDigits(text.substr(1)));
        text.remove_prefix(1 + fractionDigits.size());
    }
    if (integerDigits.empty() && fractionDigits.empty())
        return std::nullopt;
    if (!text.empty()) {
        if (text.front() != 'e' && text.front() != 'E')
            return std::nullopt;
        text.remove_prefix(1);
        if (!text.empty() && (text.front() == '+' || text.front() == '-'))
            text.remove_prefix(1);
        if (text.empty() || countDigits(text) != text.size())
            return std::nullopt;
        return parseSlowly(whole);
    }
    // A whole number below 2^53 divided by an exact power of ten is the nearest double: no slower way does better.
    constexpr std::size_t exactDigits = 15;
    if (integerDigits.size() + fractionDigits.size() > exactDigits)
        return parseSlowly(whole);
    static constexpr std::array<double, exactDigits + 1> powersOfTen{1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                                     1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    double mantissa = 0;
    for (const std::string_view digits : {integerDigits, fractionDigits})
        for (const char digit : digits)
            mantissa = mantissa * 10 + (digit - '0');
    const double value = mantissa / powersOfTen[fractionDigits.size()];
    return negative ? -value : value;
}

std::optional<std::int32_t> parseInt32(std::string_view text) {
    return parseWhole<std::int32_t>(text);
}

std::optional<std::int64_t> parseInt64(std::string_view text) {
    return parseWhole<std::int64_t>(text);
}

std::optional<std::uint64_t> parseUnsigned(std::string_view text) {
    return parseWhole<std::uint64_t>(text);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view white = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(white);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(white) - first + 1);
}

} // namespace vantoro
