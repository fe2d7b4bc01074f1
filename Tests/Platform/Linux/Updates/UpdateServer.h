// A small web server on the loopback address, over TLS with the tests' own certificate, that can misbehave.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <QByteArray>
#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpServer>
#include <string>
#include <vector>

namespace vantoro::testing {

/// What lies under a path, and how it is given out.
struct Resource {
    QByteArray body;
    int status = 200;
    /// Sent on to this address instead.
    std::string redirect;
    /// What is announced, where it is not the body's.
    std::optional<qint64> announcedLength;
    /// The connection is cut after so many bytes of each answer.
    std::optional<qint64> cutAfter;
    /// Goes on for ever after the body.
    bool isEndless = false;
    /// Nothing comes after the body, nor does the connection end.
    bool isStuck = false;
    bool supportsRanges = true;
    /// Its end is told by the connection's alone.
    bool hidesLength = false;
};

class UpdateServer : public QObject {
public:
    UpdateServer();

    std::string address(const std::string& path) const;
    /// The same without TLS, for redirects.
    std::string plainAddress(const std::string& path) const;
    static std::string authorities();

    std::map<std::string, Resource> resources;
    /// Every request's head, as it came.
    std::vector<std::string> requests;
    int requestsFor(const std::string& path) const;

private:
    void greet(QTcpSocket* socket);
    void answer(QTcpSocket& socket, const std::string& head);

    QSslServer server_;
    QTcpServer plainServer_;
};

} // namespace vantoro::testing
