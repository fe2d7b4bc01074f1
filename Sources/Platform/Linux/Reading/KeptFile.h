// Files of the kernel's that are read again and again.
#pragma once

#include "Platform/Posix/Descriptor.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// How the kernel hands a file out. In one piece: a read with room enough gives all of it, which saves the read that
/// would only find the end. In pieces: a read gives at most a page of it.
enum class FileDelivery { onePiece, pieces };

/// A file kept open and read afresh from its start each time, with one system call where the kernel allows it.
class KeptFile {
public:
    explicit KeptFile(std::string path, FileDelivery delivery = FileDelivery::onePiece);

    /// Its contents, up to 16 MiB of them, valid until the next read; none when it cannot be read. A file that fails is
    /// opened anew the next time.
    std::optional<std::string_view> read();

private:
    std::string path_;
    FileDelivery delivery_;
    Descriptor descriptor_;
    std::vector<char> buffer_;
};

/// The whole of a file that is read only now and then, cut at `limit` bytes. Relative to `folder`, a descriptor or
/// AT_FDCWD. None when it cannot be read.
std::optional<std::string> readFileAt(int folder, const char* path, std::size_t limit,
                                      FileDelivery delivery = FileDelivery::pieces);

} // namespace vantoro
