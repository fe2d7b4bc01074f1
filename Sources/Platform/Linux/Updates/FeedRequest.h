// Fetches and reads the feed.
#pragma once

#include "Platform/Linux/Updates/Appcast.h"
#include "Platform/Linux/Updates/UpdateRequest.h"

#include <QThread>
#include <QTimer>
#include <variant>

namespace vantoro {

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
