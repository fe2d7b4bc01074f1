// The operating systems that a machine may run.
#pragma once

#include <cstdint>

namespace vantoro {

enum class SystemKind : std::uint8_t { macos, gnuLinux };

} // namespace vantoro
