// The system's report of the chip's counters: a library that comes without headers, opened at run time, subscriptions
// to its channels, and their texts.
#pragma once

#include "Platform/Darwin/Kernel/Handles.h"

#include <array>
#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace vantoro {

/// Room for one text in UTF-8, of at most 127 bytes.
using CFTextBuffer = std::array<char, 128>;

/// The text of an object, which may be null, written into `buffer`; none when it is no text or does not fit.
std::optional<std::string_view> cfText(CFTypeRef object, CFTextBuffer& buffer);

/// Texts that recur in every sample, kept once for the life of a source.
class KeptTexts {
public:
    /// The same text, valid as long as this object; allocates only for one that is new.
    std::string_view keep(std::string_view text) {
        const auto known = texts_.find(text);
        return known != texts_.end() ? *known : *texts_.emplace(text).first;
    }

private:
    std::set<std::string, std::less<>> texts_;
};

using IOReportSubscription = CFTypeRef;

/// Entry points of /usr/lib/libIOReport.dylib, null for those it does not have. Objects that Copy or Create give belong
/// to the caller; texts belong to their channel.
struct IOReportLibrary {
    CFMutableDictionaryRef (*copyChannelsInGroup)(CFStringRef group, CFStringRef subgroup, std::uint64_t, std::uint64_t,
                                                  std::uint64_t) = nullptr;
    IOReportSubscription (*createSubscription)(void*, CFMutableDictionaryRef channels,
                                               CFMutableDictionaryRef* subscribed, std::uint64_t, CFTypeRef) = nullptr;
    CFDictionaryRef (*createSamples)(IOReportSubscription, CFMutableDictionaryRef channels, CFTypeRef) = nullptr;
    CFStringRef (*channelGetChannelName)(CFDictionaryRef channel) = nullptr;
    CFStringRef (*channelGetUnitLabel)(CFDictionaryRef channel) = nullptr;
    std::int64_t (*simpleGetIntegerValue)(CFDictionaryRef channel, std::int32_t*) = nullptr;
    std::int32_t (*stateGetCount)(CFDictionaryRef channel) = nullptr;
    std::uint64_t (*stateGetResidency)(CFDictionaryRef channel, std::int32_t state) = nullptr;
    CFStringRef (*stateGetNameForIndex)(CFDictionaryRef channel, std::int32_t state) = nullptr;

    /// Opens the library and looks everything up; none when it is not there. It is never closed.
    static std::optional<IOReportLibrary> open();

    bool canSubscribe() const;
    bool canReadStates() const;
    bool canReadEnergy() const;
};

/// One sample of a subscription: its channels, counted from 0.
class IOReportChannels {
public:
    /// `sample` has a list of channels.
    explicit IOReportChannels(CFOwner<CFDictionaryRef> sample);

    /// The list of channels in a sample; null when it has none.
    static CFArrayRef listIn(CFDictionaryRef sample);

    int count() const;
    CFDictionaryRef at(int channel) const;

private:
    CFOwner<CFDictionaryRef> sample_;
    CFArrayRef list_;
};

/// A subscription to all channels of a group.
class IOReportGroup {
public:
    /// None when the library has no such channels or refuses. A null `subgroup` stands for all.
    static std::optional<IOReportGroup> subscribe(const IOReportLibrary& library, CFStringRef group,
                                                  CFStringRef subgroup);

    /// None when no sample can be taken or it has no list of channels.
    std::optional<IOReportChannels> sample() const;

private:
    IOReportGroup() = default;

    IOReportLibrary library_;
    CFOwner<CFMutableDictionaryRef> channels_;
    CFOwner<IOReportSubscription> subscription_;
};

} // namespace vantoro
