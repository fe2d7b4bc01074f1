#include "Platform/CurrentPlatform.h"

#include "Platform/Linux/LinuxAppIdentity.h"
#include "Platform/Linux/LinuxMachine.h"
#include "Platform/Linux/LinuxProcessStream.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/LinuxSystemStatistics.h"

#include <cstdlib>

namespace vantoro {

Platform currentPlatform(const std::string& programFolder) {
    const char* const top = std::getenv("VANTORO_TOP");
    return {.processTable = std::make_shared<LinuxProcessTable>(),
            .systemStatistics = std::make_shared<LinuxSystemStatistics>(),
            .processStream = std::make_shared<LinuxProcessStream>(
                programFolder, top != nullptr ? std::optional<std::string>(top) : std::nullopt),
            .machine = std::make_shared<LinuxMachine>()};
}

} // namespace vantoro
