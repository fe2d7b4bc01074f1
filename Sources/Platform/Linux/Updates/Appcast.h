// The feed of releases: RSS with Sparkle's fields.
#pragma once

#include "Platform/UpdateEngine.h"

#include <optional>
#include <QByteArray>
#include <QUrl>
#include <string>
#include <vector>

namespace vantoro {

/// One <item>: a release for one kind of system.
struct AppcastEntry {
    AppcastItem item;
    /// Where the archive lies: as written, or beside the feed where it was written as a relative address.
    QUrl archive;
    /// Ed25519 over the whole archive, base64; empty where the entry is unsigned.
    std::string signature;
    /// "linux-x86_64"; empty stands for a Mac.
    std::string system;
    /// The oldest system that it runs on; empty for any.
    std::string minimumSystem;

    bool operator==(const AppcastEntry&) const = default;
};

/// Reads sparkle:version, sparkle:shortVersionString (each as element or as attribute of the enclosure), description,
/// sparkle:minimumSystemVersion and <enclosure url length sparkle:edSignature sparkle:os>; an item without archive and
/// with a <link> is one to read about. An item without a version is left out. Nothing for what is not RSS, does not end
/// well or brings a document type of its own. At most 1,000 items.
std::optional<std::vector<AppcastEntry>> parseAppcast(const QByteArray& xml, const QUrl& feed);

/// The newest release for this system that is newer than `build`, or why there is none.
struct AppcastChoice {
    std::optional<AppcastEntry> update;
    /// With none: the newest release for this system, and `reasonSystemIsTooOld` when that is what stands against it.
    std::optional<AppcastItem> latest;
    std::optional<int> reason;
};

AppcastChoice chooseUpdate(const std::vector<AppcastEntry>& entries, const std::string& build,
                           const std::string& system, const std::string& systemVersion);

} // namespace vantoro
