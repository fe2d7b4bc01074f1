// The program's two clocks; whoever tells the time otherwise has it as an argument.
#pragma once

#include <chrono>

namespace vantoro {

/// Seconds of a clock that is never set back: how long things take.
inline double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Seconds since 1970-01-01 UTC, with fraction: what people's clocks show.
inline double unixSeconds() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace vantoro
