// What reading and writing a recording's file have in common.
#pragma once

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantoro {

/// zlib's largest window, with a gzip header and trailer.
inline constexpr int gzipWindowBits = 15 + 16;

inline bool isGzipName(std::string_view path) {
    return path.ends_with(".gz");
}

/// What the last failed system call complained of.
inline std::string lastSystemReason() {
    return std::system_category().message(errno);
}

/// An open file; closed with its owner.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    bool isOpen() const { return descriptor_ >= 0; }

    /// False, with errno set, when the system reports that something written before was lost.
    bool close() { return !isOpen() || ::close(std::exchange(descriptor_, -1)) == 0; }

    /// 0 at the end; none, with errno set, on failure.
    std::optional<std::size_t> read(char* buffer, std::size_t size) const {
        for (;;) {
            const ssize_t count = ::read(descriptor_, buffer, size);
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                return std::nullopt;
        }
    }

    /// All of it; false, with errno set, on failure.
    bool write(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            if (count >= 0)
                bytes.remove_prefix(static_cast<std::size_t>(count));
            else if (errno != EINTR)
                return false;
        }
        return true;
    }

private:
    int descriptor_;
};

} // namespace vantoro
