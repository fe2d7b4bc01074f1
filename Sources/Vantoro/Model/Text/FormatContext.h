// What formatting and motion ask of the world: the user's settings and the conventions of their locale. Injected, so
// that the texts themselves stay pure; the program's own is over the settings store, a test's is a handful of values.
#pragma once

#include "Model/Text/UnixSeconds.h"

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

} // namespace vantoro
