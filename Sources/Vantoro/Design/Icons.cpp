#include "Design/Icons.h"

#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QIcon>
#include <QPaintDevice>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>

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

namespace {

/// The name or path behind "Icon=" in the entry's own section.
QString iconOfEntry(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QTextStream lines(&file);
    bool isEntry = false;
    for (QString line; lines.readLineInto(&line);) {
        line = line.trimmed();
        if (line.startsWith(u'['))
            isEntry = line == QLatin1String("[Desktop Entry]");
        else if (isEntry && line.startsWith(QLatin1String("Icon=")))
            return line.mid(5).trimmed();
    }
    return {};
}

QIcon iconOf(const QString& path) {
    if (path.endsWith(QLatin1String(".desktop"))) {
        const QString icon = iconOfEntry(path);
        return QFileInfo(icon).isAbsolute() ? QIcon(icon) : QIcon::fromTheme(icon);
    }
    return QFileInfo::exists(path) ? QFileIconProvider().icon(QFileInfo(path)) : QIcon();
}

} // namespace

const QPixmap& AppIcons::pixmap(const QString& appPath, int size, double pixelRatio) {
    // A machine has some dozens of applications that ever get busy.
    constexpr qsizetype most = 200;
    if (found_.size() > most)
        found_.clear();
    const QString key = QStringLiteral("%1/%2/%3").arg(appPath).arg(size).arg(pixelRatio);
    auto found = found_.find(key);
    if (found == found_.end()) {
        const QIcon icon = appPath.isEmpty() ? QIcon() : iconOf(appPath);
        found = found_.insert(key, icon.isNull() ? QPixmap() : icon.pixmap(QSize(size, size), pixelRatio));
    }
    return *found;
}

} // namespace vantoro
