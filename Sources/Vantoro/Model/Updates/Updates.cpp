#include "Model/Updates/Updates.h"

#include "Model/Live/Log.h"
#include "Model/Live/Settings.h"
#include "Model/Text/Release.h"
#include "Platform/Posix/Clocks.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <QPointer>
#include <QTimer>

namespace vantoro {

namespace {

using Kind = UpdatePhase::Kind;

constexpr double secondsBetweenAttempts = 0.25;
constexpr int lastAttempt = 39;
constexpr double secondsBeforeFollowUp = 0.5;
constexpr double secondsOnShow = 8;

constexpr double downloadShare = 0.9;
constexpr double extractionStart = 0.94;
constexpr double extractionShare = 0.04;

UpdatesEnvironment withDefaults(UpdatesEnvironment environment) {
    if (!environment.now)
        environment.now = unixSeconds;
    if (!environment.after)
        environment.after = [](double seconds, std::function<void()> action) {
            QTimer::singleShot(std::chrono::milliseconds(std::lround(seconds * 1000)), std::move(action));
        };
    return environment;
}

Release releaseOf(const AppcastItem& item) {
    return {.version = plainVersion(item.displayVersionString),
            .build = plainVersion(item.versionString),
            .notes = item.itemDescription ? std::optional(plainNotes(*item.itemDescription)) : std::nullopt};
}

void call(const UpdateAction& action) {
    if (action)
        action();
}

} // namespace

Updates::Updates(std::shared_ptr<UpdateEngine> engine, Settings& settings, UpdatesEnvironment environment)
    : engine_(std::move(engine)), settings_(settings), environment_(withDefaults(std::move(environment))) {
    if (std::optional<Release> release = restoredAvailability()) {
        phase_ = {.kind = Kind::available, .release = std::move(release)};
        announcesUpdate_ = true;
    }
}

Updates::~Updates() = default;

bool Updates::takeWantsSettings() {
    return std::exchange(wantsSettings_, false);
}

std::string Updates::currentVersion() const {
    return engine_ ? engine_->currentVersion() : std::string();
}

std::string Updates::currentBuild() const {
    return engine_ ? engine_->currentBuild() : std::string();
}

bool Updates::isInformationOnly() const {
    return isInformationOnly_ || (updater_ != nullptr && !updater_->canInstallUpdates());
}

bool Updates::canCancel() const {
    return phase_.kind == Kind::downloading && cancellation_;
}

bool Updates::automaticallyChecksForUpdates() const {
    return updater_ != nullptr && updater_->automaticallyChecksForUpdates();
}

void Updates::setAutomaticallyChecksForUpdates(bool automatic) {
    if (updater_ == nullptr)
        return;
    updater_->setAutomaticallyChecksForUpdates(automatic);
    Log::updates(fmt::format("automatic checks {}", automatic ? "on" : "off"));
    emit changed();
}

std::optional<double> Updates::lastUpdateCheckDate() const {
    return updater_ != nullptr ? updater_->lastUpdateCheckDate() : std::nullopt;
}

void Updates::start() {
    const std::optional<std::string> feed = engine_ ? engine_->feedAddress() : std::nullopt;
    if (!feed) {
        Log::updates("no SUFeedURL in this bundle — updater not started");
        return;
    }
    if (const auto started = engine_->startUpdater(*this); started.failed()) {
        fmt::print(stderr, "Vantoro: updater could not start — {}\n", started.fault().description);
        return;
    }
    updater_ = engine_.get();
    Log::updates("started · feed " + *feed);
    emit changed();
}

void Updates::check() {
    if (updater_ == nullptr || isUnderWay() || phase_.kind == Kind::checking)
        return;
    installRequested_ = false;
    checkWhenFree();
}

void Updates::install(Origin origin) {
    if (updater_ == nullptr || isUnderWay() || (reply_ && isInformationOnly_))
        return;
    installRequested_ = true;
    installOrigin_ = origin;
    if (reply_) {
        proceedWithFoundUpdate();
    } else if (phase_.kind != Kind::checking) {
        checkWhenFree();
    }
}

void Updates::tryAgain(Origin origin) {
    if (installFailed_ && knownRelease())
        install(origin);
    else
        check();
}

void Updates::cancel() {
    if (canCancel())
        std::exchange(cancellation_, nullptr)();
}

void Updates::checkForUpdatesInBackground() {
    if (updater_ != nullptr)
        updater_->checkForUpdatesInBackground();
}

void Updates::windowWasSeen() {
    // Told also where it checks for nothing: this version has started.
    if (engine_)
        engine_->windowWasSeen();
}

void Updates::setProgress(double progress) {
    const double shown = progress > 0 ? std::round(std::min(progress, 1.0) * 100) / 100 : 0;
    if (shown == progress_)
        return;
    progress_ = shown;
    emit changed();
}

void Updates::showUserInitiatedUpdateCheck(UpdateAction /*cancellation*/) {
    if (!isUnderWay())
        setPhase({.kind = Kind::checking});
}

void Updates::showUpdateFound(const AppcastItem& item, const UserUpdateState& /*state*/, UpdateReply reply) {
    Release release = releaseOf(item);
    expectedBytes_ = item.contentLength;
    receivedBytes_ = 0;
    isInformationOnly_ = item.isInformationOnlyUpdate;
    handedOver_ = false;
    installRequested_ = installRequested_ || installsWhenFound_;
    reply_ = std::move(reply);
    remember(release);
    setPhase({.kind = Kind::available, .release = std::move(release)});
    // What was found is seen before it begins to move.
    environment_.after(secondsBeforeFollowUp, [self = QPointer(this)] {
        if (!self || !self->reply_)
            return;
        if (self->installRequested_ && !self->isInformationOnly_)
            return self->install(self->installOrigin_);
        // The updater is set free: whoever installs later has the feed asked anew.
        self->installRequested_ = false;
        std::exchange(self->reply_, {})(UpdateChoice::dismiss);
    });
}

void Updates::showUpdateReleaseNotes(const std::string& notes) {
    if (!phase_.release)
        return;
    Phase phase = phase_;
    phase.release->notes = plainNotes(notes);
    setPhase(std::move(phase));
}

void Updates::showUpdateNotFoundWithError(const UpdateError& error, UpdateAction acknowledgement) {
    installRequested_ = false;
    forgetAvailability();
    if (error.latestItem && error.noUpdateReason == reasonSystemIsTooOld) {
        setPhase({.kind = Kind::needsNewerSystem, .release = releaseOf(*error.latestItem)});
    } else {
        setPhase({.kind = Kind::current});
        retireLater();
    }
    call(acknowledgement);
}

void Updates::showUpdaterError(const UpdateError& error, UpdateAction acknowledgement) {
    fail(error);
    call(acknowledgement);
}

void Updates::showDownloadInitiated(UpdateAction cancellation) {
    cancellation_ = std::move(cancellation);
    receivedBytes_ = 0;
    setProgress(0);
    setPhase({.kind = Kind::downloading, .release = knownRelease()});
    emit changed();
}

void Updates::showDownloadDidReceiveExpectedContentLength(std::uint64_t expectedContentLength) {
    expectedBytes_ = expectedContentLength;
}

void Updates::showDownloadDidReceiveData(std::uint64_t length) {
    receivedBytes_ += length;
    if (expectedBytes_ > 0)
        setProgress(std::min(static_cast<double>(receivedBytes_) / static_cast<double>(expectedBytes_), 1.0) *
                    downloadShare);
}

void Updates::showDownloadDidStartExtractingUpdate() {
    // It was the download's.
    cancellation_ = nullptr;
    setProgress(extractionStart);
}

void Updates::showExtractionReceivedProgress(double progress) {
    setProgress(progress > 0 ? extractionStart + extractionShare * std::min(progress, 1.0) : extractionStart);
}

void Updates::showReadyToInstallAndRelaunch(UpdateReply reply) {
    settings_.storeText(
        relaunchKey,
        encoded(Relaunch{.fromBuild = currentBuild(), .at = environment_.now(), .origin = installOrigin_}));
    // The next program reads it; this one may not come to its usual end.
    settings_.sync();
    handedOver_ = true;
    setPhase({.kind = Kind::installing, .release = knownRelease()});
    reply(UpdateChoice::install);
}

void Updates::showInstallingUpdate(bool /*applicationTerminated*/, UpdateAction /*retryTerminatingApplication*/) {
    setPhase({.kind = Kind::installing, .release = knownRelease()});
}

void Updates::showUpdateInstalledAndRelaunched(bool /*relaunched*/, UpdateAction acknowledgement) {
    call(acknowledgement);
}

void Updates::dismissUpdateInstallation() {
    reply_ = nullptr;
    cancellation_ = nullptr;
    cancelledBeforeHandover();
}

void Updates::updaterDidNotFindUpdate(const UpdateError& error) {
    Log::updates("no update found: " + error.description);
    // What was announced can have been withdrawn.
    forgetAvailability();
    if (phase_.kind == Kind::available)
        setPhase({});
}

void Updates::didFinishUpdateCycleFor(UpdateCheck check, const Outcome<UpdateError>& outcome) {
    if (outcome.failed())
        Log::updates(fmt::format("finished: {} {} {}", outcome.fault().domain, outcome.fault().code,
                                 outcome.fault().description));
    // The last check's time is another now, and a check that ended without a word has to end here.
    if (check == UpdateCheck::byUser && phase_.kind == Kind::checking) {
        if (outcome.failed())
            fail(outcome.fault());
        else
            setPhase({});
    }
    emit changed();
}

void Updates::setPhase(Phase phase) {
    if (phase == phase_)
        return;
    phase_ = std::move(phase);
    ++phaseNumber_;
    Log::updates("phase " + logText(phase_));
    emit changed();
}

void Updates::fail(const UpdateError& error) {
    Log::updates(fmt::format("error: {} {} {}", error.domain, error.code, error.description));
    const Words words = describe(error, system());
    installFailed_ = installRequested_ || isUnderWay();
    installRequested_ = false;
    reply_ = nullptr;
    cancellation_ = nullptr;
    // Nothing was handed over after all.
    if (std::exchange(handedOver_, false))
        settings_.forget(relaunchKey);
    setPhase({.kind = Kind::failed, .release = knownRelease(), .message = words.message, .detail = words.detail});
}

void Updates::checkWhenFree() {
    setPhase({.kind = Kind::checking});
    whenUpdaterIsFree([this] { updater_->checkForUpdates(); });
}

void Updates::whenUpdaterIsFree(std::function<void()> work, int attempt) {
    if (attempt > lastAttempt) {
        installFailed_ = std::exchange(installRequested_, false);
        setPhase({.kind = Kind::failed,
                  .release = knownRelease(),
                  .message = "The update didn't start.",
                  .detail = "The updater stayed busy. Try again in a moment."});
    } else if (updater_->canCheckForUpdates()) {
        work();
    } else {
        // What kept the updater busy can have brought what is waited for, or something else to do.
        environment_.after(secondsBetweenAttempts,
                           [self = QPointer(this), work = std::move(work), attempt, number = phaseNumber_] {
                               if (self && self->phaseNumber_ == number)
                                   self->whenUpdaterIsFree(work, attempt + 1);
                           });
    }
}

void Updates::retireLater() {
    environment_.after(secondsOnShow, [self = QPointer(this), number = phaseNumber_] {
        if (self && self->phaseNumber_ == number)
            self->setPhase({});
    });
}

void Updates::proceedWithFoundUpdate() {
    receivedBytes_ = 0;
    setProgress(0);
    setPhase({.kind = Kind::downloading, .release = knownRelease()});
    std::exchange(reply_, {})(UpdateChoice::install);
}

void Updates::cancelledBeforeHandover() {
    if (!handedOver_ && isUnderWay())
        fail({.domain = std::string(sparkleErrorDomain),
              .code = SparkleCode::installationCanceled,
              .description = "dismissed before the hand-over"});
}

} // namespace vantoro
