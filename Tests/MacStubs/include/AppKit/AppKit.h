// What this project uses of AppKit, declared so that it compiles where the framework is not.
#pragma once

#import <Foundation/Foundation.h>

typedef NSString* NSAppearanceName;

extern NSAppearanceName const NSAppearanceNameAqua;
extern NSAppearanceName const NSAppearanceNameDarkAqua;
extern NSString* const NSSystemColorsDidChangeNotification;
extern NSString* const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification;

@interface NSAppearance : NSObject
+ (NSAppearance*)appearanceNamed:(NSAppearanceName)name;
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray*)names;
@end

@interface NSApplication : NSObject
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(strong) NSAppearance* appearance;
@property(readonly, strong) NSAppearance* effectiveAppearance;
- (void)orderFrontStandardAboutPanel:(id)sender;
@end

@interface NSColorSpace : NSObject
@property(class, readonly, strong) NSColorSpace* sRGBColorSpace;
@end

@interface NSColor : NSObject
@property(class, readonly, strong) NSColor* controlAccentColor;
@property(readonly) double redComponent;
@property(readonly) double greenComponent;
@property(readonly) double blueComponent;
- (NSColor*)colorUsingColorSpace:(NSColorSpace*)space;
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
