#include "Platform/Linux/Updates/Copy/UpdateFolder.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

namespace fs = std::filesystem;

constexpr const char* markerName = "vantoro-update.json";
constexpr const char* newMarkerName = "vantoro-update.json.new";
constexpr std::string_view format = "vantoro-update-1";
constexpr std::size_t mostMarkerBytes = 64 * 1024;

std::string jsonOf(const UpdateRecord& record) {
    return nlohmann::json{{"format", format}, {"copy", record.copy},       {"from", record.from},
                          {"to", record.to},  {"version", record.version}, {"starts", record.starts}}
        .dump();
}

std::string knownName(const std::string& copyName) {
    return fmt::format(".{}.previous", copyName);
}

std::string draftPrefix(const std::string& copyName) {
    return fmt::format(".{}.update-", copyName);
}

/// Opens and locks the folder; none where it is somebody else's or locked.
Descriptor lockedFolder(const std::string& path) {
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat opened = {};
    struct stat named = {};
    if (!folder || ::fstat(folder.number(), &opened) != 0 || opened.st_uid != ::geteuid() ||
        ::flock(folder.number(), LOCK_EX | LOCK_NB) != 0)
        return {};
    // It can have been moved or removed between the two.
    if (::lstat(path.c_str(), &named) != 0 || named.st_ino != opened.st_ino || named.st_dev != opened.st_dev)
        return {};
    return folder;
}

} // namespace

std::optional<UpdateRecord> parseUpdateRecord(const std::string& json) {
    const auto object = nlohmann::json::parse(json, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    const auto text = [&object](const char* key) -> std::optional<std::string> {
        const auto found = object.find(key);
        return found != object.end() && found->is_string() ? std::optional(found->get<std::string>()) : std::nullopt;
    };
    const auto copy = text("copy");
    const auto from = text("from");
    const auto to = text("to");
    const auto version = text("version");
    const auto starts = object.find("starts");
    if (text("format") != format || !copy || !from || !to || !version || starts == object.end() ||
        !starts->is_number_unsigned() || starts->get<std::uint64_t>() > 1000)
        return std::nullopt;
    return UpdateRecord{.copy = *copy, .from = *from, .to = *to, .version = *version, .starts = starts->get<int>()};
}

UpdateFolder UpdateFolder::make(const std::string& parent, const std::string& copyName) {
    UpdateFolder folder;
    folder.path_ = fmt::format("{}/{}XXXXXX", parent, draftPrefix(copyName));
    if (::mkdtemp(folder.path_.data()) == nullptr)
        return {};
    folder.folder_ = lockedFolder(folder.path_);
    // Marked only now: nobody removes what bears no marker.
    if (folder.folder_ && folder.setRecord({.copy = copyName, .from = {}, .to = {}, .version = {}}))
        return folder;
    const int fault = errno;
    folder.remove();
    ::rmdir(folder.path_.c_str());
    errno = fault;
    return {};
}

UpdateFolder UpdateFolder::open(const std::string& path, const std::string& copyName) {
    UpdateFolder folder;
    folder.path_ = path;
    folder.folder_ = lockedFolder(path);
    if (!folder.folder_)
        return {};
    const auto text = readFileAt(folder.folder_.number(), markerName, mostMarkerBytes);
    const auto record = text ? parseUpdateRecord(*text) : std::nullopt;
    if (!record || record->copy != copyName)
        return {};
    folder.record_ = *record;
    return folder;
}

std::vector<std::string> UpdateFolder::namedLikeOne(const std::string& parent, const std::string& copyName) {
    constexpr std::size_t randomCharacters = 6;
    const std::string prefix = draftPrefix(copyName);
    const std::string known = knownName(copyName);
    std::vector<std::string> paths;
    std::error_code fault;
    for (fs::directory_iterator entry(parent, fault), end; !fault && entry != end; entry.increment(fault)) {
        const std::string name = entry->path().filename();
        const bool isDraft =
            name.size() == prefix.size() + randomCharacters && name.starts_with(prefix) &&
            std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                        [](char character) { return std::isalnum(static_cast<unsigned char>(character)) != 0; });
        if (isDraft || name == known)
            paths.push_back(entry->path());
    }
    return paths;
}

bool UpdateFolder::isMarked(const std::string& path) {
    return ::access((path + "/" + markerName).c_str(), F_OK) == 0;
}

bool UpdateFolder::setRecord(const UpdateRecord& record) {
    const Descriptor file(::openat(lock(), newMarkerName, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
    const std::string text = jsonOf(record);
    if (!file || !file.write(text) || ::fsync(file.number()) != 0 ||
        ::renameat(lock(), newMarkerName, lock(), markerName) != 0 || ::fsync(lock()) != 0) {
        ::unlinkat(lock(), newMarkerName, 0);
        return false;
    }
    record_ = record;
    return true;
}

bool UpdateFolder::lockCopy() {
    copy_ = Descriptor(::open(copy().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return copy_ && ::flock(copy_.number(), LOCK_EX | LOCK_NB) == 0;
}

void UpdateFolder::takeKnownName(const std::string& parent) {
    const std::string known = parent + "/" + knownName(record_.copy);
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, known.c_str(), RENAME_NOREPLACE) == 0)
        path_ = known;
}

void UpdateFolder::remove() {
    if (!folder_)
        return;
    std::error_code fault;
    fs::remove_all(copy(), fault);
    // The marker goes last: what could not be removed is tried again the next time.
    if (!fault) {
        ::unlinkat(lock(), newMarkerName, 0);
        ::unlinkat(lock(), markerName, 0);
        ::rmdir(path_.c_str());
    }
    folder_ = {};
}

} // namespace vantoro
