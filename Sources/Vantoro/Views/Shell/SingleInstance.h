// One program a user and kind of run: a second launch raises the first one's window and ends.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

namespace vantoro {

class SingleInstance : public QObject {
    Q_OBJECT
public:
    /// `name` tells kinds of run apart.
    explicit SingleInstance(const QString& name, QObject* parent = nullptr);

    /// Whether another one runs; it has been told by then. Otherwise this is the one, and it listens. Where nothing can
    /// be listened on, every launch is one of its own.
    bool isSecond();

signals:
    /// Another launch asks this one to show itself.
    void raised();

private:
    void greet();

    QString name_;
    QLocalServer server_;
};

} // namespace vantoro
