// What every request of the updater's looks like.
#pragma once

#include "Platform/Linux/Updates/Copy/UpdateErrors.h"

#include <memory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <string>

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

} // namespace vantoro
