#include "Platform/Linux/Updates/Copy/CopyRights.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

namespace fs = std::filesystem;

constexpr mode_t runBits = 0111;

/// A file's mode from that of its model: whoever may read a program may run it, and nobody anything else.
mode_t fileMode(mode_t model, bool isProgram) {
    const mode_t readable = model & 0666;
    return isProgram ? readable | ((readable & 0444) >> 2) : readable;
}

bool takeOver(const std::string& path, const struct stat& model) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        return false;
    const bool isFolder = S_ISDIR(status.st_mode);
    const bool isRoot = ::geteuid() == 0;
    const bool isAnothers = status.st_gid != model.st_gid || (isRoot && status.st_uid != model.st_uid);
    if (isAnothers && ::lchown(path.c_str(), isRoot ? model.st_uid : static_cast<uid_t>(-1), model.st_gid) != 0)
        return false;
    // A folder that hands its group on does so still; the next update has to get into it.
    const mode_t mode =
        isFolder ? (model.st_mode & (S_ISGID | 0777)) | 0700 : fileMode(model.st_mode, (status.st_mode & runBits) != 0);
    return ::chmod(path.c_str(), mode) == 0;
}

} // namespace

std::optional<std::string> takeRightsOver(const std::string& newCopy, const std::string& oldCopy) {
    struct stat top = {};
    if (::lstat(oldCopy.c_str(), &top) != 0)
        return oldCopy;
    std::error_code fault;
    fs::recursive_directory_iterator entry(newCopy, fault);
    for (const fs::recursive_directory_iterator end; !fault && entry != end; entry.increment(fault)) {
        const fs::path inside = entry->path().lexically_relative(newCopy);
        struct stat model = {};
        const bool isKnown = ::lstat((oldCopy / inside).c_str(), &model) == 0 &&
                             S_ISDIR(model.st_mode) == entry->is_directory(fault) && !S_ISLNK(model.st_mode);
        if (!takeOver(entry->path(), isKnown ? model : top))
            return entry->path();
    }
    if (fault) {
        errno = fault.value();
        return newCopy;
    }
    return takeOver(newCopy, top) ? std::nullopt : std::optional(newCopy);
}

} // namespace vantoro
