// What the Mac tells a program of itself, and is told by it (NSProcessInfo): its thermal state, and work that goes on
// unseen.
#pragma once

#include "Platform/Activity.h"
#include "Platform/ThermalState.h"

namespace vantoro {

class DarwinThermalState : public ThermalState {
public:
    /// -[NSProcessInfo thermalState].
    int rawValue() override;
};

class DarwinActivity : public Activity {
public:
    /// -[NSProcessInfo beginActivityWithOptions:reason:], begun by the user, with idle system sleep allowed.
    std::unique_ptr<Held> begin(const char* reason) override;
};

} // namespace vantoro
