// What the program says beside its output: the one line that says what is wrong, and the trail that updates leave for
// whoever asks why one did not take.
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

class Log {
public:
    /// The program was started with --debug-updates: what is logged is printed too, after "UPDATE ".
    static bool updatesEnabled;

    /// A line for the system's log, category "updates". What would break it or move the cursor becomes a blank.
    static void updates(const std::string& message);
};

} // namespace vantoro
