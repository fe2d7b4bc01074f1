#include "Platform/System.h"

#include "Platform/Darwin/Kernel/Handles.h"

#include <malloc/malloc.h>

namespace vantoro {

namespace {

/// The bundle's identifier: "defaults" names the settings by it, and the updater keeps its own there.
const CFStringRef domain = CFSTR("example.vantoro.Vantoro");

CFOwner<CFStringRef> cfString(const std::string& text) {
    return CFOwner<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
}

std::optional<std::string> textOf(CFStringRef string) {
    const CFIndex room = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::string text(static_cast<std::size_t>(room), '\0');
    if (!CFStringGetCString(string, text.data(), room, kCFStringEncodingUTF8))
        return {};
    text.resize(text.find('\0'));
    return text;
}

CFOwner<CFTypeRef> propertyOf(const SettingsStore::Value& value) {
    if (const std::string* const text = std::get_if<std::string>(&value))
        return CFOwner<CFTypeRef>(CFStringCreateWithCString(kCFAllocatorDefault, text->c_str(), kCFStringEncodingUTF8));
    if (const double* const number = std::get_if<double>(&value))
        return CFOwner<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, number));
    return CFOwner<CFTypeRef>(CFRetain(std::get<bool>(value) ? kCFBooleanTrue : kCFBooleanFalse));
}

class DarwinSettingsStore : public SettingsStore {
public:
    std::optional<Value> value(const std::string& key) const override {
        const CFOwner<CFStringRef> name = cfString(key);
        const CFOwner<CFTypeRef> property(name ? CFPreferencesCopyAppValue(name.get(), domain) : nullptr);
        if (!property)
            return {};
        const CFTypeID kind = CFGetTypeID(property.get());
        if (kind == CFStringGetTypeID())
            return textOf(static_cast<CFStringRef>(property.get()));
        if (kind == CFBooleanGetTypeID())
            return static_cast<bool>(CFBooleanGetValue(static_cast<CFBooleanRef>(property.get())));
        double number = 0;
        if (kind != CFNumberGetTypeID() ||
            !CFNumberGetValue(static_cast<CFNumberRef>(property.get()), kCFNumberDoubleType, &number))
            return {};
        return number;
    }

    void store(const std::string& key, const Value& value) override { set(key, propertyOf(value)); }
    void forget(const std::string& key) override { set(key, {}); }
    void sync() override { CFPreferencesAppSynchronize(domain); }

private:
    static void set(const std::string& key, const CFOwner<CFTypeRef>& property) {
        if (const CFOwner<CFStringRef> name = cfString(key))
            CFPreferencesSetAppValue(name.get(), property.get(), domain);
    }
};

} // namespace

std::unique_ptr<SettingsStore> systemSettingsStore() {
    return std::make_unique<DarwinSettingsStore>();
}

void releaseUnusedMemory() {
    ::malloc_zone_pressure_relief(nullptr, 0);
}

} // namespace vantoro
