#include "Platform/Linux/Updates/FeedRequest.h"

#include <chrono>
#include <utility>

namespace vantoro {

using namespace std::chrono_literals;

FeedRequest::FeedRequest(UpdateRequests& requests, const QUrl& url, std::function<void(Result)> done)
    : url_(url), done_(std::move(done)), reply_(requests.get(url)) {
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
    // It reads what this owns; milliseconds, the feed's bounds see to that.
    if (parser_)
        parser_->wait();
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
        bytes_ += reply_->read(mostAppcastBytes + 1 - bytes_.size());
    if (bytes_.size() > mostAppcastBytes)
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
        parse();
}

void FeedRequest::parse() {
    deadline_.stop();
    parser_.reset(QThread::create([this] { entries_ = parseAppcast(bytes_, url_); }));
    connect(parser_.get(), &QThread::finished, this, &FeedRequest::parsed);
    parser_->start();
    if (!parser_->isRunning() && !parser_->isFinished())
        answer(sparkleError(SparkleCode::temporaryDirectory, "no thread starts that could read the feed"));
}

void FeedRequest::parsed() {
    parser_->wait();
    if (entries_)
        answer(std::move(*entries_));
    else
        answer(sparkleError(SparkleCode::appcastParse, "what the server gives is no feed"));
}

void FeedRequest::answer(Result result) {
    if (!done_)
        return;
    const auto done = std::exchange(done_, nullptr);
    cancel();
    // Whoever is told may destroy this.
    done(std::move(result));
}

} // namespace vantoro
