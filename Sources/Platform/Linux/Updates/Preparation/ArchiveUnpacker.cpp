#include "Platform/Linux/Updates/Preparation/ReleasePreparation.h"

#include "Platform/Linux/Reading/KeptFile.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
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

/// The user's own mask is about what the user makes.
bool makeFolder(int parent, const char* name) {
    if (::mkdirat(parent, name, 0755) != 0)
        return errno == EEXIST;
    return ::fchmodat(parent, name, 0755, 0) == 0;
}

/// Opens the folder that a path's names but the last lead to, making those that are missing; never over a link.
Descriptor folderFor(int top, const std::vector<std::string>& names) {
    Descriptor folder(::openat(top, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (std::size_t i = 0; folder && i + 1 < names.size(); ++i) {
        if (!makeFolder(folder.number(), names[i].c_str()))
            return Descriptor(-1);
        folder =
            Descriptor(::openat(folder.number(), names[i].c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    return folder;
}

UnpackFault systemFault(const std::string& what) {
    return {.text = what, .systemError = errno};
}

UnpackFault archiveFault(std::string text) {
    return {.text = std::move(text), .systemError = 0};
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
    Outcome<UnpackFault> take(archive_entry* entry, const std::function<bool()>& goesOn) {
        const char* const path = archive_entry_pathname(entry);
        if (++entries_ > limits_.entries)
            return archiveFault("the archive has too many entries");
        if (path == nullptr)
            return archiveFault("an entry has no name");
        auto names = namesIn(path);
        if (!names)
            return archiveFault(fmt::format("the path '{}' leaves its folder", path));
        if (!names->empty()) {
            if (!topName_.empty() && topName_ != names->front())
                return archiveFault("not everything lies in one folder");
            topName_ = names->front();
            names->erase(names->begin());
        }
        const auto type = archive_entry_filetype(entry);
        const bool isFolder = type == AE_IFDIR;
        if ((!isFolder && type != AE_IFREG) || archive_entry_hardlink(entry) != nullptr)
            return archiveFault(fmt::format("'{}' is neither a folder nor a plain file", path));
        if (names->empty())
            return isFolder ? Outcome<UnpackFault>() : archiveFault("a file lies beside the folder");
        const Descriptor folder = folderFor(top_, *names);
        if (!folder)
            return systemFault(path);
        if (isFolder)
            return makeFolder(folder.number(), names->back().c_str()) ? Outcome<UnpackFault>() : systemFault(path);
        const bool isProgram = (archive_entry_perm(entry) & 0100) != 0;
        const mode_t mode = isProgram ? 0755 : 0644;
        const Descriptor file(::openat(folder.number(), names->back().c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
        if (!file || ::fchmod(file.number(), mode) != 0)
            return systemFault(path);
        return copyInto(file, path, goesOn);
    }

private:
    Outcome<UnpackFault> copyInto(const Descriptor& file, const char* path, const std::function<bool()>& goesOn) {
        for (;;) {
            const la_ssize_t size = archive_read_data(reader_, block_.data(), block_.size());
            if (size == 0)
                return {};
            if (size < 0)
                return archiveFault(fmt::format("'{}' is damaged: {}", path, libraryFault(reader_)));
            bytes_ += static_cast<std::uint64_t>(size);
            if (bytes_ > limits_.bytes)
                return archiveFault("the archive holds too much");
            if (!file.write({block_.data(), static_cast<std::size_t>(size)}))
                return systemFault(path);
            if (!goesOn())
                return archiveFault("stopped");
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

Outcome<UnpackFault> unpackArchive(int file, const std::string& folder,
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
        return archiveFault(fmt::format("not an archive: {}", libraryFault(reader.get())));

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
            return archiveFault(fmt::format("the archive is damaged: {}", libraryFault(reader.get())));
        if (auto taken = unpacking.take(entry, goesOn); taken.failed())
            return taken;
    }
    return {};
}

} // namespace vantoro
