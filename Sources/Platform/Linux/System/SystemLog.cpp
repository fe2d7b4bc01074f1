#include "Platform/SystemLog.h"

#include <syslog.h>

namespace vantoro {

void writeSystemLog(const std::string& category, const std::string& message) {
    static const bool isOpen = [] {
        ::openlog("vantoro", LOG_PID, LOG_USER);
        return true;
    }();
    (void)isOpen;
    ::syslog(LOG_DEBUG, "%s: %s", category.c_str(), message.c_str());
}

} // namespace vantoro
