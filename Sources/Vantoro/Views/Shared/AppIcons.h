// The desktop's icons of applications.
#pragma once

#include <QHash>
#include <QPixmap>
#include <QString>

namespace vantoro {

/// Keeps what it has looked up, also that there was nothing.
class AppIcons {
public:
    /// The icon of a bundle or a desktop entry, square; null where the desktop has none.
    const QPixmap& pixmap(const QString& appPath, int size, double pixelRatio);

private:
    QHash<QString, QPixmap> found_;
};

} // namespace vantoro
