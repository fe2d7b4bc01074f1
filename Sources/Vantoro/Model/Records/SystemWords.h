// The operating systems that a machine may run, and how the machine and its sensors are named to people.
#pragma once

#include "Model/Records/Telemetry.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vantoro {

enum class SystemKind : std::uint8_t { macos, gnuLinux };

/// The processor's brand name, with "MacBook · " before it on a MacBook; the model where the brand is unknown, "This
/// Mac" where the model is. An empty text counts as unknown.
std::string machineName(const std::optional<std::string>& modelIdentifier,
                        const std::optional<std::string>& processorBrand);

/// "2 fans · 41 sensors", "No fans · 38 sensors".
std::string sensorSummary(Cooling cooling, int fanCount, int sensorCount);

} // namespace vantoro
