// Fetches the feed.
#pragma once

#include "Platform/Linux/Updates/UpdateRequest.h"

#include <QTimer>
#include <variant>

namespace vantoro {

/// One fetch.
class FeedRequest : public QObject {
    Q_OBJECT
public:
    static constexpr qint64 mostBytes = 1024 * 1024;

    /// `done` is told once, never before this returns: the feed, or what went wrong. A feed above `mostBytes` and one
    /// that takes longer than a minute are broken off.
    FeedRequest(UpdateRequests& requests, const QUrl& url,
                std::function<void(std::variant<QByteArray, UpdateError>)> done);
    ~FeedRequest() override;

    /// Ends it without a word, also from within its own telling.
    void cancel();

private:
    void read();
    void finish();
    void answer(std::variant<QByteArray, UpdateError> result);

    std::function<void(std::variant<QByteArray, UpdateError>)> done_;
    std::unique_ptr<QNetworkReply> reply_;
    QByteArray bytes_;
    QTimer deadline_;
};

} // namespace vantoro
