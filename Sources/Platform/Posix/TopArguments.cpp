#include "Platform/Posix/TopArguments.h"

namespace vantoro {

std::vector<std::string> topArguments(int samples, int intervalSeconds, int rows, const std::string& more) {
    return {"-l",     std::to_string(samples),
            "-s",     std::to_string(intervalSeconds),
            "-n",     std::to_string(rows),
            "-o",     "cpu",
            "-stats", "pid,command,cpu,mem,power,user" + more,
            "-ncols", "220"};
}

} // namespace vantoro
