#include "Platform/Posix/TopArguments.h"

namespace vantoro {

std::vector<std::string> topArguments(int samples, int intervalSeconds, int rows) {
    return {"-l",     std::to_string(samples),
            "-s",     std::to_string(intervalSeconds),
            "-n",     std::to_string(rows),
            "-o",     "cpu",
            "-stats", "pid,command,cpu,mem,power,user",
            "-ncols", "220"};
}

} // namespace vantoro
