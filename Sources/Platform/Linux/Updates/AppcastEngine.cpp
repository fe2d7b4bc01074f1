#include "Platform/Linux/Updates/AppcastEngine.h"

#include "Model/Text/Numbers.h"
#include "Model/Text/Release.h"
#include "Platform/Linux/Updates/Copy/PreparationProtocol.h"
#include "Platform/System.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <gnu/libc-version.h>
#include <QPointer>
#include <sys/utsname.h>
#include <unistd.h>
#include <utility>

namespace vantoro {

namespace {

constexpr std::string_view automaticKey = "vantoro.updates.automatic";
constexpr std::string_view lastCheckKey = "vantoro.updates.lastCheck";
constexpr std::string_view handedOverByKey = "vantoro.updates.handedOverBy";
constexpr std::string_view nextCheckKey = "vantoro.updates.nextCheck";

/// "linux-x86_64": what the feed's entries for this kind of machine say.
std::string systemName() {
    struct utsname names = {};
    ::uname(&names);
    return fmt::format("linux-{}", names.machine);
}

} // namespace

AppcastEngine::AppcastEngine(UpdateSetup setup, std::string preparer, std::function<double()> share)
    : setup_(std::move(setup))
    , preparer_(std::move(preparer))
    , share_(std::move(share))
    , copy_(setup_.program)
    , canBeReplaced_(!copy_.canBeReplaced().failed())
    , wasMadeByArchive_(copy_.wasMadeByArchive())
    , requests_(setup_.version, setup_.authorities) {
    untilCheck_.setSingleShot(true);
    untilCheck_.setTimerType(Qt::VeryCoarseTimer);
    connect(&untilCheck_, &QTimer::timeout, this, &AppcastEngine::checkWhenDue);
}

AppcastEngine::~AppcastEngine() {
    if (!session_)
        return;
    if (session_->preparation) {
        session_->preparation->disconnect(this);
        session_->preparation->kill();
        session_->preparation->waitForFinished();
    }
    if (!session_->isInstalled)
        session_->staging.remove();
}

std::optional<std::string> AppcastEngine::feedAddress() const {
    // Without a key nothing could ever be installed.
    return setup_.feed.empty() || setup_.publicKey.empty() ? std::nullopt : std::optional(setup_.feed);
}

int AppcastEngine::compareVersion(const std::string& version, const std::string& other) const {
    return compareVersions(version, other);
}

bool AppcastEngine::settlesHandOver() const {
    const std::string by = setup_.recall(handedOverByKey);
    const std::size_t end = by.find(' ');
    const auto process = parseInt32(by.substr(0, end));
    // The successor is the same process. Where that has ended since, whoever is started next from its copy stands in.
    if (!process || end == std::string::npos || *process == ::getpid())
        return true;
    const bool hasEnded = ::kill(*process, 0) != 0 && errno == ESRCH;
    return hasEnded && by.substr(end + 1) == copy_.program();
}

Outcome<UpdateError> AppcastEngine::startUpdater(UpdateDriver& driver) {
    const QUrl feed(QString::fromStdString(setup_.feed), QUrl::StrictMode);
    if (!feed.isValid() || feed.scheme() != "https")
        return sparkleError(SparkleCode::appcast, "the feed's address is not https");
    driver_ = &driver;
    return {};
}

void AppcastEngine::checkForUpdates() {
    if (!canCheckForUpdates())
        return;
    begin(UpdateCheck::byUser);
    driver_->showUserInitiatedUpdateCheck(cancellation());
}

void AppcastEngine::checkForUpdatesInBackground() {
    if (canCheckForUpdates())
        begin(UpdateCheck::inBackground);
}

void AppcastEngine::begin(UpdateCheck check) {
    ++sessionNumber_;
    session_ = std::make_unique<Session>();
    session_->check = check;
    session_->feed =
        std::make_unique<FeedRequest>(requests_, QUrl(QString::fromStdString(setup_.feed), QUrl::StrictMode),
                                      [this](FeedRequest::Result result) { answered(std::move(result)); });
}

void AppcastEngine::answered(FeedRequest::Result result) {
    // The request is still telling.
    session_->feed.release()->deleteLater();
    if (const UpdateError* error = std::get_if<UpdateError>(&result)) {
        fail(*error);
        return;
    }
    setup_.remember(lastCheckKey, fmt::format("{:.0f}", setup_.now()));
    AppcastChoice choice =
        chooseUpdate(std::get<std::vector<AppcastEntry>>(result), setup_.build, systemName(), ::gnu_get_libc_version());
    if (choice.update) {
        offer(std::move(*choice.update));
        return;
    }
    UpdateError none = sparkleError(SparkleCode::noUpdate, "the feed has nothing newer for this system");
    none.latestItem = std::move(choice.latest);
    none.noUpdateReason = choice.reason;
    driver_->updaterDidNotFindUpdate(none);
    if (session_->check == UpdateCheck::byUser)
        driver_->showUpdateNotFoundWithError(none, [] {});
    end({});
}

void AppcastEngine::offer(AppcastEntry entry) {
    const std::uint64_t length = entry.item.contentLength;
    if (!isPlainVersion(entry.item.versionString) || !isPlainVersion(entry.item.displayVersionString)) {
        fail(sparkleError(SparkleCode::appcastParse, "the newest entry's version is none"));
        return;
    }
    if (!entry.item.isInformationOnlyUpdate) {
        if (entry.signature.empty()) {
            fail(sparkleError(SparkleCode::insufficientSigning, "the newest entry is not signed"));
            return;
        }
        if (!entry.hasShortVersion) {
            fail(sparkleError(SparkleCode::appcastParse, "the newest entry has no short version"));
            return;
        }
        if (length == 0 || length > mostArchiveBytes) {
            fail(sparkleError(SparkleCode::appcastParse, fmt::format("an archive of {} bytes", length)));
            return;
        }
    }
    session_->entry = std::move(entry);
    driver_->showUpdateFound(
        session_->entry.item,
        {.stage = UserUpdateState::Stage::notDownloaded, .userInitiated = session_->check == UpdateCheck::byUser},
        replyTo([this] { download(); }));
}

UpdateReply AppcastEngine::replyTo(std::function<void()> accepted) {
    return [self = QPointer(this), number = sessionNumber_, accepted = std::move(accepted),
            isAnswered = false](UpdateChoice choice) mutable {
        if (!self || !self->session_ || self->sessionNumber_ != number || std::exchange(isAnswered, true))
            return;
        if (choice == UpdateChoice::install)
            accepted();
        else
            self->end({});
    };
}

UpdateAction AppcastEngine::cancellation() {
    return [self = QPointer(this), number = sessionNumber_] {
        // What is found and not answered yet is ended by its answer.
        if (self && self->session_ && self->sessionNumber_ == number &&
            (self->session_->feed || self->session_->download || self->session_->preparation))
            self->end(sparkleError(SparkleCode::installationCanceled, "cancelled"));
    };
}

void AppcastEngine::download() {
    if (session_->entry.item.isInformationOnlyUpdate) {
        end({});
        return;
    }
    if (!takeCopy())
        return;
    const AppcastEntry& entry = session_->entry;
    const std::string path = copy_.downloadPath(entry.signature);
    copy_.removeDownloadsBut(path);
    driver_->showDownloadInitiated(cancellation());
    driver_->showDownloadDidReceiveExpectedContentLength(entry.item.contentLength);
    session_->download = std::make_unique<ArchiveDownload>(
        requests_, entry.archive, entry.item.contentLength, path,
        DownloadListener{.received = [this](std::uint64_t bytes) { driver_->showDownloadDidReceiveData(bytes); },
                         .startedOver = [this] { driver_->showDownloadInitiated(cancellation()); },
                         .finished =
                             [this](const Outcome<UpdateError>& outcome) {
                                 if (outcome.failed())
                                     fail(outcome.fault());
                                 else
                                     prepare();
                             }});
    session_->download->start();
}

bool AppcastEngine::takeCopy() {
    // Asked anew: the folder can have changed hands since.
    if (const auto answer = copy_.canBeReplaced(); answer.failed()) {
        fail(sparkleError(SparkleCode::installationWriteNoPermission, answer.fault()));
        return false;
    }
    auto lock = copy_.lock();
    if (const UpdateError* error = std::get_if<UpdateError>(&lock)) {
        fail(*error);
        return false;
    }
    session_->copyLock = std::move(std::get<Descriptor>(lock));
    copy_.cleanUp(setup_.build);
    const auto installed = manifestIn(copy_.folder());
    const bool isInstalled = installed && compareVersions(installed->build, setup_.build) > 0 &&
                             compareVersions(installed->build, session_->entry.item.versionString) >= 0;
    session_->isInstalled = isInstalled;
    if (isInstalled)
        driver_->showReadyToInstallAndRelaunch(replyTo([this] { install(); }));
    return !isInstalled;
}

void AppcastEngine::prepare() {
    driver_->showDownloadDidStartExtractingUpdate();
    const AppcastEntry& entry = session_->entry;
    session_->download.release()->deleteLater(); // it is telling
    session_->staging = copy_.makeStagingFolder();
    if (!session_->staging) {
        fail(fileError(SparkleCode::installationWriteNoPermission, copy_.folder(), errno));
        return;
    }
    session_->preparation = std::make_unique<QProcess>();
    QProcess& preparation = *session_->preparation;
    connect(&preparation, &QProcess::readyReadStandardOutput, this, &AppcastEngine::readPreparation);
    connect(&preparation, &QProcess::finished, this, &AppcastEngine::prepared);
    connect(&preparation, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            fail(sparkleError(SparkleCode::unarchiving, preparer_ + " does not start"));
    });
    preparation.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments;
    for (const std::string& argument :
         {copy_.downloadPath(entry.signature), setup_.publicKey, entry.signature, entry.item.displayVersionString,
          entry.item.versionString, setup_.build, copy_.program(), session_->staging.copy()})
        arguments << QString::fromStdString(argument);
    // It works on for a moment where this program is killed: the folder stays locked for as long.
    preparation.setChildProcessModifier([lock = session_->staging.lock()] { ::fcntl(lock, F_SETFD, 0); });
    preparation.start(QString::fromStdString(preparer_), arguments);
}

void AppcastEngine::readPreparation() {
    while (session_ && session_->preparation && session_->preparation->canReadLine()) {
        const std::string line = session_->preparation->readLine().trimmed().toStdString();
        if (const auto share = parsePreparationProgress(line))
            driver_->showExtractionReceivedProgress(*share);
        else
            session_->outcome = line;
    }
}

void AppcastEngine::prepared() {
    readPreparation();
    session_->preparation.release()->deleteLater(); // it is telling
    // Used up, whichever way it went: what was refused must not be taken up again.
    ::unlink(copy_.downloadPath(session_->entry.signature).c_str());
    const PreparationOutcome outcome = parsePreparationOutcome(session_->outcome);
    if (const UpdateError* error = std::get_if<UpdateError>(&outcome)) {
        fail(*error);
        return;
    }
    driver_->showReadyToInstallAndRelaunch(replyTo([this] { install(); }));
}

void AppcastEngine::install() {
    if (!session_->isInstalled) {
        const AppcastItem& item = session_->entry.item;
        if (const auto exchanged = copy_.exchangeWith(session_->staging, item.versionString, item.displayVersionString);
            exchanged.failed()) {
            fail(exchanged.fault());
            return;
        }
        session_->isInstalled = true;
    }
    setup_.remember(handedOverByKey, fmt::format("{} {}", ::getpid(), copy_.program()));
    driver_->showInstallingUpdate(false, [] {});
    setup_.relaunch(copy_.program());
}

void AppcastEngine::fail(const UpdateError& error) {
    // Whoever did not ask is not told.
    if (session_->check == UpdateCheck::byUser || session_->download || session_->preparation ||
        !session_->entry.signature.empty())
        driver_->showUpdaterError(error, [] {});
    end(error);
}

void AppcastEngine::end(const Outcome<UpdateError>& outcome) {
    const std::unique_ptr<Session> ended = std::exchange(session_, nullptr);
    // Each of the two may be telling.
    if (ended->feed) {
        ended->feed->cancel();
        ended->feed.release()->deleteLater();
    }
    if (ended->download) {
        ended->download->cancel();
        ended->download.release()->deleteLater();
    }
    if (ended->preparation) {
        ended->preparation->disconnect(this);
        ended->preparation->kill();
        ended->preparation->waitForFinished();
        ended->preparation.release()->deleteLater();
    }
    if (!ended->isInstalled)
        ended->staging.remove();
    setup_.remember(nextCheckKey,
                    fmt::format("{:.0f}", nextAutomaticCheck(setup_.now(), true, outcome.failed(), share_())));
    planCheck();
    driver_->dismissUpdateInstallation();
    driver_->didFinishUpdateCycleFor(ended->check, outcome);
    // Connections and certificates are worth nothing until tomorrow.
    if (!session_)
        requests_.close();
    // Nor is what TLS needed, once the last of it has been let go of.
    QTimer::singleShot(std::chrono::seconds(1), this, [this] {
        if (!session_)
            releaseUnusedMemory();
    });
}

bool AppcastEngine::automaticallyChecksForUpdates() const {
    const std::string stored = setup_.recall(automaticKey);
    return stored.empty() ? canBeReplaced_ : stored == "1";
}

void AppcastEngine::setAutomaticallyChecksForUpdates(bool automatic) {
    setup_.remember(automaticKey, automatic ? "1" : "0");
    planCheck();
}

std::optional<double> AppcastEngine::lastUpdateCheckDate() const {
    return recalled(lastCheckKey);
}

void AppcastEngine::windowWasSeen() {
    if (std::exchange(windowWasSeen_, true))
        return;
    // This copy has started: nobody needs the one before it any more.
    startSucceeded();
    copy_.cleanUp(setup_.build);
    planCheck();
}

void AppcastEngine::planCheck() {
    using namespace std::chrono;
    // A session's end plans anew.
    if (!windowWasSeen_ || driver_ == nullptr || session_ || !automaticallyChecksForUpdates()) {
        untilCheck_.stop();
        return;
    }
    const double now = setup_.now();
    const std::optional<double> stored = recalled(nextCheckKey);
    const double planned = plannedCheck(stored, now, share_());
    if (planned != stored)
        setup_.remember(nextCheckKey, fmt::format("{:.0f}", planned));
    // Timers stand still while the machine sleeps: the clock is looked at once an hour.
    constexpr double longestWait = 3600;
    const double wait = planned <= now ? 0 : std::clamp(planned - now, 1.0, longestWait);
    untilCheck_.start(duration_cast<milliseconds>(duration<double>(wait)));
}

void AppcastEngine::checkWhenDue() {
    if (recalled(nextCheckKey).value_or(0) <= setup_.now() && canCheckForUpdates())
        checkForUpdatesInBackground();
    else
        planCheck();
}

std::optional<double> AppcastEngine::recalled(std::string_view key) const {
    return parseDecimal(setup_.recall(key));
}

} // namespace vantoro
