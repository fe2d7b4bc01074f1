// The machine-wide figures that come with each process list.
#pragma once

#include "Model/Records/Telemetry.h"

namespace vantoro {

/// An idle machine of unknown size until something is read.
struct SystemLine {
    CPULoad cpu;
    MemoryLoad memory;

    bool operator==(const SystemLine&) const = default;
};

} // namespace vantoro
