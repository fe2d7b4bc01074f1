// The process stream and the path list, from the system's own programs.
#pragma once

#include "Platform/ProcessStream.h"

#include <optional>
#include <string>

namespace vantoro {

class DarwinProcessStream : public ProcessStream {
public:
    /// `override`, the value of the environment variable VANTORO_TOP, names a program to run in place of /usr/bin/top
    /// (an empty one does not).
    explicit DarwinProcessStream(const std::optional<std::string>& override);

    ProgramCommand stream(int samples, int intervalSeconds, int rows) const override;
    /// /bin/ps, whose "comm" is the executable's full path on this system.
    ProgramCommand pathList() const override;

private:
    std::string top_;
};

} // namespace vantoro
