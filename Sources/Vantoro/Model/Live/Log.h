// The trail that updates leave, for whoever asks why one did not take.
#pragma once

#include <string>

namespace vantoro {

class Log {
public:
    /// The program was started with --debug-updates: what is logged is printed too, after "UPDATE ".
    static bool updatesEnabled;

    /// A line for the system's log, category "updates". What would break it or move the cursor becomes a blank.
    static void updates(const std::string& message);
};

} // namespace vantoro
