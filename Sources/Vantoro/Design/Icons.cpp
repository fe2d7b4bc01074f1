#include "Design/Icons.h"

#include <QFile>
#include <QPaintDevice>
#include <QPainter>
#include <QSvgRenderer>

/// The linker would leave the drawings of a static library out; the macro wants to stand outside any namespace.
static void takeDrawingsAlong() {
    Q_INIT_RESOURCE(icons);
}

namespace vantoro {

namespace {

QPixmap render(const QString& name, int size, const QColor& color, double pixelRatio) {
    takeDrawingsAlong();
    QFile file(QStringLiteral(":/icons/") + name + QStringLiteral(".svg"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray drawing = file.readAll();
    drawing.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(drawing);
    QPixmap pixmap(QSize(size, size) * pixelRatio);
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, QRectF(0, 0, size, size));
    return pixmap;
}

} // namespace

const QPixmap& Icons::pixmap(const QString& name, int size, const QColor& color, double pixelRatio) {
    // A theme has a few dozen of them; only a stream of ever new colours or sizes could make the store grow.
    constexpr qsizetype most = 400;
    if (rendered_.size() > most)
        rendered_.clear();
    const QString key = QStringLiteral("%1/%2/%3/%4").arg(name).arg(size).arg(color.rgba()).arg(pixelRatio);
    auto found = rendered_.find(key);
    if (found == rendered_.end())
        found = rendered_.insert(key, render(name, size, color, pixelRatio));
    return *found;
}

void Icons::draw(QPainter& painter, const QRectF& rectangle, const QString& name, int size, const QColor& color) {
    const QPointF corner = rectangle.center() - QPointF(size / 2.0, size / 2.0);
    painter.drawPixmap(corner, pixmap(name, size, color, painter.device()->devicePixelRatioF()));
}

} // namespace vantoro
