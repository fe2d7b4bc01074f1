#include "Platform/Linux/Updates/UpdateRequest.h"

#include <fmt/format.h>
#include <QNetworkProxyFactory>
#include <QSslCertificate>
#include <QSslConfiguration>

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

} // namespace vantoro
