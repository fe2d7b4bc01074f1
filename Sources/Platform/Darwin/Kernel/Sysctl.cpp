#include "Platform/Darwin/Kernel/Sysctl.h"

#include "Platform/Darwin/Portable/ChipNames.h"

#include <cstddef>
#include <cstring>
#include <sys/sysctl.h>

namespace vantoro {

std::optional<std::int64_t> sysctlNumber(const char* name) {
    std::int64_t wide = 0;
    std::size_t size = sizeof wide;
    if (::sysctlbyname(name, &wide, &size, nullptr, 0) != 0)
        return {};
    if (size == sizeof wide)
        return wide;
    std::int32_t narrow = 0;
    if (size != sizeof narrow)
        return {};
    std::memcpy(&narrow, &wide, sizeof narrow);
    return narrow;
}

std::optional<std::string> sysctlText(const char* name) {
    std::size_t size = 0;
    if (::sysctlbyname(name, nullptr, &size, nullptr, 0) != 0 || size == 0)
        return {};
    std::string text(size, '\0');
    if (::sysctlbyname(name, text.data(), &size, nullptr, 0) != 0)
        return {};
    // The size counts the terminating NUL.
    text.resize(::strnlen(text.data(), size));
    return text.empty() ? std::nullopt : std::optional(text);
}

ProcessorTiers processorTiers() {
    return tiersNamed(sysctlText("hw.perflevel0.name"), sysctlText("hw.perflevel1.name"));
}

} // namespace vantoro
