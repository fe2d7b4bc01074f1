#include "Design/Gauges/FigureLine.h"

#include "Design/Theme.h"

#include <QPainter>

namespace vantoro {

namespace {
constexpr double unitGap = 4;
}

double figureLineWidth(const FigureLine& line, const Theme& theme) {
    const double figure = tabularWidth(fontOf(line.figureStyle, theme), line.figure);
    return line.unit.isEmpty() ? figure : figure + unitGap + tabularWidth(fontOf(line.unitStyle, theme), line.unit);
}

void drawFigureLine(QPainter& painter, const QRectF& rectangle, const FigureLine& line, const Theme& theme,
                    Qt::Alignment alignment) {
    FigureLine shown = line;
    if (figureLineWidth(shown, theme) > rectangle.width() + 0.5)
        shown.unit.clear();
    const QFont figureFont = fontOf(shown.figureStyle, theme);
    const QFont unitFont = fontOf(shown.unitStyle, theme);
    const double figureWidth = tabularWidth(figureFont, shown.figure);
    QRectF place = rectangle;
    if (alignment & Qt::AlignHCenter)
        place.setLeft(rectangle.center().x() - figureLineWidth(shown, theme) / 2);
    else if (alignment & Qt::AlignRight)
        place.setLeft(rectangle.right() - figureLineWidth(shown, theme));
    place.setWidth(figureWidth);
    painter.setPen(theme.color(Tone::textPrimary));
    drawLine(painter, place, figureFont, shown.figure, Qt::AlignLeft, Qt::ElideNone);
    if (shown.unit.isEmpty())
        return;
    // Lines are centred on the middle between ascent and descent: the smaller one is let down to the same baseline.
    const auto baseline = [](const QFontMetricsF& metrics) { return (metrics.ascent() - metrics.descent()) / 2; };
    const double drop = baseline(QFontMetricsF(figureFont)) - baseline(QFontMetricsF(unitFont));
    painter.setPen(theme.color(Tone::textSecondary));
    drawLine(painter, QRectF(place.right() + unitGap, place.top() + drop, rectangle.width(), place.height()), unitFont,
             shown.unit, Qt::AlignLeft, Qt::ElideNone);
}

} // namespace vantoro
