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
    /// Those who asked for it get it, as "beta"; empty for everybody.
    std::string channel;
    /// The feed names the version that people read, which the archive has to bear out.
    bool hasShortVersion = false;
    /// The builds to which this is only something to read.
    std::vector<std::string> informationFor;

    bool operator==(const AppcastEntry&) const = default;
};

/// The largest feed that is read, in bytes.
inline constexpr qsizetype mostAppcastBytes = 256 * 1024;

/// Reads sparkle:version, sparkle:shortVersionString (each as element or as attribute of the enclosure), description,
/// sparkle:minimumSystemVersion, sparkle:channel and <enclosure url length sparkle:edSignature sparkle:os>; an item
/// with sparkle:informationalUpdate is one to read about, and so is one without archive and with a <link>. An item
/// without a version is left out. Nothing for what is not RSS in UTF-8, does not end well, brings a document type of
/// its own, or is larger than a feed has reason to be: in bytes, elements, attributes of one element, or depth. Takes
/// time proportional to the bytes.
std::optional<std::vector<AppcastEntry>> parseAppcast(const QByteArray& xml, const QUrl& feed);

/// The newest release for this system and for everybody that is newer than `build`, or why there is none.
struct AppcastChoice {
    std::optional<AppcastEntry> update;
    /// With none: the newest release for this system, and `reasonSystemIsTooOld` when that is what stands against it.
    std::optional<AppcastItem> latest;
    std::optional<int> reason;
};

AppcastChoice chooseUpdate(const std::vector<AppcastEntry>& entries, const std::string& build,
                           const std::string& system, const std::string& systemVersion);

} // namespace vantoro
