// A version that can be had, which of two is the newer one, how far it has come, and the two records of it that outlive
// the program.
#pragma once

#include "Model/Text/Format.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantoro {

struct Release {
    /// As people read it.
    std::string version;
    /// What orders releases.
    std::string build;
    /// In plain text; never stored.
    std::optional<std::string> notes;

    bool operator==(const Release&) const = default;
};

inline constexpr std::size_t longestVersion = 64;
/// A version or a build as it may be shown, logged and kept: what of it is printable ASCII, up to `longestVersion`.
std::string plainVersion(std::string_view text);
/// Whether it is one as it stands, and not empty.
bool isPlainVersion(std::string_view text);

/// Where the user asked for an install.
enum class UpdateOrigin { controlBar, settings, menuBar };

/// "controlBar", "settings", "menuBar".
std::string_view rawValue(UpdateOrigin origin);
std::optional<UpdateOrigin> updateOrigin(std::string_view rawValue);

/// The marker that an installation leaves for the next start.
struct Relaunch {
    /// The build that was running when the installer took over.
    std::string fromBuild;
    /// When it did.
    UnixSeconds at = 0;
    std::optional<UpdateOrigin> origin;

    bool operator==(const Relaunch&) const = default;
};

/// What the update chip shows.
struct UpdatePhase {
    enum class Kind {
        idle,
        checking,
        /// No newer version.
        current,
        /// Just relaunched into a new build.
        updated,
        available,
        /// The newest release asks for a newer operating system.
        needsNewerSystem,
        downloading,
        installing,
        failed
    };
    Kind kind = Kind::idle;
    /// With available, needsNewerSystem, downloading and installing; with failed where one is known.
    std::optional<Release> release;
    /// With failed.
    std::string message;
    std::optional<std::string> detail;

    bool operator==(const UpdatePhase&) const = default;
};

/// For the log: "downloading 2.1 (210)".
std::string logText(const UpdatePhase& phase);

/// JSON with the keys `version` and `build`.
std::string encoded(const Release& release);
/// Nothing for anything else, and where either is no plain version.
std::optional<Release> decodedRelease(std::string_view text);
/// JSON with the keys `fromBuild`, `at` and, where there is one, `origin`.
std::string encoded(const Relaunch& relaunch);
std::optional<Relaunch> decodedRelaunch(std::string_view text);

/// Below 0 when `version` is older than `other`, 0 when they are equal, above 0 when it is newer. The order of
/// Sparkle's standard comparator: runs of digits compare as numbers of any length, words by their letters, separators
/// do not count; where one ends early it is the older one ("1.0" < "1.0.1"), unless the other goes on with a word
/// ("1.0b1" < "1.0"); a number beats a word in the same place.
int compareVersions(std::string_view version, std::string_view other);

/// The text of HTML that comes from elsewhere: no markup, scripts or styles; paragraphs, line breaks and list items on
/// lines of their own, items after "• "; entities as their letters; no control, direction or invisible letters; valid
/// UTF-8. At most 4,000 bytes, cut after a whole letter with "…". Takes time proportional to the input and looks at no
/// more than its first 256 KiB.
std::string plainNotes(std::string_view html);

} // namespace vantoro
