// The clock that measures how long things take.
#pragma once

#include <chrono>

namespace vantoro {

/// Seconds of a clock that is never set back.
inline double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace vantoro
