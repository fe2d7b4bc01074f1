#include "Platform/Linux/Proc/LinuxProcessStream.h"

#include "Platform/Posix/Processes.h"

namespace vantoro {

LinuxProcessStream::LinuxProcessStream(const std::string& programFolder, const std::optional<std::string>& override)
    : program_(programFolder + "/vantoro-top"), name_("vantoro-top") {
    if (override && !override->empty())
        program_ = name_ = *override;
}

ProgramCommand LinuxProcessStream::stream(int samples, int intervalSeconds, int rows) const {
    return {.program = program_, .arguments = topArguments(samples, intervalSeconds, rows)};
}

ProgramCommand LinuxProcessStream::pathList() const {
    return {.program = program_, .arguments = {"--paths"}};
}

} // namespace vantoro
