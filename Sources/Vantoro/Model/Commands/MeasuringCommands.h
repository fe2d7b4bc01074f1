// The commands that measure this machine for a while or read what another has measured.
#pragma once

#include "Model/CommandLine/CommandLine.h"
#include "Model/Live/SensorHub.h"

#include <string>

namespace vantoro {

/// Samples this machine with the hub for the asked time (20 seconds unless told), or until interrupted, then prints on
/// standard output what the model concludes; a terminal on standard error is told how far it is. Where no list of
/// processes has come by then it waits for up to five seconds more; still without one it concludes nothing, says so on
/// standard error, and gives exit status 1. Needs a QCoreApplication. Gives the program's exit status.
int explainThisMachine(const CommandLine& line, SensorHub& hub);

/// The same from a recording, at once. A recording that cannot be used gets one line on standard error, nothing on
/// standard output, and exit status 2.
int explainRecording(const CommandLine& line, const Format& format);

/// Samples at the hub's interval until the asked time is over or somebody interrupts. Nothing is concluded: the hub
/// only measures. Needs a QCoreApplication. Gives the program's exit status: 1, with a line on standard error, when the
/// file exists or cannot be written.
int recordThisMachine(const CommandLine& line, SensorHub& hub, std::chrono::milliseconds interval);

} // namespace vantoro
