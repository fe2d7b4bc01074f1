#include "Platform/Darwin/DarwinSystemLooks.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace vantoro {

/// A registration with the workspace's notification centre, given back when it goes.
class DarwinSystemLooks::Observer {
public:
    explicit Observer(std::function<void()> changed) : changed_(std::move(changed)) {
        const std::function<void()>* const call = &changed_;
        token_ = [[[[NSWorkspace sharedWorkspace] notificationCenter]
            addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                        object:nil
                         queue:[NSOperationQueue mainQueue]
                    usingBlock:^(NSNotification*) {
                      (*call)();
                    }] retain];
    }

    ~Observer() {
        [[[NSWorkspace sharedWorkspace] notificationCenter] removeObserver:token_];
        [token_ release];
    }

    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

private:
    std::function<void()> changed_;
    id<NSObject> token_;
};

DarwinSystemLooks::DarwinSystemLooks() = default;
DarwinSystemLooks::~DarwinSystemLooks() = default;

SystemLooks::State DarwinSystemLooks::state() const {
    @autoreleasepool {
        NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
        NSArray* const known = [NSArray arrayWithObjects:NSAppearanceNameAqua, NSAppearanceNameDarkAqua, nil];
        NSAppearanceName const shown =
            [[[NSApplication sharedApplication] effectiveAppearance] bestMatchFromAppearancesWithNames:known];
        return {.isDark = static_cast<bool>([shown isEqualToString:NSAppearanceNameDarkAqua]),
                .reducesMotion = static_cast<bool>([workspace accessibilityDisplayShouldReduceMotion]),
                .increasesContrast = static_cast<bool>([workspace accessibilityDisplayShouldIncreaseContrast])};
    }
}

void DarwinSystemLooks::choose(std::optional<bool> dark) {
    @autoreleasepool {
        NSAppearance* chosen = nil;
        if (dark)
            chosen = [NSAppearance appearanceNamed:*dark ? NSAppearanceNameDarkAqua : NSAppearanceNameAqua];
        [[NSApplication sharedApplication] setAppearance:chosen];
    }
}

void DarwinSystemLooks::watch(std::function<void()> changed) {
    @autoreleasepool {
        observer_ = changed ? std::make_unique<Observer>(std::move(changed)) : nullptr;
    }
}

} // namespace vantoro
