#include "Platform/Linux/Updates/FeedRequest.h"

#include <chrono>
#include <utility>

namespace vantoro {

using namespace std::chrono_literals;

FeedRequest::FeedRequest(UpdateRequests& requests, const QUrl& url,
                         std::function<void(std::variant<QByteArray, UpdateError>)> done)
    : done_(std::move(done)), reply_(requests.get(url)) {
    deadline_.setSingleShot(true);
    connect(&deadline_, &QTimer::timeout, this, [this] {
        answer(reply_ ? sparkleError(SparkleCode::appcast, "the feed took too long")
                      : sparkleError(SparkleCode::appcast, "the feed's address is not https"));
    });
    deadline_.start(reply_ ? 60s : 0s);
    if (!reply_)
        return;
    connect(reply_.get(), &QNetworkReply::readyRead, this, &FeedRequest::read);
    connect(reply_.get(), &QNetworkReply::finished, this, &FeedRequest::finish);
}

FeedRequest::~FeedRequest() {
    cancel();
}

void FeedRequest::cancel() {
    done_ = nullptr;
    deadline_.stop();
    if (!reply_)
        return;
    reply_->disconnect(this);
    reply_->abort();
}

void FeedRequest::read() {
    // A redirect or an error page is no feed.
    if (httpStatus(*reply_) == 200)
        bytes_ += reply_->read(mostBytes + 1 - bytes_.size());
    if (bytes_.size() > mostBytes)
        answer(sparkleError(SparkleCode::appcastParse, "the feed is too large"));
}

void FeedRequest::finish() {
    read();
    if (!done_)
        return;
    if (reply_->error() != QNetworkReply::NoError)
        answer(requestError(*reply_, SparkleCode::appcast));
    else if (httpStatus(*reply_) != 200)
        answer(sparkleError(SparkleCode::appcast, "the server gives no feed"));
    else
        answer(std::move(bytes_));
}

void FeedRequest::answer(std::variant<QByteArray, UpdateError> result) {
    if (!done_)
        return;
    const auto done = std::exchange(done_, nullptr);
    cancel();
    // Whoever is told may destroy this.
    done(std::move(result));
}

} // namespace vantoro
