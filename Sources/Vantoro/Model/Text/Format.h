// Measurements as the short texts that people see.
#pragma once

#include "Model/Text/FormatContext.h"

#include <cstdint>
#include <string>

namespace vantoro {

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
