// The update engine where no framework of the system's brings one: a signed appcast over https, and a copy of the
// program that an archive made and that is exchanged as a whole.
#pragma once

#include "Platform/Linux/Updates/Appcast.h"
#include "Platform/Linux/Updates/ArchiveDownload.h"
#include "Platform/Linux/Updates/Copy/InstalledCopy.h"
#include "Platform/Linux/Updates/UpdateRequest.h"
#include "Platform/UpdateEngine.h"

#include <optional>
#include <QProcess>

namespace vantoro {

/// Seconds since 1970 of the next automatic check, once a day and up to an hour later, so that many machines that were
/// started together do not come together. `share` of that hour, 0 to 1, is drawn by the caller. Never before: within
/// the hour. After a check that failed: an hour on instead of a day.
inline double nextAutomaticCheck(double now, bool hasChecked, bool failed, double share) {
    constexpr double hour = 3600;
    const double pause = !hasChecked ? 0 : failed ? hour : 24 * hour;
    return now + pause + share * hour;
}

/// The stored time, or `nextAutomaticCheck` where none is stored or the clock was put back since, which would put the
/// check off for as long.
inline double plannedCheck(std::optional<double> stored, double now, double share) {
    constexpr double longestPause = 25 * 3600;
    const bool isPlausible = stored && *stored <= now + longestPause;
    return isPlausible ? *stored : nextAutomaticCheck(now, false, false, share);
}

/// One session at a time: asking the feed, then, when the driver's answer is to install, downloading, preparing and
/// exchanging. Nothing of the running copy is touched before its successor lies checked beside it.
class AppcastEngine : public QObject, public UpdateEngine {
    Q_OBJECT
public:
    /// The largest archive that is fetched.
    static constexpr std::uint64_t mostArchiveBytes = 512ULL * 1024 * 1024;

    /// `preparer`: the program that checks and unpacks an archive. It is one of its own so that what it needs is loaded
    /// on the day of an update only, and so that an archive which breaks it breaks nothing else. `share` draws numbers
    /// from 0 to 1, for the hour within which an automatic check comes.
    AppcastEngine(UpdateSetup setup, std::string preparer, std::function<double()> share);
    ~AppcastEngine() override;

    std::optional<std::string> feedAddress() const override;
    std::string currentVersion() const override { return setup_.version; }
    std::string currentBuild() const override { return setup_.build; }
    int compareVersion(const std::string& version, const std::string& other) const override;
    bool canInstallUpdates() const override { return wasMadeByArchive_; }
    bool settlesHandOver() const override;
    Outcome<UpdateError> startUpdater(UpdateDriver& driver) override;
    bool canCheckForUpdates() const override { return driver_ != nullptr && !session_; }
    void checkForUpdates() override;
    void checkForUpdatesInBackground() override;
    bool automaticallyChecksForUpdates() const override;
    void setAutomaticallyChecksForUpdates(bool automatic) override;
    std::optional<double> lastUpdateCheckDate() const override;
    void windowWasSeen() override;

private:
    /// What one check has come to.
    struct Session {
        UpdateCheck check = UpdateCheck::byUser;
        std::unique_ptr<FeedRequest> feed;
        AppcastEntry entry;
        std::unique_ptr<ArchiveDownload> download;
        /// Checks and unpacks the archive.
        std::unique_ptr<QProcess> preparation;
        /// The last thing it said.
        std::string outcome;
        /// Hold the copy, and what is being made of its successor, against other instances.
        Descriptor copyLock;
        UpdateFolder staging;
        /// Another instance has put the release in the copy's place already.
        bool isInstalled = false;
    };

    void begin(UpdateCheck check);
    void answered(FeedRequest::Result result);
    void offer(AppcastEntry entry);
    void download();
    /// Gets hold of the copy and sees whether it can be replaced; false when the session has gone another way.
    bool takeCopy();
    void prepare();
    void prepared();
    void install();
    void fail(const UpdateError& error);
    void end(const Outcome<UpdateError>& outcome);
    /// The answer to what is offered, which the driver may keep for as long as it likes.
    UpdateReply replyTo(std::function<void()> accepted);
    /// Ends this session while it fetches or prepares; nothing at any other time.
    UpdateAction cancellation();
    void readPreparation();
    void planCheck();
    void checkWhenDue();
    std::optional<double> recalled(std::string_view key) const;

    UpdateSetup setup_;
    std::string preparer_;
    std::function<double()> share_;
    InstalledCopy copy_;
    /// Read once: it does not change while the program runs.
    bool canBeReplaced_;
    bool wasMadeByArchive_;
    UpdateRequests requests_;
    UpdateDriver* driver_ = nullptr;
    std::unique_ptr<Session> session_;
    /// Of the session that replies belong to.
    std::uint64_t sessionNumber_ = 0;
    bool windowWasSeen_ = false;
    QTimer untilCheck_;
};

} // namespace vantoro
