// Whether another program can be run at all.
#pragma once

#include "Platform/ProcessStream.h"

#include <chrono>
#include <string>

namespace vantoro {

struct ProgramTrial {
    bool ok = false;
    /// What it printed first of all, or why it cannot be run.
    std::string detail;

    bool operator==(const ProgramTrial&) const = default;
};

/// Runs the program to its end, or ends it at the limit. Needs no event loop.
ProgramTrial canRun(const ProgramCommand& command, std::chrono::milliseconds limit);

} // namespace vantoro
