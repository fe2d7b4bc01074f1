#include "Platform/Darwin/Sensors/DarwinThermalState.h"

#import <Foundation/Foundation.h>

namespace vantoro {

int DarwinThermalState::rawValue() {
    @autoreleasepool {
        return static_cast<int>([[NSProcessInfo processInfo] thermalState]);
    }
}

} // namespace vantoro
