// The desktop entries installed on this machine.
#pragma once

#include "Platform/Linux/Apps/DesktopEntry.h"

#include <ctime>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantoro {

struct InstalledEntry {
    DesktopEntry entry;
    std::string file;
    /// The program its command names and that program's base name; both empty when the command does not say.
    std::string programPath;
    std::string programName;
    /// For a program that is a script: the base name of what runs it.
    std::string interpreterName;
};

/// Where they lie and where their commands are found.
struct DesktopFolders {
    /// Data folders, the most important first; entries lie in "applications" below each.
    std::vector<std::string> data;
    /// Folders that hold programs, in the order searched.
    std::vector<std::string> programs;

    bool operator==(const DesktopFolders&) const = default;
};

/// The folders by the variables HOME, XDG_DATA_HOME, XDG_DATA_DIRS and PATH (null or empty: their defaults), with
/// those to which flatpak and snap export, each once.
DesktopFolders desktopFolders(const char* home, const char* dataHome, const char* dataFolders, const char* path);

class DesktopEntries {
public:
    /// Reads nothing yet. Each folder is looked up below `root`.
    DesktopEntries(std::string root, DesktopFolders folders);

    /// Reads all entries, the first time it is called; later, at most once a minute, again if a folder has changed.
    /// `seconds` is a clock that only rises.
    void refresh(double seconds);

    /// By desktop id, such as "org.example.Editor" (the file's path below "applications" with "-" for "/", without
    /// ".desktop"). Null when there is none. Valid until the next refresh.
    const InstalledEntry* byId(const std::string& id) const;
    /// The application whose command runs this executable itself. Launchers, interpreters, terminal programs and hidden
    /// entries name none. Null when there is none. Valid until the next refresh.
    const InstalledEntry* byExecutable(const std::string& path) const;

private:
    using Stamps = std::vector<std::pair<std::string, timespec>>;

    void load();
    void loadFolder(const std::string& folder, const std::string& idPrefix, int depth);
    void findProgram(InstalledEntry& installed);
    bool hasChanged() const;
    std::string resolved(const std::string& path) const;

    std::string root_;
    /// The root without symbolic links, "" for "/".
    std::string resolvedRoot_;
    DesktopFolders folders_;
    bool loaded_ = false;
    double checkedSeconds_ = 0;
    Stamps stamps_;
    std::unordered_map<std::string, InstalledEntry> byId_;
    std::unordered_map<std::string, std::string> idByExecutable_;
};

} // namespace vantoro
