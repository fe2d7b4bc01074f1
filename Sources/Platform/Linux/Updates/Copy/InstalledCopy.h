// The copy of the program that runs: a folder that an archive made, and what may be done with it.
#pragma once

#include "Platform/Linux/Updates/Copy/UpdateFolder.h"
#include "Platform/UpdateEngine.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vantoro {

/// What an archive says of itself in share/vantoro/manifest.json.
struct CopyManifest {
    std::string version;
    std::string build;
    /// Every file of the copy but the manifest, relative to its folder, in any order.
    std::vector<std::string> files;

    bool operator==(const CopyManifest&) const = default;
};

/// Nothing for anything else than such a manifest.
std::optional<CopyManifest> parseManifest(const std::string& json);

/// What lies in the folder, its manifest apart, is exactly what the manifest names. Nothing where it has none.
std::optional<CopyManifest> manifestOfWholeCopy(const std::string& folder);

/// What the folder's manifest says, whatever else lies there; nothing where it has none.
std::optional<CopyManifest> manifestIn(const std::string& folder);

/// The folder whose bin/ the program lies in, and the names beside it that an update uses. All of them begin with a
/// dot.
class InstalledCopy {
public:
    /// `program`: the running program's path.
    explicit InstalledCopy(const std::string& program);

    const std::string& folder() const { return folder_; }
    std::string program() const { return folder_ + "/bin/" + programName_; }

    /// Whether this copy can be replaced: where an archive made it, nothing else has come into its
    /// folder since, and both the folder and the one around it may be written. What a package manager installed has no
    /// manifest.
    Outcome<> canBeReplaced() const;

    /// It brings a manifest; what a package manager installed has none.
    bool wasMadeByArchive() const;

    /// A file for the archive with that signature, so that another archive never goes on where this one stopped.
    std::string downloadPath(const std::string& signature) const;
    /// Holds this copy for one update: for as long as the descriptor, or a duplicate, is open, nobody else gets it.
    std::variant<Descriptor, UpdateError> lock() const;
    /// A new folder beside the copy for an update to work in; none on failure, errno then says why.
    UpdateFolder makeStagingFolder() const;
    /// Puts the copy in the staging folder, which has to be whole, of that build and newer than the installed one, in
    /// this copy's place in one step (renameat2), and the old one where it lay, for `cleanUp` to remove. Where it fails
    /// the copy is as it was, with everything that was saved into it.
    Outcome<UpdateError> exchangeWith(UpdateFolder& staging, const std::string& build,
                                      const std::string& version) const;
    /// Removes what updates that are over have left beside the copy, but for a download that can go on: never what
    /// another process works with, and the old copy only once its successor, `build`, asks for it.
    void cleanUp(const std::string& build) const;
    /// The folders of updates beside this copy that nobody works with, locked.
    std::vector<UpdateFolder> idleFolders() const;
    /// Downloads of other releases.
    void removeDownloadsBut(const std::string& path) const;

private:
    std::string hidden(const std::string& ending) const;
    bool isLockedBy(const Descriptor& folder) const;

    std::string programName_;
    std::string folder_;
    std::string parent_;
    std::string name_;
};

} // namespace vantoro
