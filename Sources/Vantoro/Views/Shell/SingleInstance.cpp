#include "Views/Shell/SingleInstance.h"

#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>

namespace vantoro {

namespace {

/// In the user's own runtime folder, where nobody else can put a socket; the name is the same for all of the user's
/// launches.
QString socketPath(const QString& name) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? name : QDir(folder).filePath(name);
}

} // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent) : QObject(parent), name_(socketPath(name)) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::greet);
}

bool SingleInstance::isSecond() {
    constexpr int patienceMilliseconds = 500;
    QLocalSocket first;
    first.connectToServer(name_);
    if (first.waitForConnected(patienceMilliseconds)) {
        // One that hangs does not answer: it is as good as none.
        if (first.waitForReadyRead(patienceMilliseconds))
            return true;
    }
    // What a program that crashed has left behind.
    QLocalServer::removeServer(name_);
    server_.listen(name_);
    return false;
}

void SingleInstance::greet() {
    while (QLocalSocket* const visitor = server_.nextPendingConnection()) {
        connect(visitor, &QLocalSocket::disconnected, visitor, &QObject::deleteLater);
        visitor->write("here\n");
        visitor->flush();
        visitor->disconnectFromServer();
        emit raised();
    }
}

} // namespace vantoro
