// The user's settings, one row each: where it is stored, of which type, and what it is until something else is stored.
#pragma once

#include <string_view>

namespace vantoro {

template <class Value>
struct SettingRow {
    std::string_view key;
    Value byDefault;
};
/// Always above 0.
using NumberSetting = SettingRow<double>;
using FlagSetting = SettingRow<bool>;
using TextSetting = SettingRow<std::string_view>;

struct Setting {
    /// Seconds between samples.
    static constexpr NumberSetting sampleInterval{"sampleInterval", 2};
    /// Animate changes of value.
    static constexpr FlagSetting smoothUpdates{"smoothUpdates", true};
    /// Let the drawn fans turn.
    static constexpr FlagSetting spinRotors{"spinRotors", true};
    /// "F" is Fahrenheit, anything else Celsius.
    static constexpr TextSetting temperatureUnit{"temperatureUnit", "C"};
    /// The menu bar's figure also while the machine is at rest.
    static constexpr FlagSetting menuBarShowsRPM{"menuBarShowsRPM", false};
    /// Minutes of history to keep.
    static constexpr NumberSetting historyMinutes{"historyMinutes", 30};
    /// "auto" or "unprivileged".
    static constexpr TextSetting processMonitorMode{"processMonitorMode", "auto"};
    /// "light", "dark", or anything else for the system's.
    static constexpr TextSetting appearance{"appearance", "system"};
    /// Where the main window stood last, as the window system writes it; empty until it was closed once.
    static constexpr TextSetting windowGeometry{"windowGeometry", ""};
    /// The user has been told that this desktop shows no menu-bar item.
    static constexpr FlagSetting toldOfMissingTray{"toldOfMissingTray", false};
};

} // namespace vantoro
