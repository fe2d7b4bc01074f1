#include "Platform/Posix/Descriptor.h"

#include <cerrno>
#include <unistd.h>

namespace vantoro {

bool Descriptor::close() {
    return number_ < 0 || ::close(release()) == 0;
}

std::optional<std::size_t> Descriptor::read(char* buffer, std::size_t size) const {
    for (;;) {
        const ssize_t count = ::read(number_, buffer, size);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR)
            return std::nullopt;
    }
}

bool Descriptor::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::write(number_, bytes.data(), bytes.size());
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            return false;
    }
    return true;
}

} // namespace vantoro
