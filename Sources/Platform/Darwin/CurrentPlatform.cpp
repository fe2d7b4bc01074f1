#include "Platform/Platform.h"

#include "Platform/Darwin/DarwinProcessInfo.h"
#include "Platform/Darwin/DarwinSystemLooks.h"
#include "Platform/Darwin/Portable/DarwinProcessStream.h"
#include "Platform/Darwin/Processes/DarwinMachine.h"
#include "Platform/Darwin/Processes/DarwinProcessControl.h"
#include "Platform/Darwin/Processes/DarwinProcesses.h"
#include "Platform/Darwin/Sensors/DarwinGraphicsClients.h"
#include "Platform/Darwin/Sensors/DarwinReports.h"
#include "Platform/Darwin/Sensors/DarwinSMCService.h"
#include "Platform/Posix/Clocks.h"

#include <cstdlib>

namespace vantoro {

// The system's own programs lie where they always lie, and bundle paths tell which application a process belongs to.
Platform currentPlatform(const std::string& /*programFolder*/) {
    const char* const top = std::getenv("VANTORO_TOP");
    Platform platform;
    platform.smcService = std::make_shared<DarwinSMCService>();
    platform.stateReport = std::make_shared<DarwinStateReport>();
    platform.energyReport = std::make_shared<DarwinEnergyReport>();
    platform.frequencyTables = std::make_shared<DarwinFrequencyTables>();
    platform.processors = std::make_shared<DarwinProcessors>();
    platform.processTable = std::make_shared<DarwinProcessTable>();
    platform.systemStatistics = std::make_shared<DarwinSystemStatistics>();
    platform.processStream =
        std::make_shared<DarwinProcessStream>(top != nullptr ? std::optional<std::string>(top) : std::nullopt);
    platform.processControl = std::make_shared<DarwinProcessControl>();
    platform.machine = std::make_shared<DarwinMachine>();
    platform.thermalState = std::make_shared<DarwinThermalState>();
    platform.graphicsClients = std::make_shared<DarwinGraphicsClients>(monotonicSeconds);
    platform.systemLooks = std::make_shared<DarwinSystemLooks>();
    platform.activity = std::make_shared<DarwinActivity>();
    platform.ownCost = std::make_shared<DarwinOwnCost>();
    platform.sources = {.sensors = "SMC", .reports = "IOReport", .costsAreStated = true};
    platform.hasWideMenuBar = true;
    platform.hasMenuBarMenus = true;
    platform.showAbout = showAboutPanel;
    return platform;
}

} // namespace vantoro
