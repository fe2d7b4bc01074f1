#include "Platform/System.h"

#import <Foundation/Foundation.h>
#include <os/log.h>

namespace vantoro {

void writeSystemLog(const std::string& category, const std::string& message) {
    @autoreleasepool {
        // A program outside a bundle has no identifier.
        NSString* const identifier = [[NSBundle mainBundle] bundleIdentifier];
        // Loggers are never given back; there is one category.
        static const os_log_t logger =
            os_log_create(identifier != nil ? [identifier UTF8String] : "vantoro", category.c_str());
        os_log_debug(logger, "%{public}s", message.c_str());
    }
}

} // namespace vantoro
