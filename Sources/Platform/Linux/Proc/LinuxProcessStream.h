// The process stream, from this project's own small program.
#pragma once

#include "Platform/ProcessStream.h"

#include <optional>
#include <string>

namespace vantoro {

class LinuxProcessStream : public ProcessStream {
public:
    /// `programFolder` is the folder of the running program, beside which vantoro-top lies; `override`, the value of
    /// the environment variable VANTORO_TOP, names another program instead (an empty one does not).
    LinuxProcessStream(const std::string& programFolder, const std::optional<std::string>& override);

    ProgramCommand stream(int samples, int intervalSeconds, int rows) const override;
    ProgramCommand pathList() const override;
    std::string streamName() const override { return name_; }
    std::string pathListName() const override { return name_ + " --paths"; }

private:
    std::string program_;
    /// Without the folder, where it is this project's own.
    std::string name_;
};

} // namespace vantoro
