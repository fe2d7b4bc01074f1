// The one line that says what is wrong.
#pragma once

#include <cstdio>
#include <string_view>

namespace vantoro {

/// Prints "vantoro: REASON" on standard error. When even that cannot be written there is nobody left to tell.
inline void complain(std::string_view reason) {
    std::fprintf(stderr, "vantoro: %.*s\n", static_cast<int>(reason.size()), reason.data());
}

} // namespace vantoro
