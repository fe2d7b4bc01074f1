// What finds, checks, installs and starts a newer version of the program, and whom it tells. The two interfaces follow
// Sparkle's updater and user-driver protocols, member for selector, so that its framework and an engine of our own
// drive the same controller.
#pragma once

#include "Model/Text/Outcome.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantoro {

/// One entry of the feed (SUAppcastItem).
struct AppcastItem {
    /// The build number, which orders releases.
    std::string versionString;
    /// The version as people read it.
    std::string displayVersionString;
    /// The release notes, HTML from elsewhere.
    std::optional<std::string> itemDescription;
    /// Bytes of the archive.
    std::uint64_t contentLength = 0;
    /// There is nothing to install, only something to read.
    bool isInformationOnlyUpdate = false;

    bool operator==(const AppcastItem&) const = default;
};

inline constexpr std::string_view sparkleErrorDomain = "SUSparkleErrorDomain";
inline constexpr std::string_view urlErrorDomain = "NSURLErrorDomain";

/// The codes of Sparkle's error domain that mean something to the program (SUErrors.h).
namespace SparkleCode {
inline constexpr int insufficientSigning = 2;
inline constexpr int appcastParse = 1000;
inline constexpr int noUpdate = 1001;
inline constexpr int appcast = 1002;
inline constexpr int runningFromDiskImage = 1003;
inline constexpr int runningTranslocated = 1005;
inline constexpr int temporaryDirectory = 2000;
inline constexpr int download = 2001;
inline constexpr int unarchiving = 3000;
inline constexpr int signature = 3001;
inline constexpr int validation = 3002;
inline constexpr int fileCopyFailure = 4000;
inline constexpr int authenticationFailure = 4001;
inline constexpr int relaunch = 4004;
inline constexpr int installation = 4005;
inline constexpr int installationCanceled = 4007;
inline constexpr int installationAuthorizeLater = 4008;
inline constexpr int installationWriteNoPermission = 4012;
} // namespace SparkleCode

/// What no framework has a code for.
inline constexpr std::string_view ownErrorDomain = "VantoroUpdateErrorDomain";
namespace OwnCode {
/// Apart from the codes of other domains, so that a number alone tells.
inline constexpr int diskFull = 100'001;
} // namespace OwnCode

/// Why there is no update (SPUNoUpdateFoundReason): the newest entry asks for a newer system than this one.
inline constexpr int reasonSystemIsTooOld = 3;

/// What went wrong (NSError).
struct UpdateError {
    std::string domain;
    int code = 0;
    /// For whoever looks into it; people are shown the controller's own words.
    std::string description;
    /// With "no update": the newest entry that the feed has (SPULatestAppcastItemFoundKey).
    std::optional<AppcastItem> latestItem;
    /// With "no update": why none is offered (SPUNoUpdateFoundReasonKey).
    std::optional<int> noUpdateReason;

    bool operator==(const UpdateError&) const = default;
};

/// The answer to an update that was found or is ready (SPUUserUpdateChoice).
enum class UpdateChoice { skip, install, dismiss };
using UpdateReply = std::function<void(UpdateChoice)>;
using UpdateAction = std::function<void()>;

/// Where a found update stands (SPUUserUpdateState).
struct UserUpdateState {
    enum class Stage { notDownloaded, downloaded, installing };
    Stage stage = Stage::notDownloaded;
    bool userInitiated = false;
};

enum class UpdateCheck { byUser, inBackground, information };

/// Whom the engine tells (SPUUserDriver and SPUUpdaterDelegate). Called on the main thread. Replies, acknowledgements
/// and cancellations are called at most once; calling one after the engine is gone does nothing.
class UpdateDriver {
public:
    virtual ~UpdateDriver() = default;

    virtual void showUserInitiatedUpdateCheck(UpdateAction cancellation) = 0;
    virtual void showUpdateFound(const AppcastItem& item, const UserUpdateState& state, UpdateReply reply) = 0;
    /// Notes that came apart from the feed.
    virtual void showUpdateReleaseNotes(const std::string& notes) = 0;
    virtual void showUpdateNotFoundWithError(const UpdateError& error, UpdateAction acknowledgement) = 0;
    virtual void showUpdaterError(const UpdateError& error, UpdateAction acknowledgement) = 0;
    virtual void showDownloadInitiated(UpdateAction cancellation) = 0;
    virtual void showDownloadDidReceiveExpectedContentLength(std::uint64_t expectedContentLength) = 0;
    /// Bytes since the last call.
    virtual void showDownloadDidReceiveData(std::uint64_t length) = 0;
    virtual void showDownloadDidStartExtractingUpdate() = 0;
    /// 0 to 1.
    virtual void showExtractionReceivedProgress(double progress) = 0;
    virtual void showReadyToInstallAndRelaunch(UpdateReply reply) = 0;
    virtual void showInstallingUpdate(bool applicationTerminated, UpdateAction retryTerminatingApplication) = 0;
    virtual void showUpdateInstalledAndRelaunched(bool relaunched, UpdateAction acknowledgement) = 0;
    /// The session is over, whichever way it went.
    virtual void dismissUpdateInstallation() = 0;

    virtual void updaterDidNotFindUpdate(const UpdateError& error) = 0;
    virtual void didFinishUpdateCycleFor(UpdateCheck check, const Outcome<UpdateError>& outcome) = 0;
};

/// SPUUpdater. Main thread.
class UpdateEngine {
public:
    virtual ~UpdateEngine() = default;

    /// Where the feed lies ("SUFeedURL"); nothing for a copy that has none.
    virtual std::optional<std::string> feedAddress() const = 0;
    /// The running copy's version as people read it, and its build number.
    virtual std::string currentVersion() const = 0;
    virtual std::string currentBuild() const = 0;
    /// Below 0 when `version` is the older, above 0 when it is the newer one (SUStandardVersionComparator).
    virtual int compareVersion(const std::string& version, const std::string& other) const = 0;

    /// What is found can be installed over this copy; where not, somebody else looks after it.
    virtual bool canInstallUpdates() const { return true; }

    /// The marker of a hand-over is for this run to settle: another instance's is not, which may be about to read it.
    virtual bool settlesHandOver() const { return true; }

    /// Begins; the driver must stay until the engine is destroyed. What went wrong when it cannot.
    virtual Outcome<UpdateError> startUpdater(UpdateDriver& driver) = 0;
    virtual bool canCheckForUpdates() const = 0;
    virtual void checkForUpdates() = 0;
    /// Tells of an update that is found and of nothing else.
    virtual void checkForUpdatesInBackground() = 0;

    virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool automatic) = 0;
    /// Seconds since 1970 of the last answer from the feed; nothing before the first.
    virtual std::optional<double> lastUpdateCheckDate() const = 0;
    /// The user has seen a window: until then nothing is asked unbidden.
    virtual void windowWasSeen() = 0;
};

/// What an engine of our own is told; a framework of the system's knows it from the program's bundle.
struct UpdateSetup {
    std::string version;
    std::string build;
    /// Address of the feed, https.
    std::string feed;
    /// The Ed25519 key that every archive is signed with: 32 bytes in base64.
    std::string publicKey;
    /// Certificates (PEM) to trust beside the system's; empty in every copy that people install.
    std::string authorities;
    /// Where the running program lies, read before anything can have moved it.
    std::string program;
    /// What the engine keeps from run to run, under names of its own; an empty text forgets.
    std::function<std::string(std::string_view key)> recall;
    std::function<void(std::string_view key, const std::string& text)> remember;
    /// Seconds since 1970.
    std::function<double()> now;
    /// Ends this program in its own good time and starts the one at that path in its place.
    std::function<void(const std::string& program)> relaunch;
};

/// What a run with a window is, for starting it once more.
struct ProgramStart {
    /// This program's.
    std::string build;
    /// The command line, the program's name included.
    std::vector<std::string> arguments;
    /// Seconds until a window has to have been seen.
    double patience = 60;
};

/// The very first thing that such a run does. Where an update has put this version in its place and no window of it was
/// seen yet, the start is counted. One that crashes or shows no window in time is made once more; then the copy before
/// gets its place back and is started instead. The version that gave way like that to this one, where it is so.
std::optional<std::string> beginStart(const ProgramStart& start);
/// A window was seen, or the run has come as far as one that is to have none: this version stays.
void startSucceeded();
/// This run ends in good order before that, which says nothing about this version.
void startEnded();

/// Null where the build found nothing to update with.
std::shared_ptr<UpdateEngine> currentUpdateEngine(UpdateSetup setup);

} // namespace vantoro
