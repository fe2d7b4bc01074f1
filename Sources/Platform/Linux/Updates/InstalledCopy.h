// The copy of the program that runs: a folder that an archive made, and what may be done with it.
#pragma once

#include <optional>
#include <string>
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

/// The folder whose bin/ the program lies in, and the names beside it that an update uses. All of them begin with a
/// dot.
class InstalledCopy {
public:
    /// `program`: the running program's path.
    explicit InstalledCopy(const std::string& program);

    const std::string& folder() const { return folder_; }
    std::string program() const { return folder_ + "/bin/" + programName_; }

    /// Why this copy cannot be replaced, or nothing. It can where an archive made it, nothing else has come into its
    /// folder since, and both the folder and the one around it may be written. What a package manager installed has no
    /// manifest.
    std::optional<std::string> reasonToStay() const;

    /// It brings a manifest; what a package manager installed has none.
    bool wasMadeByArchive() const;

    /// A file for the archive with that signature, so that another archive never goes on where this one stopped.
    std::string downloadPath(const std::string& signature) const;
    /// A new, empty folder beside the copy that only this user may enter; empty on failure.
    std::string makeStagingFolder() const;
    /// Puts the staged folder in the copy's place in one step (renameat2); the old copy is then what `removePrevious`
    /// removes. What went wrong, or nothing; the copy is then as it was.
    std::optional<std::string> exchangeWith(const std::string& staged) const;
    /// Removes the copy that this one took the place of, and what attempts that came to nothing have left, but for a
    /// download that can go on.
    void removePrevious() const;
    /// Downloads of other releases.
    void removeDownloadsBut(const std::string& path) const;

private:
    std::string hidden(const std::string& ending) const;
    void removeSiblings(const std::string& ending, const std::string& kept) const;

    std::string programName_;
    std::string folder_;
    std::string parent_;
    std::string name_;
};

} // namespace vantoro
