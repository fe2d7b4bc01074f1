// The user's settings: every key with its type and default, over the system's own settings store.
#pragma once

#include "Model/Text/FormatContext.h"

#include <memory>
#include <string>

namespace vantoro {

class SettingsStore;

/// Read at the moment of each call; a value that is missing, of another type or not finite is the default. Main thread.
class Settings {
public:
    /// The user's own store.
    Settings();
    /// A store kept in this file, for tests.
    explicit Settings(const std::string& iniFile);
    /// A store of the system's own kind.
    explicit Settings(std::unique_ptr<SettingsStore> store);
    ~Settings();

    /// Seconds between samples; 2 unless a number above 0 is stored.
    double sampleInterval() const;
    void setSampleInterval(double seconds);
    /// Animate changes of value.
    bool smoothUpdates() const;
    void setSmoothUpdates(bool on);
    /// Let the drawn fans turn.
    bool spinRotors() const;
    void setSpinRotors(bool on);
    /// "F" is Fahrenheit, anything else Celsius.
    std::string temperatureUnit() const;
    void setTemperatureUnit(const std::string& unit);
    bool menuBarShowsRPM() const;
    void setMenuBarShowsRPM(bool on);
    /// Minutes of history to keep.
    double historyMinutes() const;
    void setHistoryMinutes(double minutes);
    /// "auto" or "unprivileged".
    std::string processMonitorMode() const;
    void setProcessMonitorMode(const std::string& mode);
    /// "light", "dark", or anything else for the system's.
    std::string appearance() const;
    void setAppearance(const std::string& name);
    /// Where the main window stood last, as the window system writes it; empty until it was closed once.
    std::string windowGeometry() const;
    void setWindowGeometry(const std::string& geometry);
    /// The user has been told that this desktop shows no menu-bar item.
    bool toldOfMissingTray() const;
    void setToldOfMissingTray(bool told);

    /// What is stored under a key, if it reads as that type.
    std::optional<std::string> storedText(std::string_view key) const;
    std::optional<double> storedNumber(std::string_view key) const;
    std::optional<bool> storedFlag(std::string_view key) const;

    /// For records that are another's to read and write.
    void storeText(std::string_view key, const std::string& text);
    void forget(std::string_view key);
    /// Everything stored so far is on disk, for whoever reads it next.
    void sync();

private:
    class Store;
    std::unique_ptr<Store> store_;
};

/// The settings and the user's locale, for Format and Motion.
class SettingsFormatContext : public FormatContext {
public:
    /// The settings must outlive the context.
    explicit SettingsFormatContext(const Settings& settings) : settings_(settings) {}

    std::optional<std::string> text(std::string_view key) const override { return settings_.storedText(key); }
    std::optional<double> number(std::string_view key) const override { return settings_.storedNumber(key); }
    std::optional<bool> flag(std::string_view key) const override { return settings_.storedFlag(key); }
    std::optional<std::string> grouped(std::int64_t number) const override;
    std::string timeOfDay(UnixSeconds instant) const override;
    std::string timeWithSeconds(UnixSeconds instant) const override;
    std::string clockFace(UnixSeconds instant) const override;

private:
    const Settings& settings_;
};

} // namespace vantoro
