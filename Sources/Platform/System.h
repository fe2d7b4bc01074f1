// What every program asks of the system beside its sensors: a log, memory given back, a store for settings.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace vantoro {

/// A line at debug level under the program's name and that category, readable by whoever reads the log: os_log on a
/// Mac, syslog (and so the journal) on Linux. Never fails, never waits.
void writeSystemLog(const std::string& category, const std::string& message);

/// Worth calling after much was freed at once, as when a window has closed. Linux: malloc_trim, and madvise for the
/// instructions that only the window needed; Mac: malloc_zone_pressure_relief.
void releaseUnusedMemory();

/// Keys and values of the program's own domain. Main thread.
class SettingsStore {
public:
    using Value = std::variant<std::string, double, bool>;

    virtual ~SettingsStore() = default;

    /// None when nothing is stored under the key, or something of another kind.
    virtual std::optional<Value> value(const std::string& key) const = 0;
    virtual void store(const std::string& key, const Value& value) = 0;
    virtual void forget(const std::string& key) = 0;
    /// Everything stored so far is where others read it.
    virtual void sync() = 0;
};

/// The store of this operating system; null where a file of settings serves.
std::unique_ptr<SettingsStore> systemSettingsStore();

} // namespace vantoro
