// What this project uses of AppKit, declared so that it compiles where the framework is not.
#pragma once

#import <Foundation/Foundation.h>

typedef NSString* NSAppearanceName;

extern NSAppearanceName const NSAppearanceNameAqua;
extern NSAppearanceName const NSAppearanceNameDarkAqua;
extern NSString* const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification;

@interface NSAppearance : NSObject
+ (NSAppearance*)appearanceNamed:(NSAppearanceName)name;
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray*)names;
@end

@interface NSApplication : NSObject
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(strong) NSAppearance* appearance;
@property(readonly, strong) NSAppearance* effectiveAppearance;
@end

@interface NSRunningApplication : NSObject
+ (NSRunningApplication*)runningApplicationWithProcessIdentifier:(int)pid;
- (BOOL)terminate;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
@property(readonly) BOOL accessibilityDisplayShouldReduceMotion;
@property(readonly) BOOL accessibilityDisplayShouldIncreaseContrast;
@end
