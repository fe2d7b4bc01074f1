#include "Model/Text/FormatContext.h"

#include "Model/Text/WholeNumber.h"

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

namespace {

struct TimeOfDay {
    std::int64_t hour = 0; ///< 0 to 23
    std::int64_t minute = 0;
    std::int64_t second = 0;

    std::int64_t hourOnFace() const { return hour % 12 == 0 ? 12 : hour % 12; }
    const char* period() const { return hour < 12 ? "AM" : "PM"; }
};

TimeOfDay inUTC(UnixSeconds instant) {
    constexpr double secondsPerDay = 86400;
    double secondOfDay = std::fmod(instant, secondsPerDay);
    if (secondOfDay < 0)
        secondOfDay += secondsPerDay;
    const std::int64_t seconds = truncated(secondOfDay);
    return {.hour = seconds / 3600 % 24, .minute = seconds / 60 % 60, .second = seconds % 60};
}

} // namespace

std::string DefaultFormatContext::timeOfDay(UnixSeconds instant) const {
    return fmt::format("{} {}", clockFace(instant), inUTC(instant).period());
}

std::string DefaultFormatContext::timeWithSeconds(UnixSeconds instant) const {
    return fmt::format("{}:{:02} {}", clockFace(instant), inUTC(instant).second, inUTC(instant).period());
}

std::string DefaultFormatContext::clockFace(UnixSeconds instant) const {
    const TimeOfDay time = inUTC(instant);
    return fmt::format("{}:{:02}", time.hourOnFace(), time.minute);
}

} // namespace vantoro
