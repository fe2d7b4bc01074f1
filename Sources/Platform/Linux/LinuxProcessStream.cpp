#include "Platform/Linux/LinuxProcessStream.h"

namespace vantoro {

LinuxProcessStream::LinuxProcessStream(const std::string& programFolder, const std::optional<std::string>& override)
    : program_(programFolder + "/vantoro-top"), name_("vantoro-top") {
    if (override && !override->empty())
        program_ = name_ = *override;
}

ProgramCommand LinuxProcessStream::stream(int samples, int intervalSeconds, int rows) const {
    return {.program = program_,
            .arguments = {"-l", std::to_string(samples), "-s", std::to_string(intervalSeconds), "-n",
                          std::to_string(rows), "-o", "cpu", "-stats", "pid,command,cpu,mem,power,user", "-ncols",
                          "220"}};
}

ProgramCommand LinuxProcessStream::pathList() const {
    return {.program = program_, .arguments = {"--paths"}};
}

} // namespace vantoro
