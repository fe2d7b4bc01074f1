#include "Platform/Darwin/Sensors/DarwinGraphicsClients.h"

#include "Platform/Darwin/Kernel/Handles.h"
#include "Platform/Darwin/Sensors/IOReportLibrary.h"

#include <utility>
#include <vector>

namespace vantoro {

namespace {

CFOwner<CFTypeRef> property(const IOObject& entry, CFStringRef name) {
    return CFOwner<CFTypeRef>(IORegistryEntryCreateCFProperty(entry.get(), name, kCFAllocatorDefault, 0));
}

template <typename Ref>
Ref as(CFTypeRef object, CFTypeID type) {
    return object != nullptr && CFGetTypeID(object) == type ? static_cast<Ref>(object) : nullptr;
}

/// None unless the driver accounts for this client's work.
std::optional<GraphicsClientTime> clientTime(const IOObject& entry) {
    const auto usage = property(entry, CFSTR("AppUsage"));
    const auto kinds = as<CFArrayRef>(usage.get(), CFArrayGetTypeID());
    if (kinds == nullptr)
        return {};
    const auto creator = property(entry, CFSTR("IOUserClientCreator"));
    CFTextBuffer buffer;
    const auto text = cfText(creator.get(), buffer);
    const auto pid = text ? creatorPid(*text) : std::nullopt;
    GraphicsClientTime client;
    if (!pid || IORegistryEntryGetRegistryEntryID(entry.get(), &client.entry) != KERN_SUCCESS)
        return {};
    client.pid = *pid;
    for (CFIndex kind = 0; kind < CFArrayGetCount(kinds); ++kind) {
        const auto figures = as<CFDictionaryRef>(CFArrayGetValueAtIndex(kinds, kind), CFDictionaryGetTypeID());
        if (figures == nullptr)
            continue;
        const auto time =
            as<CFNumberRef>(CFDictionaryGetValue(figures, CFSTR("accumulatedGPUTime")), CFNumberGetTypeID());
        std::int64_t nanoseconds = 0;
        if (time != nullptr && CFNumberGetValue(time, kCFNumberSInt64Type, &nanoseconds) != 0 && nanoseconds > 0)
            client.nanoseconds += static_cast<std::uint64_t>(nanoseconds);
    }
    return client;
}

std::vector<GraphicsClientTime> clientTimes() {
    std::vector<GraphicsClientTime> clients;
    const CFMutableDictionaryRef matching = IOServiceMatching("IOAccelerator");
    io_iterator_t found = 0;
    // The search takes over the reference to the dictionary.
    if (matching == nullptr || IOServiceGetMatchingServices(kIOMainPortDefault, matching, &found) != KERN_SUCCESS)
        return clients;
    const IOObject accelerators(found);
    while (const IOObject accelerator{IOIteratorNext(accelerators.get())}) {
        io_iterator_t below = 0;
        if (IORegistryEntryGetChildIterator(accelerator.get(), kIOServicePlane, &below) != KERN_SUCCESS)
            continue;
        const IOObject children(below);
        while (const IOObject child{IOIteratorNext(children.get())})
            if (const auto client = clientTime(child))
                clients.push_back(*client);
    }
    return clients;
}

} // namespace

std::optional<GraphicsShares> DarwinGraphicsClients::read() {
    const std::vector<GraphicsClientTime> clients = clientTimes();
    if (!times_)
        times_.emplace();
    auto shares = times_->shares(clients, monotonicSeconds_());
    return shares && !clients.empty() ? std::move(shares) : std::nullopt;
}

} // namespace vantoro
