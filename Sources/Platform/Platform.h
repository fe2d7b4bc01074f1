// Everything the operating system is asked for, gathered: the program's composition root fills one for the system it
// runs on and hands it down; a test fills one with fakes.
#pragma once

#include "Model/Records/SystemWords.h"
#include "Platform/Activity.h"
#include "Platform/AppIdentity.h"
#include "Platform/EnergyReport.h"
#include "Platform/FrequencyTables.h"
#include "Platform/GraphicsClients.h"
#include "Platform/Machine.h"
#include "Platform/OwnCost.h"
#include "Platform/ProcessControl.h"
#include "Platform/Processors.h"
#include "Platform/ProcessStream.h"
#include "Platform/ProcessTable.h"
#include "Platform/SMCService.h"
#include "Platform/StateReport.h"
#include "Platform/Strain.h"
#include "Platform/SystemLooks.h"
#include "Platform/SystemStatistics.h"
#include "Platform/ThermalState.h"

#include <functional>
#include <memory>
#include <string>

namespace vantoro {

struct DataSourceNames {
    /// Where fans, temperatures and power come from.
    std::string sensors;
    /// Where loads, frequencies and energy come from.
    std::string reports;
    /// What the choices of the settings cost is known for this system's machines beforehand.
    bool costsAreStated = false;

    bool operator==(const DataSourceNames&) const = default;
};

/// A member that is null is a thing this platform cannot tell; its readers then report nothing.
struct Platform {
    std::shared_ptr<SMCService> smcService;
    std::shared_ptr<StateReport> stateReport;
    std::shared_ptr<EnergyReport> energyReport;
    std::shared_ptr<FrequencyTables> frequencyTables;
    std::shared_ptr<Processors> processors;
    std::shared_ptr<ProcessTable> processTable;
    std::shared_ptr<SystemStatistics> systemStatistics;
    std::shared_ptr<AppIdentity> appIdentity;
    std::shared_ptr<ProcessStream> processStream;
    std::shared_ptr<ProcessControl> processControl;
    std::shared_ptr<Machine> machine;
    std::shared_ptr<ThermalState> thermalState;
    std::shared_ptr<Strain> strain;
    std::shared_ptr<GraphicsClients> graphicsClients;
    std::shared_ptr<SystemLooks> systemLooks;
    /// Null where the system leaves the timers of hidden programs alone.
    std::shared_ptr<Activity> activity;
    std::shared_ptr<OwnCost> ownCost;
    DataSourceNames sources;
    SystemKind system = SystemKind::macos;
    /// The menu bar shows pictures of any width; elsewhere an item is squeezed into a square.
    bool hasWideMenuBar = false;
    /// Every program has menus at the top of the screen, and can be brought to the front while it has no window.
    bool hasMenuBarMenus = false;
    /// Shows the system's own account of which program this is; none where the system has none.
    std::function<void()> showAbout;
};

/// Everything this operating system can tell. `programFolder` is where the running program lies: the programs it starts
/// lie beside it.
Platform currentPlatform(const std::string& programFolder);

} // namespace vantoro
