#include "Model/Text/Format.h"

#include "Model/Text/Numbers.h"
#include "Model/Text/Setting.h"

#include <array>
#include <cmath>
#include <fmt/format.h>

namespace vantoro {

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

bool isFahrenheit(const FormatContext& context) {
    return context.text(Setting::temperatureUnit.key) == "F";
}

constexpr const char* noReading = "—";

} // namespace

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
    return fmt::format("{} {}", clockFace(instant), inUTC(instant).period());
}

std::string DefaultFormatContext::timeWithSeconds(UnixSeconds instant) const {
    return fmt::format("{}:{:02} {}", clockFace(instant), inUTC(instant).second, inUTC(instant).period());
}

std::string DefaultFormatContext::clockFace(UnixSeconds instant) const {
    const TimeOfDay time = inUTC(instant);
    return fmt::format("{}:{:02}", time.hourOnFace(), time.minute);
}

std::string Format::degrees(double celsius) const {
    if (!(celsius > 0))
        return noReading;
    return fmt::format("{:.0f}°", std::round(isFahrenheit(context_) ? celsius * 9 / 5 + 32 : celsius));
}

std::string Format::temperature(double celsius) const {
    std::string text = degrees(celsius);
    if (text != noReading)
        text += isFahrenheit(context_) ? 'F' : 'C';
    return text;
}

std::string Format::unitName() const {
    return isFahrenheit(context_) ? "Fahrenheit" : "Celsius";
}

std::string Format::bytes(std::uint64_t count) {
    static constexpr std::array units{"B", "KB", "MB", "GB", "TB"};
    auto value = static_cast<double>(count);
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < units.size()) {
        value /= 1024;
        ++unit;
    }
    if (unit >= 2 && value < 100)
        return fmt::format("{:.1f} {}", value, units[unit]);
    return fmt::format("{:.0f} {}", std::trunc(value), units[unit]);
}

std::string Format::megahertz(double megahertz) {
    if (!(megahertz > 0))
        return noReading;
    if (megahertz < 1000)
        return fmt::format("{:.0f} MHz", std::round(megahertz));
    return fmt::format("{:.2f} GHz", megahertz / 1000);
}

std::string Format::rpm(double rpm) const {
    return context_.grouped(rounded(rpm)).value_or("0");
}

std::string Format::relative(UnixSeconds moment, UnixSeconds now) {
    const std::int64_t seconds = truncated(now - moment);
    if (seconds > 59)
        return fmt::format("{}m ago", seconds / 60);
    return fmt::format("{}s ago", seconds);
}

} // namespace vantoro
