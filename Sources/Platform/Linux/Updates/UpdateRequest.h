// What every request of the updater's looks like, and the one for the feed.
#pragma once

#include "Platform/Linux/Updates/Appcast.h"
#include "Platform/Linux/Updates/Copy/PreparationProtocol.h"

#include <memory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>
#include <string>
#include <variant>

namespace vantoro {

/// Carries the program's version and nothing about the machine or its user: no language, no cookie, nothing kept. Goes
/// over https only, also where it is sent on to, and gives up after 30 s of silence.
class UpdateRequests {
public:
    /// `authorities`: certificates (PEM) to trust beside the system's.
    UpdateRequests(std::string version, std::string authorities);

    /// From that byte on. A null reply stands for an address that is not https.
    std::unique_ptr<QNetworkReply> get(const QUrl& url, qint64 offset = 0);
    /// Gives back what connections hold.
    void close() { manager_.reset(); }

private:
    std::string version_;
    std::string authorities_;
    std::unique_ptr<QNetworkAccessManager> manager_;
};

/// 0 before there is an answer.
int httpStatus(const QNetworkReply& reply);

/// A request that failed: in the URL loading domain for the connection's failures, else with the code given.
UpdateError requestError(const QNetworkReply& reply, int code);

/// One fetch. What came is read on a thread of its own, which hands over what it has read when it ends.
class FeedRequest : public QObject {
    Q_OBJECT
public:
    using Result = std::variant<std::vector<AppcastEntry>, UpdateError>;

    /// `done` is told once, never before this returns: the feed's entries, or what went wrong. A feed above
    /// `mostAppcastBytes` and one that takes longer than a minute are broken off.
    FeedRequest(UpdateRequests& requests, const QUrl& url, std::function<void(Result)> done);
    ~FeedRequest() override;

    /// Ends it without a word, also from within its own telling.
    void cancel();

private:
    void read();
    void finish();
    void parse();
    void parsed();
    void answer(Result result);

    QUrl url_;
    std::function<void(Result)> done_;
    std::unique_ptr<QNetworkReply> reply_;
    QByteArray bytes_;
    /// The thread's until it has ended.
    std::optional<std::vector<AppcastEntry>> entries_;
    std::unique_ptr<QThread> parser_;
    QTimer deadline_;
};

} // namespace vantoro
