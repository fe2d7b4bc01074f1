#include "Design/FormatContext.h"

#include "Model/WholeNumber.h"

#include <cmath>
#include <fmt/format.h>

namespace vantoro {

std::optional<std::string> DefaultFormatContext::text(std::string_view /*key*/) const {
    return std::nullopt;
}

std::optional<double> DefaultFormatContext::number(std::string_view /*key*/) const {
    return std::nullopt;
}

std::optional<bool> DefaultFormatContext::flag(std::string_view /*key*/) const {
    return std::nullopt;
}

std::optional<std::string> DefaultFormatContext::grouped(std::int64_t number) const {
    std::string digits = fmt::format("{}", number);
    const std::ptrdiff_t firstDigit = number < 0 ? 1 : 0;
    for (std::ptrdiff_t i = std::ssize(digits) - 3; i > firstDigit; i -= 3)
        digits.insert(static_cast<std::size_t>(i), 1, ',');
    return digits;
}

std::string DefaultFormatContext::timeOfDay(UnixSeconds instant) const {
    constexpr double secondsPerDay = 86400;
    double secondOfDay = std::fmod(instant, secondsPerDay);
    if (secondOfDay < 0)
        secondOfDay += secondsPerDay;
    const std::int64_t minutes = truncated(secondOfDay / 60);
    const std::int64_t hour = minutes / 60 % 24;
    return fmt::format("{}:{:02} {}", hour % 12 == 0 ? 12 : hour % 12, minutes % 60, hour < 12 ? "AM" : "PM");
}

} // namespace vantoro
