// The Mac's thermal state.
#pragma once

#include "Platform/ThermalState.h"

namespace vantoro {

class DarwinThermalState : public ThermalState {
public:
    /// -[NSProcessInfo thermalState].
    int rawValue() override;
};

} // namespace vantoro
