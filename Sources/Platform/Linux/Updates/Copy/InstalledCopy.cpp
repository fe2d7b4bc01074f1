#include "Platform/Linux/Updates/Copy/InstalledCopy.h"

#include "Model/Text/Release.h"
#include "Platform/Linux/Updates/Copy/PreparationProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

namespace fs = std::filesystem;

constexpr const char* manifestPath = "share/vantoro/manifest.json";
constexpr std::size_t mostFiles = 20'000;

/// A plain file of this user's, as downloads are.
bool isOwnFile(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

UpdateError wrongRelease(std::string why) {
    return sparkleError(SparkleCode::validation, std::move(why));
}

bool exchange(const std::string& one, const std::string& other) {
    return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0;
}

bool mayBeWritten(const std::string& folder) {
    return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

} // namespace

std::optional<CopyManifest> parseManifest(const std::string& json) {
    const auto object = nlohmann::json::parse(json, nullptr, false);
    const auto isText = [&](const char* key) { return object.contains(key) && object[key].is_string(); };
    if (!object.is_object() || !isText("version") || !isText("build") || !object.contains("files") ||
        !object["files"].is_array())
        return std::nullopt;
    CopyManifest manifest{
        .version = object["version"].get<std::string>(), .build = object["build"].get<std::string>(), .files = {}};
    for (const auto& file : object["files"]) {
        if (!file.is_string())
            return std::nullopt;
        manifest.files.push_back(file.get<std::string>());
    }
    return manifest;
}

std::optional<CopyManifest> manifestIn(const std::string& folder) {
    std::ifstream file(folder + "/" + manifestPath);
    return parseManifest(std::string(std::istreambuf_iterator<char>(file), {}));
}

std::optional<CopyManifest> manifestOfWholeCopy(const std::string& folder) {
    auto manifest = manifestIn(folder);
    if (!manifest)
        return std::nullopt;
    std::set<std::string> missing(manifest->files.begin(), manifest->files.end());
    missing.insert(manifestPath);
    std::error_code fault;
    std::size_t seen = 0;
    for (fs::recursive_directory_iterator entry(folder, fault), end; !fault && entry != end; entry.increment(fault)) {
        const fs::file_status status = entry->symlink_status(fault);
        if (fault || ++seen > mostFiles)
            return std::nullopt;
        if (!fs::is_directory(status) && missing.erase(entry->path().lexically_relative(folder).string()) == 0)
            return std::nullopt;
    }
    return !fault && missing.empty() ? manifest : std::nullopt;
}

InstalledCopy::InstalledCopy(const std::string& program) {
    const fs::path path = fs::path(program).lexically_normal();
    programName_ = path.filename();
    if (path.parent_path().filename() != "bin")
        return;
    folder_ = path.parent_path().parent_path();
    parent_ = fs::path(folder_).parent_path();
    name_ = fs::path(folder_).filename();
}

Outcome<> InstalledCopy::canBeReplaced() const {
    if (folder_.empty() || name_.empty())
        return "the program lies in no folder of its own";
    if (!manifestOfWholeCopy(folder_))
        return fmt::format("{} was not made by an archive, or holds other files too", folder_);
    if (!mayBeWritten(folder_) || !mayBeWritten(parent_))
        return fmt::format("{} may not be replaced by this user", folder_);
    if (UpdateFolder::isMarked(parent_))
        return fmt::format("{} has been replaced already", folder_);
    return {};
}

bool InstalledCopy::wasMadeByArchive() const {
    std::error_code ignored;
    return !folder_.empty() && fs::is_regular_file(folder_ + "/" + manifestPath, ignored);
}

std::string InstalledCopy::hidden(const std::string& ending) const {
    return fmt::format("{}/.{}.{}", parent_, name_, ending);
}

std::string InstalledCopy::downloadPath(const std::string& signature) const {
    return hidden(fmt::format("{:016x}.download", std::hash<std::string>()(signature)));
}

std::variant<Descriptor, UpdateError> InstalledCopy::lock() const {
    Descriptor folder(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || ::flock(folder.number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return sparkleError(SparkleCode::installation, folder_ + " is being updated by another Vantoro");
        return fileError(SparkleCode::installationWriteNoPermission, folder_, errno);
    }
    if (!isLockedBy(folder))
        return sparkleError(SparkleCode::installation, folder_ + " has just been replaced");
    return folder;
}

bool InstalledCopy::isLockedBy(const Descriptor& folder) const {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(folder.number(), &opened) == 0 && ::stat(folder_.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

UpdateFolder InstalledCopy::makeStagingFolder() const {
    return UpdateFolder::make(parent_, name_);
}

Outcome<UpdateError> InstalledCopy::exchangeWith(UpdateFolder& staging, const std::string& build,
                                                 const std::string& version) const {
    const auto staged = manifestOfWholeCopy(staging.copy());
    if (!staged || staged->build != build)
        return wrongRelease(staging.copy() + " is not the release that was unpacked there");
    if (::faccessat(AT_FDCWD, (staging.copy() + "/bin/" + programName_).c_str(), X_OK, AT_EACCESS) != 0)
        return wrongRelease(staging.copy() + " has no program");
    if (const auto answer = canBeReplaced(); answer.failed())
        return sparkleError(SparkleCode::installationWriteNoPermission, answer.fault());
    const auto installed = manifestIn(folder_);
    if (!installed || compareVersions(build, installed->build) <= 0)
        return wrongRelease(fmt::format("{} is not older than build {}", folder_, build));
    if (!staging.lockCopy())
        return fileError(SparkleCode::fileCopyFailure, staging.copy(), errno);
    staging.takeKnownName(parent_);
    if (!staging.setRecord({.copy = name_, .from = installed->build, .to = build, .version = version}))
        return fileError(SparkleCode::fileCopyFailure, staging.path(), errno);
    if (!exchange(staging.copy(), folder_))
        return fileError(SparkleCode::fileCopyFailure, folder_, errno);
    // What was saved into the copy since it was looked at last must not go with the old copy.
    if (!manifestOfWholeCopy(staging.copy()) && exchange(staging.copy(), folder_))
        return sparkleError(SparkleCode::installationWriteNoPermission,
                            folder_ + " has got other files while it was replaced");
    const Descriptor parent(::open(parent_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent)
        ::fsync(parent.number());
    return {};
}

std::vector<UpdateFolder> InstalledCopy::idleFolders() const {
    std::vector<UpdateFolder> folders;
    if (!name_.empty())
        for (const std::string& path : UpdateFolder::namedLikeOne(parent_, name_))
            if (auto folder = UpdateFolder::open(path, name_))
                folders.push_back(std::move(folder));
    return folders;
}

void InstalledCopy::cleanUp(const std::string& build) const {
    const auto installed = manifestIn(folder_);
    if (!installed)
        return;
    for (UpdateFolder& folder : idleFolders()) {
        const bool isOnTrial = folder.record().to == installed->build;
        if (!isOnTrial || build == installed->build)
            folder.remove();
    }
}

void InstalledCopy::removeDownloadsBut(const std::string& path) const {
    constexpr std::string_view ending = ".download";
    constexpr std::size_t digits = 16;
    const std::string beginning = "." + name_ + ".";
    std::error_code fault;
    for (fs::directory_iterator entry(parent_, fault), end; !fault && entry != end; entry.increment(fault)) {
        const std::string name = entry->path().filename();
        if (name.size() != beginning.size() + digits + ending.size() || !name.starts_with(beginning) ||
            !name.ends_with(ending) ||
            name.find_first_not_of("0123456789abcdef", beginning.size()) != beginning.size() + digits)
            continue;
        if (entry->path() != path && isOwnFile(entry->path()))
            ::unlink(entry->path().c_str());
    }
}

} // namespace vantoro
