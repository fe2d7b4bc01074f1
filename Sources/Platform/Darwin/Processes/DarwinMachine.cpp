#include "Platform/Darwin/Processes/DarwinMachine.h"

#include "Platform/Darwin/Kernel/Sysctl.h"

namespace vantoro {

std::optional<std::string> DarwinMachine::modelIdentifier() const {
    return sysctlText("hw.model");
}

std::optional<std::string> DarwinMachine::processorBrand() const {
    return sysctlText("machdep.cpu.brand_string");
}

} // namespace vantoro
