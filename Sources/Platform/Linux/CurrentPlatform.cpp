#include "Platform/CurrentPlatform.h"

#include "Platform/Linux/LinuxAppIdentity.h"
#include "Platform/Linux/LinuxMachine.h"
#include "Platform/Linux/LinuxProcessStream.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/LinuxSystemStatistics.h"

#include <chrono>
#include <cstdlib>

namespace vantoro {

namespace {

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

Platform currentPlatform(const std::string& programFolder) {
    // The process table keeps a descriptor per process.
    raiseDescriptorLimit();
    const char* const top = std::getenv("VANTORO_TOP");
    const DesktopFolders folders = desktopFolders(std::getenv("HOME"), std::getenv("XDG_DATA_HOME"),
                                                  std::getenv("XDG_DATA_DIRS"), std::getenv("PATH"));
    return {.processTable = std::make_shared<LinuxProcessTable>(),
            .systemStatistics = std::make_shared<LinuxSystemStatistics>(),
            .appIdentity = std::make_shared<LinuxAppIdentity>(
                LinuxAppIdentity::Options{.root = "/", .folders = folders, .clock = monotonicSeconds}),
            .processStream = std::make_shared<LinuxProcessStream>(
                programFolder, top != nullptr ? std::optional<std::string>(top) : std::nullopt),
            .machine = std::make_shared<LinuxMachine>()};
}

} // namespace vantoro
