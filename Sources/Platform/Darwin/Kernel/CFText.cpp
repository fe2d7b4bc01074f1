#include "Platform/Darwin/Kernel/CFText.h"

namespace vantoro {

std::optional<std::string_view> cfText(CFTypeRef object, CFTextBuffer& buffer) {
    if (object == nullptr || CFGetTypeID(object) != CFStringGetTypeID())
        return {};
    const auto size = static_cast<CFIndex>(buffer.size());
    if (!CFStringGetCString(static_cast<CFStringRef>(object), buffer.data(), size, kCFStringEncodingUTF8))
        return {};
    return std::string_view(buffer.data());
}

} // namespace vantoro
