// The drawings of the interface by symbol name, in any colour and size, and the desktop's icons of applications.
#pragma once

#include <QColor>
#include <QHash>
#include <QPixmap>
#include <QString>

class QPainter;

namespace vantoro {

/// Keeps what it has rendered; an unknown name is an empty picture.
class Icons {
public:
    /// Square, `size` wide, for a screen of this pixel ratio.
    const QPixmap& pixmap(const QString& name, int size, const QColor& color, double pixelRatio);

    /// Draws it centred in the rectangle.
    void draw(QPainter& painter, const QRectF& rectangle, const QString& name, int size, const QColor& color);

    /// Forgets what it has rendered.
    void clear() { rendered_.clear(); }

private:
    QHash<QString, QPixmap> rendered_;
};

/// The desktop's icons of applications. Keeps what it has looked up, also that there was nothing.
class AppIcons {
public:
    /// The icon of a bundle or a desktop entry, square; null where the desktop has none.
    const QPixmap& pixmap(const QString& appPath, int size, double pixelRatio);

private:
    QHash<QString, QPixmap> found_;
};

} // namespace vantoro
