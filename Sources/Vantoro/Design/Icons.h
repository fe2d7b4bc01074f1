// The drawings of the interface by symbol name, in any colour and size.
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

} // namespace vantoro
