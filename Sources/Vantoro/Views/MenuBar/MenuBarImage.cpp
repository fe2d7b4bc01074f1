#include "Views/MenuBar/MenuBarImage.h"

#include "Design/Typography.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

constexpr int usualSize = 15;
constexpr int thermometerSize = 16;
constexpr double usualGap = 4;
constexpr double thermometerGap = 3;

/// Within a square, as shares of its side: the icon above, the figure below.
constexpr double iconShare = 0.56;
constexpr double figureShare = 0.46;

QPixmap blank(double width, double height, double pixelRatio) {
    QPixmap pixmap(static_cast<int>(std::ceil(width * pixelRatio)), static_cast<int>(std::ceil(height * pixelRatio)));
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

QFont figureFont(double size) {
    QFont font(interfaceFamily());
    font.setPixelSize(std::max(1, qRound(size)));
    font.setWeight(Type::menuBarFigure.weight);
    return font;
}

} // namespace

const QPixmap& MenuBarImage::symbol(const MenuBarModel& model, int frame, const QColor& color, int size,
                                    double pixelRatio) {
    if (frame == 0)
        return icons_.pixmap(model.symbol, size, color, pixelRatio);
    const QString key = QStringLiteral("%1/%2/%3/%4").arg(frame).arg(size).arg(color.rgba()).arg(pixelRatio);
    QPixmap& turned = turned_[key];
    if (turned.isNull()) {
        // Turned from a larger drawing, so that its edges stay clean.
        constexpr int finer = 4;
        const QPixmap& large = icons_.pixmap(model.symbol, size * finer, color, pixelRatio);
        turned = blank(size, size, pixelRatio);
        QPainter painter(&turned);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.translate(size / 2.0, size / 2.0);
        painter.rotate(90.0 * frame / MenuBarSpin::framesPerQuarter);
        painter.drawPixmap(QRectF(-size / 2.0, -size / 2.0, size, size), large, QRectF(large.rect()));
    }
    return turned;
}

QPixmap MenuBarImage::sideBySide(const MenuBarModel& model, int frame, const QColor& color, int height,
                                 double pixelRatio) {
    const bool isThermometer = model.variant == MenuBarVariant::thermometer;
    const int size = isThermometer ? thermometerSize : usualSize;
    const double gap = isThermometer ? thermometerGap : usualGap;
    const QFont font = figureFont(Type::menuBarFigure.size);
    const double figureWidth = model.figure ? gap + tabularWidth(font, *model.figure) : 0;
    QPixmap picture = blank(size + figureWidth, height, pixelRatio);
    QPainter painter(&picture);
    painter.drawPixmap(QPointF(0, (height - size) / 2.0), symbol(model, frame, color, size, pixelRatio));
    if (model.figure) {
        painter.setPen(color);
        drawLine(painter, QRectF(size + gap, 0, figureWidth - gap, height), font, *model.figure, Qt::AlignLeft,
                 Qt::ElideNone);
    }
    return picture;
}

QPixmap MenuBarImage::withinSquare(const MenuBarModel& model, int frame, const QColor& color, int height,
                                   double pixelRatio) {
    QPixmap picture = blank(height, height, pixelRatio);
    QPainter painter(&picture);
    const int size = model.figure ? qRound(height * iconShare) : height - 2;
    const double left = (height - size) / 2.0;
    painter.drawPixmap(QPointF(left, model.figure ? 0 : left), symbol(model, frame, color, size, pixelRatio));
    if (!model.figure)
        return picture;
    // As large as the square's lower part is high, and narrower where the figure would not fit.
    const QFont font = figureFont(height * figureShare);
    const double natural = tabularWidth(font, *model.figure);
    const double squeeze = std::min(1.0, height / natural);
    const double capHeight = QFontMetricsF(font).capHeight();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color);
    painter.translate(height / 2.0, height - capHeight / 2);
    painter.scale(squeeze, 1);
    const QFontMetricsF metrics(font);
    const double drop = (metrics.capHeight() - metrics.ascent() + metrics.descent()) / 2;
    drawLine(painter, QRectF(-natural / 2, drop - 10, natural, 20), font, *model.figure, Qt::AlignLeft, Qt::ElideNone);
    return picture;
}

QPixmap MenuBarImage::picture(const MenuBarModel& model, int frame, const QColor& color, int height,
                              double pixelRatio) {
    constexpr qsizetype most = 100;
    if (turned_.size() > most)
        turned_.clear();
    const int shown = model.variant == MenuBarVariant::fan ? frame : 0;
    return arrangement_ == MenuBarArrangement::sideBySide ? sideBySide(model, shown, color, height, pixelRatio)
                                                          : withinSquare(model, shown, color, height, pixelRatio);
}

QIcon MenuBarImage::icon(const MenuBarModel& model, int frame, const QColor& color) {
    QIcon icon;
    if (arrangement_ == MenuBarArrangement::sideBySide) {
        constexpr int barHeight = 18;
        for (const double ratio : {1.0, 2.0})
            icon.addPixmap(picture(model, frame, color, barHeight, ratio));
        icon.setIsMask(true);
        return icon;
    }
    // The two sizes that are sent to the host as they are.
    for (const int side : {22, 32})
        icon.addPixmap(picture(model, frame, color, side, 1));
    return icon;
}

QColor trayInk(bool isDarkDesktop, const QString& desktopName) {
    const QStringList alwaysDark{"GNOME", "Unity", "Budgie", "Pantheon", "XFCE", "X-Cinnamon"};
    const QStringList names = desktopName.split(u':');
    const bool isDark = isDarkDesktop || std::any_of(names.begin(), names.end(), [&alwaysDark](const QString& name) {
                            return alwaysDark.contains(name, Qt::CaseInsensitive);
                        });
    return Theme(isDark ? Theme::Appearance::dark : Theme::Appearance::light).color(Tone::textPrimary);
}

} // namespace vantoro
