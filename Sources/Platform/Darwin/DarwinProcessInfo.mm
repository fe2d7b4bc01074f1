#include "Platform/Darwin/DarwinProcessInfo.h"

#import <Foundation/Foundation.h>

namespace vantoro {

namespace {

class HeldActivity : public Activity::Held {
public:
    explicit HeldActivity(id<NSObject> token) : token_([token retain]) {}
    ~HeldActivity() override {
        @autoreleasepool {
            [[NSProcessInfo processInfo] endActivity:token_];
            [token_ release];
        }
    }
    HeldActivity(const HeldActivity&) = delete;
    HeldActivity& operator=(const HeldActivity&) = delete;

private:
    id<NSObject> token_;
};

} // namespace

int DarwinThermalState::rawValue() {
    @autoreleasepool {
        return static_cast<int>([[NSProcessInfo processInfo] thermalState]);
    }
}

std::unique_ptr<Activity::Held> DarwinActivity::begin(const char* reason) {
    @autoreleasepool {
        return std::make_unique<HeldActivity>([[NSProcessInfo processInfo]
            beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                              reason:[NSString stringWithUTF8String:reason]]);
    }
}

} // namespace vantoro
