#include "Platform/Linux/Updates/UpdateServer.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <QFile>
#include <QSslKey>
#include <QSslSocket>

namespace vantoro::testing {

namespace {

QByteArray fixture(const char* name) {
    QFile file(QString(VANTORO_FIXTURES) + "/updates/" + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

UpdateServer::UpdateServer() {
    // The loopback address is not reached by way of others, for the programs that a test starts either.
    for (const char* const name : {"http_proxy", "https_proxy", "all_proxy", "HTTP_PROXY", "HTTPS_PROXY", "ALL_PROXY"})
        ::unsetenv(name);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(fixture("server-certificate.pem")));
    configuration.setPrivateKey(QSslKey(fixture("server-key.pem"), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    server_.setSslConfiguration(configuration);
    server_.listen(QHostAddress::LocalHost);
    plainServer_.listen(QHostAddress::LocalHost);
    for (QTcpServer* const server : {static_cast<QTcpServer*>(&server_), &plainServer_})
        connect(server, &QTcpServer::pendingConnectionAvailable, this, [this, server] {
            while (QTcpSocket* const socket = server->nextPendingConnection())
                greet(socket);
        });
}

std::string UpdateServer::address(const std::string& path) const {
    return fmt::format("https://127.0.0.1:{}{}", server_.serverPort(), path);
}

std::string UpdateServer::plainAddress(const std::string& path) const {
    return fmt::format("http://127.0.0.1:{}{}", plainServer_.serverPort(), path);
}

std::string UpdateServer::authorities() {
    return fixture("server-certificate.pem").toStdString();
}

int UpdateServer::requestsFor(const std::string& path) const {
    return static_cast<int>(std::ranges::count_if(
        requests, [&](const std::string& head) { return head.starts_with("GET " + path + " "); }));
}

void UpdateServer::greet(QTcpSocket* socket) {
    const auto head = std::make_shared<std::string>();
    const auto read = [this, socket, head] {
        *head += socket->readAll().toStdString();
        if (head->ends_with("\r\n\r\n"))
            answer(*socket, std::exchange(*head, {}));
    };
    connect(socket, &QTcpSocket::readyRead, this, read);
    if (auto* const secure = qobject_cast<QSslSocket*>(socket))
        connect(secure, &QSslSocket::encryptedBytesWritten, socket, &QTcpSocket::bytesWritten);
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    read();
}

void UpdateServer::answer(QTcpSocket& socket, const std::string& head) {
    requests.push_back(head);
    const std::string path = head.substr(4, head.find(' ', 4) - 4);
    const auto found = resources.find(path);
    const Resource resource = found == resources.end() ? Resource{.status = 404} : found->second;
    std::string header;
    qint64 offset = 0;
    if (!resource.redirect.empty()) {
        header = fmt::format("HTTP/1.1 302 Found\r\nLocation: {}\r\n", resource.redirect);
    } else {
        const std::size_t range = head.find("Range: bytes=");
        if (range != std::string::npos && resource.supportsRanges)
            offset = std::stoll(head.substr(range + 13));
        header = fmt::format("HTTP/1.1 {} Answer\r\n", offset > 0 ? 206 : resource.status);
        if (offset > 0)
            header += fmt::format("Content-Range: bytes {}-{}/{}\r\n", offset, resource.body.size() - 1,
                                  resource.body.size());
    }
    if (!resource.hidesLength && (!resource.isEndless || resource.announcedLength))
        header +=
            fmt::format("Content-Length: {}\r\n", resource.announcedLength.value_or(resource.body.size()) - offset);
    socket.write(QByteArray::fromStdString(header + "Connection: close\r\n\r\n"));
    const QByteArray rest = resource.body.mid(offset);
    socket.write(resource.cutAfter ? rest.left(*resource.cutAfter) : rest);
    if (resource.isEndless)
        connect(&socket, &QTcpSocket::bytesWritten, &socket, [&socket, block = QByteArray(64 * 1024, ' ')] {
            auto* const secure = qobject_cast<QSslSocket*>(&socket);
            if (socket.bytesToWrite() + (secure != nullptr ? secure->encryptedBytesToWrite() : 0) < block.size())
                socket.write(block);
        });
    else if (!resource.isStuck)
        socket.disconnectFromHost();
}

} // namespace vantoro::testing
