// What the desktop asks of every program's looks: dark or light, its accent, less motion, more contrast, larger
// text.
#pragma once

#include "Platform/SystemLooks.h"

#include <memory>
#include <QObject>

class QDBusMessage;

namespace vantoro {

class Theme;

/// Keeps a theme as the desktop and the user's choice want it, for as long as it lives.
class LooksFollower : public QObject {
    Q_OBJECT
public:
    /// `source` is the system's own account where it has one (null: the desktop portal is asked over D-Bus, and without
    /// one the palette and the font that Qt was given).
    LooksFollower(Theme& theme, std::shared_ptr<SystemLooks> source, QObject* parent = nullptr);
    ~LooksFollower() override;

    /// "light", "dark", or anything else for the system's; at once.
    void applyAppearance(const QString& name);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void portalSettingChanged(const QDBusMessage& message);

private:
    void follow();
    void askPortal();

    Theme& theme_;
    std::shared_ptr<SystemLooks> source_;
    QString chosen_;
    SystemLooks::State portal_;
};

} // namespace vantoro
