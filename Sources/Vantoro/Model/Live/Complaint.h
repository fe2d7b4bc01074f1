// The one line that says what is wrong.
#pragma once

#include "Model/Text/TerminalText.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace vantoro {

/// Prints "vantoro: REASON" on standard error, whatever file names and other people's words the reason holds. When even
/// that cannot be written there is nobody left to tell.
inline void complain(std::string_view reason) {
    std::fprintf(stderr, "vantoro: %s\n", terminalText(reason).c_str());
}

} // namespace vantoro
