// The back-end of the operating system that this program was built for; one file per system implements it.
#pragma once

#include "Platform/Platform.h"

#include <string>

namespace vantoro {

/// Everything this operating system can tell. `programFolder` is where the running program lies: the programs it starts
/// lie beside it.
Platform currentPlatform(const std::string& programFolder);

} // namespace vantoro
