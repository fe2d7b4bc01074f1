// Which sources of data work on this machine, as text: one line for each, with what it found.
#pragma once

#include "Model/Live/ProcessMonitor.h"
#include "Model/Readers/SensorDump.h"
#include "Model/Readers/SMCReader.h"
#include "Platform/Platform.h"
#include "Platform/ProcessStream.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace vantoro {

struct ProgramTrial {
    bool ok = false;
    /// What it printed first of all, or why it cannot be run.
    std::string detail;

    bool operator==(const ProgramTrial&) const = default;
};

/// Runs the program to its end, or ends it at the limit. Needs no event loop.
ProgramTrial canRun(const ProgramCommand& command, std::chrono::milliseconds limit,
                    std::string_view thisMachine = "this Mac");

/// Exercises every source once. Lives on the main thread, which must have a Qt application; the devices' functions must
/// have been told to use the same platform.
class CapabilityCheck {
public:
    struct Options {
        PrintLine print;
        /// How to build the reader; its pause serves every wait of the check.
        SMCReader::Options reader;
        /// Seconds of a clock that never steps.
        std::function<double()> now;
        /// Which process source to try, as the user set it.
        ProcessMonitor::ModeReader mode;
        ProcessMonitor::Timing timing;
        /// How long the process monitor may run. The report says 6 seconds whatever a test sets.
        std::chrono::milliseconds monitorTime{6'000};
        std::chrono::milliseconds programLimit{10'000};
    };

    CapabilityCheck(Platform platform, Options options);

    /// Prints the whole report. A source that fails costs its own line and nothing else.
    void run();

    /// One line of the report: its mark, its label in 38 bytes (or more, where it is longer) and what was found.
    static std::string line(std::string_view label, bool ok, std::string_view detail);
    /// What the report says of a process source; `streamName` is what the stream's program is known by.
    static std::string sourceDetail(ProcessMonitor::Source source, std::string_view streamName);

private:
    void print(std::string_view label, bool ok, std::string_view detail) { options_.print(line(label, ok, detail)); }
    void checkSMC();
    void checkGPU();
    void checkCores();
    void checkPrivilegedProcessSources();
    void checkUnprivilegedProcesses();
    void checkMonitor();

    Platform platform_;
    Options options_;
};

} // namespace vantoro
