#include "Platform/Linux/Updates/UpdateRequest.h"

#include <chrono>
#include <fmt/format.h>
#include <QNetworkProxyFactory>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <utility>

namespace vantoro {

namespace {

constexpr int silenceMilliseconds = 30'000;
constexpr int mostRedirects = 5;
/// What is not read yet waits with the sender, not in memory.
constexpr qint64 bufferBytes = 256 * 1024;

QSslConfiguration trusting(const std::string& authorities) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(QSslCertificate::fromData(QByteArray::fromStdString(authorities)));
    return configuration;
}

} // namespace

UpdateRequests::UpdateRequests(std::string version, std::string authorities)
    : version_(std::move(version)), authorities_(std::move(authorities)) {}

std::unique_ptr<QNetworkReply> UpdateRequests::get(const QUrl& url, qint64 offset) {
    if (url.scheme() != "https" || url.host().isEmpty())
        return nullptr;
    if (!manager_) {
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        manager_ = std::make_unique<QNetworkAccessManager>();
    }
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", QByteArray::fromStdString(fmt::format("Vantoro/{}", version_)));
    // Qt would tell the user's language, and unpack what is packed, which a length does not bound.
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("Accept-Encoding", "identity");
    if (offset > 0)
        request.setRawHeader("Range", QByteArray::fromStdString(fmt::format("bytes={}-", offset)));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setTransferTimeout(silenceMilliseconds);
    if (!authorities_.empty())
        request.setSslConfiguration(trusting(authorities_));
    std::unique_ptr<QNetworkReply> reply(manager_->get(request));
    reply->setParent(nullptr);
    reply->setReadBufferSize(bufferBytes);
    return reply;
}

int httpStatus(const QNetworkReply& reply) {
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

UpdateError requestError(const QNetworkReply& reply, int code) {
    UpdateError error = sparkleError(code, reply.errorString().toStdString());
    // Below 200: what never came to an answer.
    if (reply.error() < QNetworkReply::ContentAccessDenied && reply.error() != QNetworkReply::InsecureRedirectError &&
        reply.error() != QNetworkReply::TooManyRedirectsError) {
        error.domain = urlErrorDomain;
        error.code = reply.error();
    }
    return error;
}

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
