#include "Platform/Darwin/Sensors/DarwinFrequencyTables.h"

#include "Platform/Darwin/Kernel/CFOwner.h"
#include "Platform/Darwin/Kernel/IOObject.h"
#include "Platform/Darwin/Kernel/Sysctl.h"
#include "Platform/Darwin/Portable/ChipNames.h"

#include <utility>

namespace vantoro {

namespace {

std::optional<std::vector<std::uint8_t>> bytesOf(CFTypeRef property) {
    if (property == nullptr || CFGetTypeID(property) != CFDataGetTypeID())
        return {};
    const auto data = static_cast<CFDataRef>(property);
    const std::uint8_t* const first = CFDataGetBytePtr(data);
    if (first == nullptr)
        return {};
    return std::vector<std::uint8_t>(first, first + CFDataGetLength(data));
}

class DarwinRegistryEntry : public RegistryEntry {
public:
    explicit DarwinRegistryEntry(IOObject entry) : entry_(std::move(entry)) {}

    std::optional<std::vector<std::uint8_t>> data(const std::string& property) const override {
        const CFOwner<CFStringRef> name(
            CFStringCreateWithCString(kCFAllocatorDefault, property.c_str(), kCFStringEncodingUTF8));
        if (!name)
            return {};
        const CFOwner<CFTypeRef> value(
            IORegistryEntryCreateCFProperty(entry_.get(), name.get(), kCFAllocatorDefault, 0));
        auto table = bytesOf(value.get());
        if (table && property.starts_with("voltage-states"))
            rewriteInKilohertz(*table);
        return table;
    }

private:
    IOObject entry_;
};

} // namespace

DarwinFrequencyTables::DarwinFrequencyTables() : hasMiddleTier_(vantoro::hasMiddleTier(processorTiers())) {}

std::unique_ptr<RegistryEntry> DarwinFrequencyTables::entryAtPath(const std::string& path) {
    IOObject entry(IORegistryEntryFromPath(kIOMainPortDefault, path.c_str()));
    return entry ? std::make_unique<DarwinRegistryEntry>(std::move(entry)) : nullptr;
}

std::optional<std::vector<std::unique_ptr<RegistryEntry>>>
DarwinFrequencyTables::entriesNamed(const std::string& name) {
    const CFMutableDictionaryRef matching = IOServiceNameMatching(name.c_str());
    if (matching == nullptr)
        return {};
    io_iterator_t found = 0;
    // The search takes over the reference to the dictionary.
    if (IOServiceGetMatchingServices(kIOMainPortDefault, matching, &found) != KERN_SUCCESS)
        return {};
    const IOObject iterator(found);
    std::vector<std::unique_ptr<RegistryEntry>> entries;
    while (IOObject entry{IOIteratorNext(iterator.get())})
        entries.push_back(std::make_unique<DarwinRegistryEntry>(std::move(entry)));
    return entries;
}

} // namespace vantoro
