// What this project uses of Foundation, declared so that it compiles where the framework is not.
#pragma once

#import <objc/NSObject.h>

@class NSString;

typedef enum NSComparisonResult : NSInteger {
    NSOrderedAscending = -1,
    NSOrderedSame,
    NSOrderedDescending
} NSComparisonResult;

typedef enum NSProcessInfoThermalState : NSInteger {
    NSProcessInfoThermalStateNominal,
    NSProcessInfoThermalStateFair,
    NSProcessInfoThermalStateSerious,
    NSProcessInfoThermalStateCritical
} NSProcessInfoThermalState;

typedef enum NSActivityOptions : uint64_t {
    NSActivityIdleSystemSleepDisabled = 1ULL << 20,
    NSActivityUserInitiated = 0x00FFFFFFULL | NSActivityIdleSystemSleepDisabled,
    NSActivityUserInitiatedAllowingIdleSystemSleep = NSActivityUserInitiated & ~NSActivityIdleSystemSleepDisabled
} NSActivityOptions;

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) NSProcessInfoThermalState thermalState;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
- (void)endActivity:(id<NSObject>)activity;
@end

typedef double NSTimeInterval;
typedef NSString* NSErrorDomain;
typedef NSString* NSErrorUserInfoKey;
typedef NSUInteger NSStringEncoding;

enum : NSStringEncoding { NSUTF8StringEncoding = 4, NSISOLatin1StringEncoding = 5 };
enum : NSInteger { NSUserCancelledError = 3072 };

extern NSErrorDomain const NSCocoaErrorDomain;
extern NSErrorDomain const NSURLErrorDomain;

@interface NSData : NSObject
@end

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)text;
- (instancetype)initWithData:(NSData*)data encoding:(NSStringEncoding)encoding;
- (BOOL)isEqualToString:(NSString*)other;
@property(readonly) const char* UTF8String;
@end

@interface NSNumber : NSObject
@property(readonly) int intValue;
@end

@interface NSDate : NSObject
@property(readonly) NSTimeInterval timeIntervalSince1970;
@end

@interface NSArray<__covariant Element> : NSObject
+ (instancetype)array;
+ (instancetype)arrayWithObjects:(Element)first, ...;
@end

@interface NSDictionary<__covariant Key, __covariant Value> : NSObject
- (Value)objectForKey:(Key)key;
@end

@interface NSError : NSObject
+ (instancetype)errorWithDomain:(NSErrorDomain)domain
                           code:(NSInteger)code
                       userInfo:(NSDictionary<NSErrorUserInfoKey, id>*)userInfo;
@property(readonly, copy) NSErrorDomain domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSDictionary<NSErrorUserInfoKey, id>* userInfo;
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundleIdentifier;
- (id)objectForInfoDictionaryKey:(NSString*)key;
@end

@interface NSNotification : NSObject
@end

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end

@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
- (id<NSObject>)addObserverForName:(NSString*)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification*))block;
- (void)removeObserver:(id)observer;
@end
