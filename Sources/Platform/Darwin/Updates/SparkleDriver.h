// Between Sparkle and the program's update driver. Objective-C++ only.
#pragma once

#include "Platform/UpdateEngine.h"

#import <Sparkle/Sparkle.h>

namespace vantoro {

/// Empty for nil.
std::string textOf(NSString* text);
/// Empty for what is not UTF-8.
NSString* textFor(const std::string& text);
UpdateError updateErrorOf(NSError* error);

} // namespace vantoro

/// Hands every call of Sparkle's on to the driver. Main thread.
@interface VantoroSparkleDriver : NSObject <SPUUserDriver, SPUUpdaterDelegate>

- (instancetype)initWithDriver:(vantoro::UpdateDriver&)driver;
/// From here on nothing reaches the driver, and no answer of its reaches Sparkle.
- (void)leave;

/// Not owned: the updater owns its driver.
@property(nonatomic, assign) SPUUpdater* updater;
/// Checks that nobody asked for are let through.
@property(nonatomic) BOOL allowsUnbiddenChecks;
/// One was not.
@property(nonatomic, readonly) BOOL refusedCheck;

@end
