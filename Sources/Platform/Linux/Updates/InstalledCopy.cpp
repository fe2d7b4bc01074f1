#include "Platform/Linux/Updates/InstalledCopy.h"

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
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

namespace fs = std::filesystem;

constexpr const char* manifestPath = "share/vantoro/manifest.json";
constexpr std::size_t mostFiles = 20'000;

std::string systemFault(const std::string& what) {
    return fmt::format("{}: {}", what, std::strerror(errno));
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

std::optional<CopyManifest> manifestOfWholeCopy(const std::string& folder) {
    std::ifstream file(folder + "/" + manifestPath);
    auto manifest = parseManifest(std::string(std::istreambuf_iterator<char>(file), {}));
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

std::optional<std::string> InstalledCopy::reasonToStay() const {
    if (folder_.empty() || name_.empty())
        return "the program lies in no folder of its own";
    if (!manifestOfWholeCopy(folder_))
        return fmt::format("{} was not made by an archive, or holds other files too", folder_);
    if (!mayBeWritten(folder_) || !mayBeWritten(parent_))
        return fmt::format("{} may not be replaced by this user", folder_);
    return std::nullopt;
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

std::string InstalledCopy::makeStagingFolder() const {
    std::string path = hidden("update-XXXXXX");
    return ::mkdtemp(path.data()) != nullptr ? path : std::string();
}

std::optional<std::string> InstalledCopy::exchangeWith(const std::string& staged) const {
    // What mkdtemp made is open to this user alone; the copy is open to whom the old one was.
    struct stat status = {};
    if (::stat(folder_.c_str(), &status) != 0 || ::chmod(staged.c_str(), status.st_mode & 0777) != 0)
        return systemFault(folder_);
    std::error_code ignored;
    fs::remove_all(hidden("previous"), ignored);
    if (::renameat2(AT_FDCWD, staged.c_str(), AT_FDCWD, folder_.c_str(), RENAME_EXCHANGE) != 0)
        return systemFault(folder_);
    // A failure leaves the old copy under the staging name, which is removed alike.
    (void)std::rename(staged.c_str(), hidden("previous").c_str());
    return std::nullopt;
}

void InstalledCopy::removePrevious() const {
    if (name_.empty())
        return;
    std::error_code ignored;
    fs::remove_all(hidden("previous"), ignored);
    removeSiblings("update-", "");
}

void InstalledCopy::removeDownloadsBut(const std::string& path) const {
    removeSiblings(".download", path);
}

void InstalledCopy::removeSiblings(const std::string& ending, const std::string& kept) const {
    if (name_.empty())
        return;
    const std::string beginning = "." + name_ + ".";
    std::error_code ignored;
    for (fs::directory_iterator entry(parent_, ignored), end; !ignored && entry != end; entry.increment(ignored)) {
        const std::string name = entry->path().filename();
        if (name.starts_with(beginning) && name.find(ending, beginning.size()) != std::string::npos &&
            entry->path() != kept)
            fs::remove_all(entry->path(), ignored);
    }
}

} // namespace vantoro
