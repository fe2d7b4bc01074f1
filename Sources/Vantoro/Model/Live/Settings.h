// The user's settings over the system's own settings store.
#pragma once

#include "Model/Text/Format.h"
#include "Model/Text/Setting.h"
#include "Platform/System.h"

#include <memory>
#include <QObject>
#include <string>
#include <type_traits>

namespace vantoro {

/// Read at the moment of each call; a value that is missing, of another type or not finite is the default. Main thread.
class Settings : public QObject {
    Q_OBJECT
public:
    /// The user's own store.
    Settings();
    /// A store kept in this file, for tests.
    explicit Settings(const std::string& iniFile);
    /// A store of the system's own kind.
    explicit Settings(std::unique_ptr<SettingsStore> store);
    ~Settings() override;

    double value(const NumberSetting& setting) const;
    bool value(const FlagSetting& setting) const;
    std::string value(const TextSetting& setting) const;
    template <class Value>
    void store(const SettingRow<Value>& setting, std::type_identity_t<Value> value) {
        if constexpr (std::is_same_v<Value, std::string_view>)
            store(setting.key, std::string(value));
        else
            store(setting.key, value);
    }

    /// What is stored under a key, if it reads as that type.
    std::optional<std::string> storedText(std::string_view key) const;
    std::optional<double> storedNumber(std::string_view key) const;
    std::optional<bool> storedFlag(std::string_view key) const;

    /// For records that are another's to read and write.
    void storeText(std::string_view key, const std::string& text) { store(key, text); }
    void store(std::string_view key, const SettingsStore::Value& value);
    void forget(std::string_view key);
    /// Everything stored so far is on disk, for whoever reads it next.
    void sync();

signals:
    /// What is stored under this key was written or forgotten just now.
    void changed(std::string_view key);

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
