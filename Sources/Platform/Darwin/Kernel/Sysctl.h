// Values of the kernel's by name (sysctlbyname).
#pragma once

#include "Platform/Processors.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vantoro {

/// A whole number of 4 or 8 bytes; none when there is no such value.
std::optional<std::int64_t> sysctlNumber(const char* name);

/// A text; none when there is no such value or it is empty.
std::optional<std::string> sysctlText(const char* name);

/// The chip's kinds of cores, by "hw.perflevel0.name" and "hw.perflevel1.name".
ProcessorTiers processorTiers();

} // namespace vantoro
