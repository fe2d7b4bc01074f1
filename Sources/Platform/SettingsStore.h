// Where the system keeps its users' settings, for systems whose own store is to be used as it is.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace vantoro {

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
