// The folder beside the copy that an update works in, and in which the old copy then lies until the new one has proved
// itself.
#pragma once

#include "Platform/Linux/Reading/KeptFile.h"

#include <optional>
#include <string>
#include <vector>

namespace vantoro {

/// What the marker file in such a folder says: whose it is, and which exchange it belongs to.
struct UpdateRecord {
    /// The name of the copy's folder.
    std::string copy;
    /// The builds of the copy that is replaced and of the one that replaces it; empty before an exchange is due.
    std::string from;
    std::string to;
    /// The new one's version, as people read it.
    std::string version;
    /// How often the new one was started before a window of it was seen.
    int starts = 0;

    bool operator==(const UpdateRecord&) const = default;
};

/// Nothing for anything else than such a record.
std::optional<UpdateRecord> parseUpdateRecord(const std::string& json);

/// Open, marked and locked: nobody else touches it while this object, or a child that was given the lock, lives. The
/// lock is the kernel's (flock) and ends with its holders, however they end.
class UpdateFolder {
public:
    /// None.
    UpdateFolder() = default;
    /// A new one beside the copy of that name, which only this user may enter. None on failure; errno then says why.
    static UpdateFolder make(const std::string& parent, const std::string& copyName);
    /// None where the folder is not this user's, bears no marker for a copy of that name or is locked by somebody else.
    static UpdateFolder open(const std::string& path, const std::string& copyName);
    /// What is named like one, marked or not.
    static std::vector<std::string> namedLikeOne(const std::string& parent, const std::string& copyName);
    /// Whether a marker lies in the folder.
    static bool isMarked(const std::string& path);

    explicit operator bool() const { return static_cast<bool>(folder_); }
    const std::string& path() const { return path_; }
    /// Where the copy lies in it that is to be exchanged, or was.
    std::string copy() const { return path_ + "/copy"; }
    /// The descriptor that holds the lock.
    int lock() const { return folder_.number(); }
    const UpdateRecord& record() const { return record_; }

    /// Replaces the record on the disk in one step; false leaves the old one.
    bool setRecord(const UpdateRecord& record);
    /// Locks the copy in it too, so that it is held from the moment it takes the installed one's place.
    bool lockCopy();
    /// Under the name by which people find the old copy, ".NAME.previous", unless that is taken.
    void takeKnownName(const std::string& parent);
    /// Removes the copy in it, the marker and then the folder itself, which stays where anything else lies in it.
    void remove();

private:
    std::string path_;
    Descriptor folder_;
    Descriptor copy_;
    UpdateRecord record_;
};

} // namespace vantoro
