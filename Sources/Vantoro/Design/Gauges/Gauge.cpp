#include "Design/Gauges/Gauge.h"

#include "Design/Theme.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {

constexpr std::array bands{0.0, 0.06, 0.22, 0.48, 0.78, 1.0};
constexpr double startDegrees = 225; // counter-clockwise from three o'clock, as the painter counts
constexpr double sweepDegrees = 270;
constexpr double gap = 2.4;
constexpr double cursorWidth = 3;
constexpr double cursorOverhang = 2;
constexpr double halo = 2;

double degreesAt(double position) {
    return startDegrees - sweepDegrees * position;
}

QPainterPath arc(const QPointF& centre, double radius, double fromDegrees, double toDegrees) {
    const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    QPainterPath path;
    path.arcMoveTo(circle, fromDegrees);
    path.arcTo(circle, fromDegrees, toDegrees - fromDegrees);
    return path;
}

void drawOutlined(QPainter& painter, const QPainterPath& path, double stroke, const QColor& line) {
    QPainterPathStroker stroker;
    stroker.setWidth(stroke - 1);
    stroker.setCapStyle(Qt::FlatCap);
    painter.strokePath(stroker.createStroke(path), QPen(line, 1));
}

void drawCursor(QPainter& painter, const QPointF& centre, const GaugeShape& shape, double position, Tone background,
                const Theme& theme) {
    const double radians = degreesAt(position) * std::numbers::pi / 180;
    const QPointF outwards(std::cos(radians), -std::sin(radians));
    const double inner = shape.outerRadius - shape.stroke - cursorOverhang;
    const double outer = shape.outerRadius + cursorOverhang;
    painter.setPen(QPen(theme.color(background), cursorWidth + 2 * halo, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(centre + outwards * inner, centre + outwards * outer);
    painter.setPen(QPen(theme.color(Tone::textPrimary), cursorWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre + outwards * inner, centre + outwards * outer);
}

} // namespace

GaugeShape GaugeShape::ofSize(int size) {
    // The large ones keep the cursor within their size, the small ones let it reach beyond.
    if (size >= 196)
        return {size / 2.0 - 3, 10};
    if (size >= 120)
        return {size / 2.0 - 2, 8};
    if (size >= 100)
        return {size / 2.0 - 2, 6};
    return {size / 2.0, size >= 68 ? 6.0 : 5.0};
}

double GaugeShape::reach() const {
    return outerRadius + cursorOverhang + cursorWidth / 2;
}

double GaugeShape::arcLength() const {
    return outerRadius * sweepDegrees * std::numbers::pi / 180;
}

void drawGauge(QPainter& painter, const QPointF& centre, const GaugeShape& shape, std::optional<double> position,
               int heatStop, Tone background, const Theme& theme) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const double radius = shape.outerRadius - shape.stroke / 2;
    const double halfGap = gap / 2 / radius * 180 / std::numbers::pi;
    const double reached = position ? degreesAt(std::clamp(*position, 0.0, 1.0)) : degreesAt(0);
    for (std::size_t i = 0; i + 1 < bands.size(); ++i) {
        const double from = degreesAt(bands[i]) - (i > 0 ? halfGap : 0);
        const double to = degreesAt(bands[i + 1]) + (i + 2 < bands.size() ? halfGap : 0);
        const double filledTo = std::clamp(reached, to, from);
        if (filledTo > to) {
            const QPainterPath empty = arc(centre, radius, filledTo, to);
            painter.strokePath(empty, QPen(theme.color(Tone::well), shape.stroke, Qt::SolidLine, Qt::FlatCap));
            if (theme.increasesContrast())
                drawOutlined(painter, empty, shape.stroke, theme.color(Tone::textTertiary));
        }
        if (filledTo < from)
            painter.strokePath(arc(centre, radius, from, filledTo),
                               QPen(theme.heatFill(heatStop), shape.stroke, Qt::SolidLine, Qt::FlatCap));
    }
    if (position)
        drawCursor(painter, centre, shape, std::clamp(*position, 0.0, 1.0), background, theme);
}

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
