#include "Model/Text/Format.h"

#include "Model/Text/Setting.h"
#include "Model/Text/WholeNumber.h"

#include <array>
#include <cmath>
#include <fmt/format.h>

namespace vantoro {

namespace {

bool isFahrenheit(const FormatContext& context) {
    return context.text(Setting::temperatureUnit.key) == "F";
}

constexpr const char* noReading = "—";

} // namespace

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
