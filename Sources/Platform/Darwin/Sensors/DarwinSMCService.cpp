#include "Platform/Darwin/Sensors/DarwinSMCService.h"

#include "Platform/Darwin/Kernel/Handles.h"
#include "Platform/Darwin/Kernel/Sysctl.h"
#include "Platform/Darwin/Portable/ChipNames.h"

#include <cstddef>
#include <mach/mach.h>

namespace vantoro {

namespace {

constexpr std::uint32_t connectionType = 0;
constexpr std::uint32_t structCallSelector = 2;

} // namespace

std::uint32_t DarwinSMCService::open(const char* className) {
    const CFMutableDictionaryRef matching = IOServiceMatching(className);
    if (matching == nullptr)
        return 0;
    // The search takes over the reference to the dictionary.
    const IOObject service(IOServiceGetMatchingService(kIOMainPortDefault, matching));
    if (!service)
        return 0;
    io_connect_t connection = 0;
    if (IOServiceOpen(service.get(), mach_task_self(), connectionType, &connection) != KERN_SUCCESS)
        return 0;
    return connection;
}

bool DarwinSMCService::call(std::uint32_t handle, const SMCKeyData& request, SMCKeyData& reply) {
    std::size_t replyBytes = sizeof reply;
    return IOConnectCallStructMethod(handle, structCallSelector, &request, sizeof request, &reply, &replyBytes) ==
           KERN_SUCCESS;
}

std::uint32_t DarwinSMCService::close(std::uint32_t handle) {
    return static_cast<std::uint32_t>(IOServiceClose(handle));
}

bool DarwinSMCService::measuresCoresUnderTs() const {
    return hasMiddleTier(processorTiers());
}

} // namespace vantoro
