// The process stream and the path list, from the system's own programs.
#pragma once

#include "Platform/Posix/Processes.h"
#include "Platform/ProcessStream.h"

#include <optional>
#include <string>

namespace vantoro {

class DarwinProcessStream : public ProcessStream {
public:
    /// `override`, the value of the environment variable VANTORO_TOP, names a program to run in place of /usr/bin/top
    /// (an empty one does not).
    explicit DarwinProcessStream(const std::optional<std::string>& override)
        : top_(override && !override->empty() ? *override : "/usr/bin/top") {}

    ProgramCommand stream(int samples, int intervalSeconds, int rows) const override {
        return {.program = top_, .arguments = topArguments(samples, intervalSeconds, rows)};
    }
    /// /bin/ps, whose "comm" is the executable's full path on this system.
    ProgramCommand pathList() const override { return {.program = "/bin/ps", .arguments = {"-Ao", "pid=,comm="}}; }

private:
    std::string top_;
};

} // namespace vantoro
