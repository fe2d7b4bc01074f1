// What Mac this is, from sysctl.
#pragma once

#include "Platform/Machine.h"

namespace vantoro {

class DarwinMachine : public Machine {
public:
    /// "hw.model".
    std::optional<std::string> modelIdentifier() const override;
    /// "machdep.cpu.brand_string".
    std::optional<std::string> processorBrand() const override;
};

} // namespace vantoro
