// `vantoro --record`: what this machine measures, written to a file line by line.
#pragma once

#include "Model/CommandLine/CommandLine.h"
#include "Model/Live/SensorHub.h"

namespace vantoro {

/// Samples at the hub's interval until the asked time is over or somebody interrupts. Nothing is concluded: the hub
/// only measures. Needs a QCoreApplication. Gives the program's exit status: 1, with a line on standard error, when the
/// file exists or cannot be written.
int recordThisMachine(const CommandLine& line, SensorHub& hub, std::chrono::milliseconds interval);

} // namespace vantoro
