#include "Platform/Linux/Apps/DesktopEntries.h"

#include "Platform/Linux/Reading/KeptFile.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace vantoro {

namespace {

constexpr off_t mostEntryBytes = off_t{256} << 10;
constexpr std::size_t mostEntries = 10'000;
constexpr int mostFolderDepth = 4;
constexpr double secondsBetweenChecks = 60;

std::vector<std::string> splitAtColons(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t colon = list.find(':');
        std::string_view part = list.substr(0, colon);
        while (part.size() > 1 && part.ends_with('/'))
            part.remove_suffix(1);
        if (part.starts_with('/')) // relative folders are not valid here
            parts.emplace_back(part);
        list = colon == std::string_view::npos ? std::string_view() : list.substr(colon + 1);
    }
    return parts;
}

void addOnce(std::vector<std::string>& folders, std::string folder) {
    if (std::ranges::find(folders, folder) == folders.end())
        folders.push_back(std::move(folder));
}

std::string_view orDefault(const char* value, std::string_view fallback) {
    return value != nullptr && *value != '\0' ? std::string_view(value) : fallback;
}

/// What runs a script, by its first line; empty for a file that is no script.
std::string interpreterOf(const std::string& path) {
    constexpr std::size_t mostLineBytes = 256; // as many as the kernel looks at
    const auto start = readFileAt(AT_FDCWD, path.c_str(), mostLineBytes);
    if (!start || !start->starts_with("#!"))
        return {};
    std::vector<std::string> words;
    for (std::size_t at = 2; at < start->size() && (*start)[at] != '\n';) {
        const std::size_t end = std::min(start->find_first_of(" \t\n", at), start->size());
        if (end != at)
            words.push_back(start->substr(at, end - at));
        at = end < start->size() && (*start)[end] == '\n' ? end : end + 1;
    }
    return std::string(baseName(commandProgram(words)));
}

} // namespace

DesktopFolders desktopFolders(const char* home, const char* dataHome, const char* dataFolders, const char* path) {
    DesktopFolders folders;
    const std::string homeFolder(orDefault(home, ""));
    const std::string homeData = homeFolder.starts_with('/') ? homeFolder + "/.local/share" : std::string();
    for (std::string& folder : splitAtColons(orDefault(dataHome, homeData)))
        addOnce(folders.data, std::move(folder));
    for (std::string& folder : splitAtColons(orDefault(dataFolders, "/usr/local/share:/usr/share")))
        addOnce(folders.data, std::move(folder));
    if (!homeData.empty()) {
        addOnce(folders.data, homeData);
        addOnce(folders.data, homeData + "/flatpak/exports/share");
    }
    for (const char* folder :
         {"/usr/local/share", "/usr/share", "/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"})
        addOnce(folders.data, folder);
    for (std::string& folder : splitAtColons(orDefault(path, "/usr/local/bin:/usr/bin:/bin")))
        addOnce(folders.programs, std::move(folder));
    return folders;
}

DesktopEntries::DesktopEntries(std::string root, DesktopFolders folders)
    : root_(std::move(root)), folders_(std::move(folders)) {
    while (root_.ends_with('/'))
        root_.pop_back();
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(root_.empty() ? "/" : root_.c_str(), nullptr),
                                                           &std::free);
    resolvedRoot_ = real && std::string_view(real.get()) != "/" ? real.get() : "";
}

void DesktopEntries::refresh(double seconds) {
    if (loaded_ && seconds - checkedSeconds_ < secondsBetweenChecks)
        return;
    checkedSeconds_ = seconds;
    if (!loaded_ || hasChanged())
        load();
    loaded_ = true;
}

const InstalledEntry* DesktopEntries::byId(const std::string& id) const {
    const auto found = byId_.find(id);
    return found != byId_.end() ? &found->second : nullptr;
}

const InstalledEntry* DesktopEntries::byExecutable(const std::string& path) const {
    const auto found = idByExecutable_.find(path);
    return found != idByExecutable_.end() ? byId(found->second) : nullptr;
}

void DesktopEntries::load() {
    byId_.clear();
    idByExecutable_.clear();
    stamps_.clear();
    for (const std::string& folder : folders_.data)
        loadFolder(folder + "/applications", "", 0);

    // Several entries may run one program: the one with the fewest arguments is the program's own.
    const auto isBetter = [](const auto& left, const auto& right) {
        const std::size_t leftWords = left.second.entry.command.size();
        const std::size_t rightWords = right.second.entry.command.size();
        return leftWords != rightWords ? leftWords < rightWords : left.first < right.first;
    };
    for (auto& each : byId_) {
        InstalledEntry& installed = each.second;
        findProgram(installed);
        const DesktopEntry& entry = installed.entry;
        if (entry.hidden || entry.terminal || installed.programPath.empty() || !installed.interpreterName.empty() ||
            isLauncher(baseName(entry.command.front())) || isLauncher(baseName(installed.programPath)))
            continue;
        const auto [place, isNew] = idByExecutable_.emplace(installed.programPath, each.first);
        if (!isNew && isBetter(each, *byId_.find(place->second)))
            place->second = each.first;
    }
}

void DesktopEntries::loadFolder(const std::string& folder, const std::string& idPrefix, int depth) {
    const std::string path = root_ + folder;
    struct stat status {};
    const bool isThere = ::stat(path.c_str(), &status) == 0;
    stamps_.emplace_back(path, isThere ? status.st_mtim : timespec{});
    if (!isThere)
        return;
    const auto close = [](DIR* stream) { ::closedir(stream); };
    const std::unique_ptr<DIR, decltype(close)> stream(::opendir(path.c_str()), close);
    if (!stream)
        return;
    while (const dirent* item = ::readdir(stream.get())) {
        const std::string name = item->d_name;
        if (name.starts_with('.') || byId_.size() >= mostEntries)
            continue;
        const std::string file = path + "/" + name;
        if (::stat(file.c_str(), &status) != 0)
            continue;
        if (S_ISDIR(status.st_mode)) {
            if (depth < mostFolderDepth)
                loadFolder(folder + "/" + name, idPrefix + name + "-", depth + 1);
            continue;
        }
        constexpr std::string_view ending = ".desktop";
        if (!S_ISREG(status.st_mode) || !name.ends_with(ending))
            continue;
        const std::string id = idPrefix + name.substr(0, name.size() - ending.size());
        if (byId_.contains(id)) // a folder before this one has its own
            continue;
        if (status.st_size > mostEntryBytes)
            continue;
        const auto text = readFileAt(AT_FDCWD, file.c_str(), static_cast<std::size_t>(mostEntryBytes));
        auto entry = text ? parseDesktopEntry(*text) : std::nullopt;
        if (entry)
            byId_.emplace(id, InstalledEntry{.entry = std::move(*entry), .file = folder + "/" + name});
    }
}

void DesktopEntries::findProgram(InstalledEntry& installed) {
    const std::string program(commandProgram(installed.entry.command));
    installed.programName = baseName(program);
    if (program.starts_with('/')) {
        installed.programPath = resolved(program);
    } else if (!program.empty() && program.find('/') == std::string::npos) {
        for (const std::string& folder : folders_.programs) {
            const std::string candidate = folder + "/" + program;
            if (::access((root_ + candidate).c_str(), X_OK) == 0) {
                installed.programPath = resolved(candidate);
                break;
            }
        }
    }
    if (!installed.programPath.empty())
        installed.interpreterName = interpreterOf(root_ + installed.programPath);
}

bool DesktopEntries::hasChanged() const {
    return std::ranges::any_of(stamps_, [](const auto& stamp) {
        struct stat status {};
        const timespec now = ::stat(stamp.first.c_str(), &status) == 0 ? status.st_mtim : timespec{};
        return now.tv_sec != stamp.second.tv_sec || now.tv_nsec != stamp.second.tv_nsec;
    });
}

std::string DesktopEntries::resolved(const std::string& path) const {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath((root_ + path).c_str(), nullptr), &std::free);
    const std::string_view found = real ? std::string_view(real.get()) : std::string_view();
    return found.starts_with(resolvedRoot_) && found.size() > resolvedRoot_.size()
               ? std::string(found.substr(resolvedRoot_.size()))
               : std::string();
}

} // namespace vantoro
