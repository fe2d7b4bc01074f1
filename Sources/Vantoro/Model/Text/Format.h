// Measurements as the short texts that people see, and what that asks of the world: the user's settings and the
// conventions of their locale. These are injected, so that the texts themselves stay pure; the program's own are over
// the settings store, a test's are a handful of values.
#pragma once

#include "Model/Text/Numbers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

class FormatContext {
public:
    virtual ~FormatContext() = default;

    /// The setting stored under this key as it stands now; none when it was never written or is of another type.
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    virtual std::optional<double> number(std::string_view key) const = 0;
    virtual std::optional<bool> flag(std::string_view key) const = 0;

    /// A whole number with the locale's grouping separators; none when it cannot be written.
    virtual std::optional<std::string> grouped(std::int64_t number) const = 0;
    /// The local time of day in the locale's short form, without the date.
    virtual std::string timeOfDay(UnixSeconds instant) const = 0;
    /// The same with the seconds.
    virtual std::string timeWithSeconds(UnixSeconds instant) const = 0;
    /// The short form without what tells morning from afternoon: enough where the times beside it tell.
    virtual std::string clockFace(UnixSeconds instant) const = 0;
};

/// No stored setting, English conventions, UTC ("1,234", "9:14 AM", "9:14:07 AM", "9:14").
class DefaultFormatContext : public FormatContext {
public:
    std::optional<std::string> text(std::string_view key) const override;
    std::optional<double> number(std::string_view key) const override;
    std::optional<bool> flag(std::string_view key) const override;
    std::optional<std::string> grouped(std::int64_t number) const override;
    std::string timeOfDay(UnixSeconds instant) const override;
    std::string timeWithSeconds(UnixSeconds instant) const override;
    std::string clockFace(UnixSeconds instant) const override;
};

/// Reads the settings of its context at the moment of each call, so a change of setting shows at the next redraw.
class Format {
public:
    explicit Format(const FormatContext& context) : context_(context) {}

    /// Whole degrees in the user's unit, "37°C" or "98°F"; "—" for 0 and below (no reading).
    std::string temperature(double celsius) const;
    /// As temperature, without the unit's letter.
    std::string degrees(double celsius) const;
    /// "Celsius" or "Fahrenheit".
    std::string unitName() const;
    /// Steps of 1024, "1 KB", "5.2 MB", "150 MB"; fractions of whole figures are dropped.
    static std::string bytes(std::uint64_t count);
    /// "999 MHz" below 1000, then "1.00 GHz"; "—" for 0 and below.
    static std::string megahertz(double megahertz);
    /// A whole number with the locale's grouping separators and no unit.
    std::string rpm(double rpm) const;
    /// The age of a moment in whole seconds up to 59, then in whole minutes: "59s ago", "90m ago".
    static std::string relative(UnixSeconds moment, UnixSeconds now);
    /// The local time of day in the locale's short form.
    std::string timeOfDay(UnixSeconds instant) const { return context_.timeOfDay(instant); }
    /// The same with the seconds.
    std::string timeWithSeconds(UnixSeconds instant) const { return context_.timeWithSeconds(instant); }
    /// The short form without what tells morning from afternoon, for a row of times.
    std::string clockFace(UnixSeconds instant) const { return context_.clockFace(instant); }

private:
    const FormatContext& context_;
};

} // namespace vantoro
