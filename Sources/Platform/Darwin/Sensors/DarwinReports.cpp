#include "Platform/Darwin/Sensors/DarwinReports.h"

#include "Platform/Darwin/Kernel/Handles.h"
#include "Platform/Darwin/Kernel/Sysctl.h"
#include "Platform/Darwin/Portable/ChipNames.h"

#include <utility>

namespace vantoro {

namespace {

class DarwinStateSample : public StateSample {
public:
    DarwinStateSample(const IOReportLibrary& library, IOReportChannels channels, std::shared_ptr<KeptTexts> texts)
        : library_(library), channels_(std::move(channels)), texts_(std::move(texts)) {}

    int channelCount() const override { return channels_.count(); }

    std::optional<std::string_view> channelName(int channel) const override {
        CFTextBuffer buffer;
        const auto name = cfText(library_.channelGetChannelName(channels_.at(channel)), buffer);
        return name ? std::optional(texts_->keep(coreChannelName(*name))) : std::nullopt;
    }

    int stateCount(int channel) const override { return library_.stateGetCount(channels_.at(channel)); }

    std::uint64_t residency(int channel, int state) const override {
        return library_.stateGetResidency(channels_.at(channel), state);
    }

    std::optional<std::string_view> stateName(int channel, int state) const override {
        CFTextBuffer buffer;
        const auto name = cfText(library_.stateGetNameForIndex(channels_.at(channel), state), buffer);
        return name ? std::optional(texts_->keep(*name)) : std::nullopt;
    }

private:
    IOReportLibrary library_;
    IOReportChannels channels_;
    std::shared_ptr<KeptTexts> texts_;
};

class DarwinEnergySample : public EnergySample {
public:
    DarwinEnergySample(const IOReportLibrary& library, IOReportChannels channels, std::shared_ptr<KeptTexts> texts)
        : library_(library), channels_(std::move(channels)), texts_(std::move(texts)) {}

    int channelCount() const override { return channels_.count(); }

    std::optional<std::string_view> channelName(int channel) const override {
        return kept(library_.channelGetChannelName(channels_.at(channel)));
    }

    std::optional<std::string_view> unitLabel(int channel) const override {
        return kept(library_.channelGetUnitLabel(channels_.at(channel)));
    }

    std::int64_t value(int channel) const override {
        return library_.simpleGetIntegerValue(channels_.at(channel), nullptr);
    }

private:
    std::optional<std::string_view> kept(CFStringRef string) const {
        CFTextBuffer buffer;
        const auto text = cfText(string, buffer);
        return text ? std::optional(texts_->keep(*text)) : std::nullopt;
    }

    IOReportLibrary library_;
    IOReportChannels channels_;
    std::shared_ptr<KeptTexts> texts_;
};

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

bool DarwinStateReport::load() {
    if (!library_)
        library_ = IOReportLibrary::open();
    return library_ && library_->canReadStates();
}

bool DarwinStateReport::subscribe() {
    if (!group_ && load())
        group_ = IOReportGroup::subscribe(*library_, CFSTR("CPU Stats"), CFSTR("CPU Core Performance States"));
    return group_.has_value();
}

std::unique_ptr<StateSample> DarwinStateReport::sample() {
    auto channels = group_ ? group_->sample() : std::nullopt;
    if (!channels)
        return nullptr;
    return std::make_unique<DarwinStateSample>(*library_, std::move(*channels), texts_);
}

bool DarwinEnergyReport::load() {
    if (!library_)
        library_ = IOReportLibrary::open();
    return library_ && library_->canReadEnergy();
}

bool DarwinEnergyReport::subscribe() {
    if (!group_ && load())
        group_ = IOReportGroup::subscribe(*library_, CFSTR("Energy Model"), nullptr);
    return group_.has_value();
}

std::unique_ptr<EnergySample> DarwinEnergyReport::sample() {
    auto channels = group_ ? group_->sample() : std::nullopt;
    if (!channels)
        return nullptr;
    return std::make_unique<DarwinEnergySample>(*library_, std::move(*channels), texts_);
}

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
