#include "Model/Log.h"

#include "Platform/SystemLog.h"

#include <cstdio>
#include <fmt/format.h>

namespace vantoro {

bool Log::updatesEnabled = false;

void Log::updates(const std::string& message) {
    writeSystemLog("updates", message);
    if (updatesEnabled) {
        fmt::print("UPDATE {}\n", message);
        std::fflush(stdout);
    }
}

} // namespace vantoro
