#include "Platform/Linux/Updates/ArchiveUnpacker.h"

#include "Platform/Linux/KeptFile.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vantoro {

namespace {

constexpr std::size_t blockBytes = 64 * 1024;

struct ArchiveCloser {
    void operator()(archive* reader) const { archive_read_free(reader); }
};
using Archive = std::unique_ptr<archive, ArchiveCloser>;

/// The path's names; nothing where it climbs, is absolute or too odd for a release.
std::optional<std::vector<std::string>> namesIn(std::string_view path) {
    constexpr std::size_t longestPath = 1000;
    std::vector<std::string> names;
    if (path.empty() || path.front() == '/' || path.size() > longestPath)
        return std::nullopt;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        if (name == ".." || name.find('\0') != std::string_view::npos)
            return std::nullopt;
        if (!name.empty() && name != ".")
            names.emplace_back(name);
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return names;
}

/// Opens the folder that a path's names but the last lead to, making those that are missing; never over a link.
Descriptor folderFor(int top, const std::vector<std::string>& names) {
    Descriptor folder(::openat(top, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (std::size_t i = 0; folder && i + 1 < names.size(); ++i) {
        if (::mkdirat(folder.number(), names[i].c_str(), 0755) != 0 && errno != EEXIST)
            return Descriptor(-1);
        folder =
            Descriptor(::openat(folder.number(), names[i].c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    return folder;
}

bool writeAll(int file, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(file, bytes, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

std::string systemFault(const std::string& what) {
    return fmt::format("{}: {}", what, std::strerror(errno));
}

/// The library does not always say what is wrong.
std::string libraryFault(archive* reader) {
    const char* const text = archive_error_string(reader);
    return text != nullptr ? text : "unreadable";
}

/// One run through an archive.
class Unpacking {
public:
    Unpacking(archive* reader, int top, const UnpackLimits& limits) : reader_(reader), top_(top), limits_(limits) {}

    /// What is wrong with it, or nothing once it lies in its place.
    std::optional<std::string> take(archive_entry* entry, const std::function<bool()>& goesOn) {
        const char* const path = archive_entry_pathname(entry);
        if (++entries_ > limits_.entries)
            return "the archive has too many entries";
        if (path == nullptr)
            return "an entry has no name";
        auto names = namesIn(path);
        if (!names)
            return fmt::format("the path '{}' leaves its folder", path);
        if (!names->empty()) {
            if (!topName_.empty() && topName_ != names->front())
                return "not everything lies in one folder";
            topName_ = names->front();
            names->erase(names->begin());
        }
        const auto type = archive_entry_filetype(entry);
        const bool isFolder = type == AE_IFDIR;
        if ((!isFolder && type != AE_IFREG) || archive_entry_hardlink(entry) != nullptr)
            return fmt::format("'{}' is neither a folder nor a plain file", path);
        if (names->empty())
            return isFolder ? std::nullopt : std::optional<std::string>("a file lies beside the folder");
        const Descriptor folder = folderFor(top_, *names);
        if (!folder)
            return systemFault(path);
        if (isFolder)
            return ::mkdirat(folder.number(), names->back().c_str(), 0755) == 0 || errno == EEXIST
                       ? std::nullopt
                       : std::optional(systemFault(path));
        const bool isProgram = (archive_entry_perm(entry) & 0100) != 0;
        const Descriptor file(::openat(folder.number(), names->back().c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, isProgram ? 0755 : 0644));
        if (!file)
            return systemFault(path);
        return copyInto(file.number(), path, goesOn);
    }

private:
    std::optional<std::string> copyInto(int file, const char* path, const std::function<bool()>& goesOn) {
        for (;;) {
            const la_ssize_t size = archive_read_data(reader_, block_.data(), block_.size());
            if (size == 0)
                return std::nullopt;
            if (size < 0)
                return fmt::format("'{}' is damaged: {}", path, libraryFault(reader_));
            bytes_ += static_cast<std::uint64_t>(size);
            if (bytes_ > limits_.bytes)
                return "the archive holds too much";
            if (!writeAll(file, block_.data(), static_cast<std::size_t>(size)))
                return systemFault(path);
            if (!goesOn())
                return "stopped";
        }
    }

    archive* reader_;
    int top_;
    UnpackLimits limits_;
    std::vector<char> block_ = std::vector<char>(blockBytes);
    std::string topName_;
    std::uint64_t bytes_ = 0;
    int entries_ = 0;
};

} // namespace

std::optional<std::string> unpackArchive(int file, const std::string& folder,
                                         const std::function<bool(double share)>& progress, UnpackLimits limits) {
    const Descriptor top(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!top || ::fstat(file, &status) != 0 || ::lseek(file, 0, SEEK_SET) != 0)
        return systemFault(folder);
    const Archive reader(archive_read_new());
    archive_read_support_format_tar(reader.get());
    archive_read_support_filter_gzip(reader.get());
    archive_read_support_filter_xz(reader.get());
    archive_read_support_filter_zstd(reader.get());
    if (archive_read_open_fd(reader.get(), file, blockBytes) != ARCHIVE_OK)
        return fmt::format("not an archive: {}", libraryFault(reader.get()));

    const auto total = static_cast<double>(std::max<off_t>(status.st_size, 1));
    const auto goesOn = [&] {
        return !progress || progress(static_cast<double>(archive_filter_bytes(reader.get(), -1)) / total);
    };
    Unpacking unpacking(reader.get(), top.number(), limits);
    for (;;) {
        archive_entry* entry = nullptr;
        const int result = archive_read_next_header(reader.get(), &entry);
        if (result == ARCHIVE_EOF)
            break;
        if (result != ARCHIVE_OK)
            return fmt::format("the archive is damaged: {}", libraryFault(reader.get()));
        if (auto fault = unpacking.take(entry, goesOn))
            return fault;
    }
    // What takes the place of a working copy has to be on the disk before it does.
    if (::syncfs(top.number()) != 0)
        return systemFault(folder);
    return std::nullopt;
}

} // namespace vantoro
