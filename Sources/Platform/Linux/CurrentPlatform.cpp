#include "Platform/Platform.h"

#include "Platform/Linux/Apps/LinuxAppIdentity.h"
#include "Platform/Linux/Hwmon/FanLimits.h"
#include "Platform/Linux/Power/LinuxEnergyReport.h"
#include "Platform/Linux/Power/LinuxGraphicsClients.h"
#include "Platform/Linux/Power/LinuxStrain.h"
#include "Platform/Linux/Power/NvidiaGPUs.h"
#include "Platform/Linux/Proc/LinuxProcessControl.h"
#include "Platform/Linux/Proc/LinuxProcessTable.h"
#include "Platform/Linux/Proc/LinuxSystemStatistics.h"
#include "Platform/Linux/Processor/LinuxMachine.h"
#include "Platform/Linux/Processor/LinuxProcessors.h"
#include "Platform/Linux/Reading/LinuxOwnCost.h"
#include "Platform/Linux/Sensors/HwmonSMCService.h"
#include "Platform/Linux/Sensors/LinuxThermalState.h"
#include "Platform/Posix/Clocks.h"

#include <cstdlib>
#include <unistd.h>

namespace vantoro {

Platform currentPlatform(const std::string& programFolder) {
    // The process table keeps a descriptor per process.
    raiseDescriptorLimit();
    const char* const top = std::getenv("VANTORO_TOP");
    const DesktopFolders folders = desktopFolders(std::getenv("HOME"), std::getenv("XDG_DATA_HOME"),
                                                  std::getenv("XDG_DATA_DIRS"), std::getenv("PATH"));
    // Another machine's sensors: its library for NVIDIA's graphics processors is not here to be asked.
    const char* const otherRoot = std::getenv("VANTORO_SYSFS_ROOT");
    const std::string root = otherRoot != nullptr && *otherRoot != '\0' ? otherRoot : "";
    const auto lane = std::make_shared<SlowLane>(monotonicSeconds);
    const auto gpus = std::make_shared<NvidiaGPUs>(root, root.empty() ? systemNvml() : nullptr, lane);
    const auto counters = std::make_shared<ThrottleCounters>(root, lane);
    const std::string fanMemory =
        root.empty() ? fanMemoryPath(std::getenv("XDG_STATE_HOME"), std::getenv("HOME")) : std::string();
    return {.smcService = std::make_shared<HwmonSMCService>(root, lane, gpus, fanMemory),
            .energyReport = std::make_shared<LinuxEnergyReport>(root, lane, gpus),
            .processors = std::make_shared<LinuxProcessors>(root, lane),
            .processTable = std::make_shared<LinuxProcessTable>(),
            .systemStatistics = std::make_shared<LinuxSystemStatistics>(),
            .appIdentity = std::make_shared<LinuxAppIdentity>(
                LinuxAppIdentity::Options{.root = "/", .folders = folders, .clock = monotonicSeconds}),
            .processStream = std::make_shared<LinuxProcessStream>(
                programFolder, top != nullptr ? std::optional<std::string>(top) : std::nullopt),
            .processControl = std::make_shared<LinuxProcessControl>(),
            .machine = std::make_shared<LinuxMachine>(root),
            .thermalState = std::make_shared<LinuxThermalState>(root, lane, counters),
            .strain = std::make_shared<LinuxStrain>(root, lane, gpus, counters),
            .graphicsClients = std::make_shared<LinuxGraphicsClients>(root, lane, gpus, ::geteuid()),
            .ownCost = std::make_shared<LinuxOwnCost>(),
            .sources = {.sensors = "hwmon", .reports = "cpufreq"},
            .system = SystemKind::gnuLinux};
}

} // namespace vantoro
