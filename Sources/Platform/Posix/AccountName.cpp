#include "Platform/Posix/AccountName.h"

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

} // namespace vantoro
