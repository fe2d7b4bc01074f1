// What this project uses of Foundation, declared so that it compiles where the framework is not.
#pragma once

#import <objc/NSObject.h>

typedef enum NSProcessInfoThermalState : NSInteger {
    NSProcessInfoThermalStateNominal,
    NSProcessInfoThermalStateFair,
    NSProcessInfoThermalStateSerious,
    NSProcessInfoThermalStateCritical
} NSProcessInfoThermalState;

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) NSProcessInfoThermalState thermalState;
@end
