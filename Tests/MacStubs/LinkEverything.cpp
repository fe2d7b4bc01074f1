// Stands in for the program: one call into every target. The objects themselves are all linked, called or not.
#include "CSensors/cpufreq.h"
#include "CSensors/ioreport.h"
#include "CSensors/smc.h"
#include "Model/Readers/SMCReader.h"
#include "Model/Recording/RecordingFile.h"
#include "Model/Records/Telemetry.h"
#include "Platform/Platform.h"
#include "Platform/System.h"
#include "Platform/UpdateEngine.h"

int main() {
    const vantoro::Platform platform = vantoro::currentPlatform("/");
    vantoro::smc_use(platform.smcService);
    vantoro::cpufreq_use(platform.frequencyTables, platform.stateReport);
    vantoro::ior_use(platform.energyReport);
    const vantoro::SMCReader sensors({});
    const vantoro::RecordingReader recording("/dev/null");
    const std::shared_ptr<vantoro::UpdateEngine> engine = vantoro::currentUpdateEngine({});
    vantoro::writeSystemLog("updates", engine->currentVersion());
    vantoro::systemSettingsStore()->sync();
    const bool isHot = vantoro::Snapshot::heatLoad(platform.thermalState->rawValue()) > 0;
    return isHot || recording.error() ? 1 : 0;
}
