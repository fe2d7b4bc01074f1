#include "Platform/Darwin/DarwinSystemLooks.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace vantoro {

namespace {

std::optional<SystemLooks::Accent> chosenAccent() {
    NSColor* const accent = [[NSColor controlAccentColor] colorUsingColorSpace:[NSColorSpace sRGBColorSpace]];
    if (accent == nil)
        return {};
    return SystemLooks::Accent{.red = static_cast<double>([accent redComponent]),
                               .green = static_cast<double>([accent greenComponent]),
                               .blue = static_cast<double>([accent blueComponent])};
}

} // namespace

/// Registrations with the notification centres, given back when it goes.
class DarwinSystemLooks::Observer {
public:
    explicit Observer(std::function<void()> changed) : changed_(std::move(changed)) {
        const std::function<void()>* const call = &changed_;
        const auto add = [call](NSNotificationCenter* center, NSString* name) {
            return [[center addObserverForName:name
                                        object:nil
                                         queue:[NSOperationQueue mainQueue]
                                    usingBlock:^(NSNotification*) {
                                      (*call)();
                                    }] retain];
        };
        options_ = add([[NSWorkspace sharedWorkspace] notificationCenter],
                       NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification);
        colors_ = add([NSNotificationCenter defaultCenter], NSSystemColorsDidChangeNotification);
    }

    ~Observer() {
        [[[NSWorkspace sharedWorkspace] notificationCenter] removeObserver:options_];
        [[NSNotificationCenter defaultCenter] removeObserver:colors_];
        [options_ release];
        [colors_ release];
    }

    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

private:
    std::function<void()> changed_;
    id<NSObject> options_;
    id<NSObject> colors_;
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
                .increasesContrast = static_cast<bool>([workspace accessibilityDisplayShouldIncreaseContrast]),
                .accent = chosenAccent()};
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

void showAboutPanel() {
    @autoreleasepool {
        [[NSApplication sharedApplication] orderFrontStandardAboutPanel:nil];
    }
}

} // namespace vantoro
