#include "Platform/Darwin/AboutPanel.h"

#import <AppKit/AppKit.h>

namespace vantoro {

void showAboutPanel() {
    @autoreleasepool {
        [[NSApplication sharedApplication] orderFrontStandardAboutPanel:nil];
    }
}

} // namespace vantoro
