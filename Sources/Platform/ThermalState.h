// The operating system's own judgement of how hard heat presses on the machine.
#pragma once

namespace vantoro {

class ThermalState {
public:
    virtual ~ThermalState() = default;

    /// 0 (nominal) to 3 (critical); any other value counts as nominal.
    virtual int rawValue() = 0;
};

} // namespace vantoro
