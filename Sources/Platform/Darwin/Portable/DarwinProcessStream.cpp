#include "Platform/Darwin/Portable/DarwinProcessStream.h"

#include "Platform/Posix/Processes.h"

namespace vantoro {

DarwinProcessStream::DarwinProcessStream(const std::optional<std::string>& override)
    : top_(override && !override->empty() ? *override : "/usr/bin/top") {}

ProgramCommand DarwinProcessStream::stream(int samples, int intervalSeconds, int rows) const {
    return {.program = top_, .arguments = topArguments(samples, intervalSeconds, rows)};
}

ProgramCommand DarwinProcessStream::pathList() const {
    return {.program = "/bin/ps", .arguments = {"-Ao", "pid=,comm="}};
}

} // namespace vantoro
