#include "Platform/Posix/Processes.h"

#include <cerrno>
#include <pwd.h>
#include <vector>

namespace vantoro {

std::optional<std::string> accountName(std::uint32_t uid) {
    passwd record{};
    passwd* found = nullptr;
    std::vector<char> texts(1024);
    int error = 0;
    while ((error = ::getpwuid_r(uid, &record, texts.data(), texts.size(), &found)) == ERANGE && texts.size() < 1 << 20)
        texts.resize(texts.size() * 4);
    if (error != 0 || found == nullptr || found->pw_name == nullptr)
        return {};
    return std::string(found->pw_name);
}

std::vector<std::string> topArguments(int samples, int intervalSeconds, int rows, const std::string& more) {
    return {"-l",     std::to_string(samples),
            "-s",     std::to_string(intervalSeconds),
            "-n",     std::to_string(rows),
            "-o",     "cpu",
            "-stats", "pid,command,cpu,mem,power,user" + more,
            "-ncols", "220"};
}

} // namespace vantoro
