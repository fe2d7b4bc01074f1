#include "Platform/Darwin/DarwinMachine.h"

#include "Platform/Darwin/Sysctl.h"

namespace vantoro {

std::optional<std::string> DarwinMachine::modelIdentifier() const {
    return sysctlText("hw.model");
}

std::optional<std::string> DarwinMachine::processorBrand() const {
    return sysctlText("machdep.cpu.brand_string");
}

} // namespace vantoro
