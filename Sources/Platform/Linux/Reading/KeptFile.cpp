#include "Platform/Linux/Reading/KeptFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr std::size_t firstBufferBytes = 4096;
constexpr std::size_t mostBytes = std::size_t{16} << 20;

} // namespace

KeptFile::KeptFile(std::string path, FileDelivery delivery) : path_(std::move(path)), delivery_(delivery) {}

std::optional<std::string_view> KeptFile::read() {
    if (!descriptor_) {
        descriptor_ = Descriptor(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!descriptor_)
            return {};
    }
    if (buffer_.empty())
        buffer_.resize(firstBufferBytes);
    std::size_t filled = 0;
    for (;;) {
        const ssize_t got =
            ::pread(descriptor_.number(), buffer_.data() + filled, buffer_.size() - filled, static_cast<off_t>(filled));
        if (got < 0) {
            if (errno == EINTR)
                continue;
            descriptor_.close();
            return {};
        }
        filled += static_cast<std::size_t>(got);
        const bool full = filled == buffer_.size();
        if (got == 0 || (delivery_ == FileDelivery::onePiece && !full) || (full && buffer_.size() >= mostBytes))
            return std::string_view(buffer_.data(), filled);
        if (full) {
            buffer_.resize(buffer_.size() * 2);
            if (delivery_ == FileDelivery::onePiece)
                filled = 0; // the kernel writes the text anew for each read: two halves might not fit together
        }
    }
}

std::optional<std::string> readFileAt(int folder, const char* path, std::size_t limit, FileDelivery delivery) {
    const Descriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
        return {};
    std::string text;
    while (text.size() < limit) {
        char piece[8192];
        const std::size_t asked = std::min(sizeof piece, limit - text.size());
        const auto got = file.read(piece, asked);
        if (!got)
            return {};
        text.append(piece, *got);
        if (*got == 0 || (delivery == FileDelivery::onePiece && *got < asked))
            break;
    }
    return text;
}

} // namespace vantoro
