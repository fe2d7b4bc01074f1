#include "Platform/Darwin/Sensors/IOReportLibrary.h"

#include <dlfcn.h>
#include <utility>

namespace vantoro {

namespace {

template <typename Function>
void lookUp(void* library, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(::dlsym(library, name));
}

} // namespace

std::optional<std::string_view> cfText(CFTypeRef object, CFTextBuffer& buffer) {
    if (object == nullptr || CFGetTypeID(object) != CFStringGetTypeID())
        return {};
    const auto size = static_cast<CFIndex>(buffer.size());
    if (!CFStringGetCString(static_cast<CFStringRef>(object), buffer.data(), size, kCFStringEncodingUTF8))
        return {};
    return std::string_view(buffer.data());
}

std::optional<IOReportLibrary> IOReportLibrary::open() {
    void* const library = ::dlopen("/usr/lib/libIOReport.dylib", RTLD_NOW);
    if (library == nullptr)
        return {};
    IOReportLibrary entries;
    lookUp(library, "IOReportCopyChannelsInGroup", entries.copyChannelsInGroup);
    lookUp(library, "IOReportCreateSubscription", entries.createSubscription);
    lookUp(library, "IOReportCreateSamples", entries.createSamples);
    lookUp(library, "IOReportChannelGetChannelName", entries.channelGetChannelName);
    lookUp(library, "IOReportChannelGetUnitLabel", entries.channelGetUnitLabel);
    lookUp(library, "IOReportSimpleGetIntegerValue", entries.simpleGetIntegerValue);
    lookUp(library, "IOReportStateGetCount", entries.stateGetCount);
    lookUp(library, "IOReportStateGetResidency", entries.stateGetResidency);
    lookUp(library, "IOReportStateGetNameForIndex", entries.stateGetNameForIndex);
    return entries;
}

bool IOReportLibrary::canSubscribe() const {
    return copyChannelsInGroup != nullptr && createSubscription != nullptr && createSamples != nullptr;
}

bool IOReportLibrary::canReadStates() const {
    return canSubscribe() && channelGetChannelName != nullptr && stateGetCount != nullptr &&
           stateGetResidency != nullptr && stateGetNameForIndex != nullptr;
}

bool IOReportLibrary::canReadEnergy() const {
    return canSubscribe() && channelGetChannelName != nullptr && channelGetUnitLabel != nullptr &&
           simpleGetIntegerValue != nullptr;
}

IOReportChannels::IOReportChannels(CFOwner<CFDictionaryRef> sample)
    : sample_(std::move(sample)), list_(listIn(sample_.get())) {}

CFArrayRef IOReportChannels::listIn(CFDictionaryRef sample) {
    const CFTypeRef list = CFDictionaryGetValue(sample, CFSTR("IOReportChannels"));
    if (list == nullptr || CFGetTypeID(list) != CFArrayGetTypeID())
        return nullptr;
    return static_cast<CFArrayRef>(list);
}

int IOReportChannels::count() const {
    return static_cast<int>(CFArrayGetCount(list_));
}

CFDictionaryRef IOReportChannels::at(int channel) const {
    return static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(list_, channel));
}

std::optional<IOReportGroup> IOReportGroup::subscribe(const IOReportLibrary& library, CFStringRef group,
                                                      CFStringRef subgroup) {
    IOReportGroup result;
    result.library_ = library;
    result.channels_ = CFOwner(library.copyChannelsInGroup(group, subgroup, 0, 0, 0));
    if (!result.channels_)
        return {};
    // What was subscribed is asked for because the library insists, and left to it; the channels asked for say the
    // same.
    CFMutableDictionaryRef subscribed = nullptr;
    result.subscription_ =
        CFOwner(library.createSubscription(nullptr, result.channels_.get(), &subscribed, 0, nullptr));
    if (!result.subscription_)
        return {};
    return result;
}

std::optional<IOReportChannels> IOReportGroup::sample() const {
    CFOwner<CFDictionaryRef> sample(library_.createSamples(subscription_.get(), channels_.get(), nullptr));
    if (!sample || IOReportChannels::listIn(sample.get()) == nullptr)
        return {};
    return IOReportChannels(std::move(sample));
}

} // namespace vantoro
