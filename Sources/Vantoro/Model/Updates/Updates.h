// The update controller: drives an engine, turns what it tells into one phase that the interface shows, words every
// failure, and survives the relaunch that an installation causes.
#pragma once

#include "Model/Records/SystemWords.h"
#include "Model/Text/Format.h"
#include "Model/Text/Release.h"
#include "Platform/UpdateEngine.h"

#include <memory>
#include <QObject>

namespace vantoro {

class Settings;

/// What the controller asks of the clock, the real one by default, and whose words it speaks.
struct UpdatesEnvironment {
    SystemKind system = SystemKind::macos;
    /// Seconds since 1970.
    std::function<double()> now;
    /// Runs the action on the main thread that many seconds later, never before this call returns.
    std::function<void(double seconds, std::function<void()> action)> after;
};

class Updates : public QObject, public UpdateDriver {
    Q_OBJECT
public:
    using Release = vantoro::Release;
    using Relaunch = vantoro::Relaunch;
    using Origin = UpdateOrigin;
    using Phase = UpdatePhase;

    /// The host that updates come from, as people are told it.
    static constexpr std::string_view host = "updates.vantoro.example";

    /// Starts in `available` when an update is remembered that is newer than this copy. Null engine: nothing to offer.
    Updates(std::shared_ptr<UpdateEngine> engine, Settings& settings, UpdatesEnvironment environment = {});
    ~Updates() override;

    const Phase& phase() const { return phase_; }
    /// Download and extraction: 0 to 1, two decimals.
    double progress() const { return progress_; }
    /// An update is known and should be announced.
    bool announcesUpdate() const { return announcesUpdate_; }
    /// What was found last cannot be installed, only read about; nothing can over a copy that others look after.
    bool isInformationOnly() const;
    /// A download runs that `cancel` ends.
    bool canCancel() const;
    /// The settings should be opened, at the updates, because the install was clicked there; asking forgets it.
    bool takeWantsSettings();
    bool revealsUpdatesInSettings() const { return revealsUpdatesInSettings_; }
    void setRevealsUpdatesInSettings(bool reveals) { revealsUpdatesInSettings_ = reveals; }
    std::string currentVersion() const;
    std::string currentBuild() const;
    /// The updater runs: there is something to check with.
    bool hasUpdater() const { return updater_ != nullptr; }

    bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool automatic);
    /// Seconds since 1970.
    std::optional<double> lastUpdateCheckDate() const;
    SystemKind system() const { return environment_.system; }
    /// Seconds since 1970 by the controller's clock.
    double now() const { return environment_.now(); }

    /// Creates and starts the updater. Once.
    void start();
    /// A check that the user asked for. Ignored while one runs or an update is under way.
    void check();
    /// Installs the update that is known, checking first when none is.
    void install(Origin origin);
    /// After a failure: the install once more where one failed and its update is known, else a check.
    void tryAgain(Origin origin);
    /// Ends the download; what came of it is gone on with the next time.
    void cancel();
    /// Asks in silence; only an update that is found shows.
    void checkForUpdatesInBackground();
    /// The user has seen a window: automatic checks may begin.
    void windowWasSeen();
    /// Reads and settles the marker that an installation left; whether there was a fresh one.
    bool consumeRelaunch();
    /// That version was installed and did not start, so that this one has taken its place again.
    void tellGaveWay(const std::string& version);
    void setInstallsWhenFound(bool installs) { installsWhenFound_ = installs; }

    /// The words for a failure.
    struct Words {
        std::string message;
        std::string detail;

        bool operator==(const Words&) const = default;
    };
    static Words describe(const UpdateError& error, SystemKind system = SystemKind::macos);
    /// The remembered update, forgotten when it is not newer than this copy.
    std::optional<Release> restoredAvailability();
    /// The phase's update, else the remembered one.
    std::optional<Release> knownRelease();
    void setProgress(double progress);

    void showUserInitiatedUpdateCheck(UpdateAction cancellation) override;
    void showUpdateFound(const AppcastItem& item, const UserUpdateState& state, UpdateReply reply) override;
    void showUpdateReleaseNotes(const std::string& notes) override;
    void showUpdateNotFoundWithError(const UpdateError& error, UpdateAction acknowledgement) override;
    void showUpdaterError(const UpdateError& error, UpdateAction acknowledgement) override;
    void showDownloadInitiated(UpdateAction cancellation) override;
    void showDownloadDidReceiveExpectedContentLength(std::uint64_t expectedContentLength) override;
    void showDownloadDidReceiveData(std::uint64_t length) override;
    void showDownloadDidStartExtractingUpdate() override;
    void showExtractionReceivedProgress(double progress) override;
    void showReadyToInstallAndRelaunch(UpdateReply reply) override;
    void showInstallingUpdate(bool applicationTerminated, UpdateAction retryTerminatingApplication) override;
    void showUpdateInstalledAndRelaunched(bool relaunched, UpdateAction acknowledgement) override;
    void dismissUpdateInstallation() override;
    void updaterDidNotFindUpdate(const UpdateError& error) override;
    void didFinishUpdateCycleFor(UpdateCheck check, const Outcome<UpdateError>& outcome) override;

signals:
    /// Anything above has another value.
    void changed();

private:
    /// Under which the marker of an installation is kept.
    static constexpr std::string_view relaunchKey = "vantoro.updates.relaunch";

    void setPhase(Phase phase);
    void fail(const UpdateError& error);
    void checkWhenFree();
    /// Does the work once the updater is free, unless the phase is another by then.
    void whenUpdaterIsFree(std::function<void()> work, int attempt = 0);
    /// Back to idle after a while, unless the phase is another by then.
    void retireLater();
    void proceedWithFoundUpdate();
    void remember(const Release& release);
    void forgetRemembered();
    void forgetAvailability();
    void cancelledBeforeHandover();
    bool isUnderWay() const {
        return phase_.kind == Phase::Kind::downloading || phase_.kind == Phase::Kind::installing;
    }

    std::shared_ptr<UpdateEngine> engine_;
    UpdateEngine* updater_ = nullptr; // the engine, once it runs
    Settings& settings_;
    UpdatesEnvironment environment_;
    Phase phase_;
    std::uint64_t phaseNumber_ = 0;
    double progress_ = 0;
    bool announcesUpdate_ = false;
    bool wantsSettings_ = false;
    bool revealsUpdatesInSettings_ = false;
    bool installRequested_ = false;
    bool installsWhenFound_ = false;
    bool handedOver_ = false;
    /// What failed last was an install, not a mere check.
    bool installFailed_ = false;
    Origin installOrigin_ = Origin::controlBar;
    std::uint64_t expectedBytes_ = 0;
    std::uint64_t receivedBytes_ = 0;
    /// The answer that the engine waits for after an update was found.
    UpdateReply reply_;
    /// While a download runs.
    UpdateAction cancellation_;
    /// The found update can only be read about.
    bool isInformationOnly_ = false;
};

} // namespace vantoro
