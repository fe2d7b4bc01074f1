// The system's own log.
#pragma once

#include <string>

namespace vantoro {

/// A line at debug level under the program's name and that category, readable by whoever reads the log: os_log on a
/// Mac, syslog (and so the journal) on Linux. Never fails, never waits.
void writeSystemLog(const std::string& category, const std::string& message);

} // namespace vantoro
