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

@interface NSString : NSObject
- (BOOL)isEqualToString:(NSString*)other;
@end

@interface NSArray : NSObject
+ (instancetype)arrayWithObjects:(id)first, ...;
@end

@interface NSNotification : NSObject
@end

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end

@interface NSNotificationCenter : NSObject
- (id<NSObject>)addObserverForName:(NSString*)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification*))block;
- (void)removeObserver:(id)observer;
@end
