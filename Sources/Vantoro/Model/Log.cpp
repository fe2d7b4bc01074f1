#include "Model/Log.h"

#include "Platform/SystemLog.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>

namespace vantoro {

bool Log::updatesEnabled = false;

void Log::updates(const std::string& message) {
    // Servers and feeds have their say in it.
    std::string line = message;
    std::ranges::replace_if(
        line, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    writeSystemLog("updates", line);
    if (updatesEnabled) {
        fmt::print("UPDATE {}\n", line);
        std::fflush(stdout);
    }
}

} // namespace vantoro
