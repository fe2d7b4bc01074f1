#include "Design/Gauges/ThermalDial.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

// Where the lines stand, from the centre of the dial.
constexpr double figureRise = 6.5;
constexpr double captionDrop = 32;
constexpr double gapDrop = 88.5;
constexpr double unitGap = -1; // the last digit brings room of its own
constexpr double arcClearance = 6;
constexpr TextStyle emptyFigure{28, 36, QFont::DemiBold};
constexpr TextStyle gapFigureStyle = Type::small.semibold();

TextStyle scaled(const TextStyle& style, double factor) {
    return {style.size * factor, style.lineHeight * factor, style.weight, style.trackingPercent};
}

} // namespace

ThermalDial::ThermalDial(Look& look, int size, Tone background, QWidget* parent)
    : PaintedWidget(look, parent), size_(size), background_(background) {
    keepDirection();
    setFocusPolicy(isSmall() ? Qt::NoFocus : Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ThermalDial::show(const ThermalDialFigures& figures) {
    if (figures == figures_)
        return;
    const double now = look().clock.now();
    const bool glides = figures.position && figures_.position && isInSight();
    position_.setResolution(smallestSeen(GaugeShape::ofSize(size_).arcLength()));
    position_.set(figures.position.value_or(0), now, glides ? look().update() : std::nullopt);
    const bool speaksAnew = figures.spokenValue != figures_.spokenValue;
    ThermalDialFigures before = std::exchange(figures_, figures);
    if (!position_.isAtRest(now))
        look().clock.run(*this);
    const bool moved = before.position.has_value() != figures.position.has_value() ||
                       std::abs(position_.at(now) - painted_) > position_.resolution();
    before.position = figures.position;
    if (moved || before != figures)
        update();
    if (speaksAnew)
        announceChange();
}

bool ThermalDial::advance(double now) {
    update();
    return !position_.isAtRest(now);
}

QSize ThermalDial::sizeHint() const {
    const int side = size_ + 2 * ringMargin;
    return {side, side};
}

Description ThermalDial::describe() {
    return {.role = QAccessible::ProgressBar,
            .name = figures_.spokenName,
            .value = figures_.spokenValue,
            .number = figures_.position};
}

QPointF ThermalDial::centre() const {
    return {width() / 2.0, ringMargin + size_ / 2.0};
}

void ThermalDial::paintFigure(QPainter& painter) const {
    if (isSmall()) {
        drawText(painter, QRectF(0, 0, width(), height()), Type::panelTitle,
                 color(figures_.isEmpty ? Tone::textTertiary : Tone::textPrimary), figures_.smallFigure,
                 Qt::AlignHCenter, Qt::ElideNone);
        return;
    }
    if (figures_.isEmpty) {
        drawText(painter, QRectF(0, centre().y() - emptyFigure.lineHeight / 2, width(), emptyFigure.lineHeight),
                 emptyFigure, color(Tone::textTertiary), figures_.figure, Qt::AlignHCenter, Qt::ElideNone);
        return;
    }
    const GaugeShape shape = GaugeShape::ofSize(size_);
    const double room = shape.outerRadius - shape.stroke - arcClearance;
    // Large type and three digits must leave the arc alone, and the caption under the figure.
    constexpr double largestScale = 1.15;
    double factor = std::min(1.0, largestScale / theme().textScale());
    const auto reach = [&](double by) {
        return textWidth(scaled(Type::dialFigure, by), figures_.figure) / 2 + unitGap +
               textWidth(scaled(Type::dialUnit, by), figures_.unit);
    };
    while (factor > 0.4 && reach(factor) > room)
        factor -= 0.05;
    const TextStyle figure = scaled(Type::dialFigure, factor);
    const TextStyle unit = scaled(Type::dialUnit, factor);
    const double middle = centre().y() - figureRise;
    const double figureWidth = textWidth(figure, figures_.figure);
    const auto lineAt = [](double left, double centreY, double width) {
        constexpr double height = 40;
        return QRectF(left, centreY - height / 2, width, height);
    };
    // A line is centred on what lies between ascent and descent; here the capitals are to be.
    const auto capsCentred = [this](const TextStyle& style) {
        const QFontMetricsF metrics(font(style));
        return (metrics.capHeight() - metrics.ascent() + metrics.descent()) / 2;
    };
    const double left = centre().x() - figureWidth / 2;
    // In type this large, room for the widest digit on both sides of a 1 would look like a gap. The figure is set as it
    // comes, amid that room; the unit stands still at its end.
    const QFontMetricsF metrics(font(figure));
    const QRectF line = lineAt(left, middle + capsCentred(figure), figureWidth);
    painter.setFont(font(figure));
    painter.setPen(color(Tone::textPrimary));
    painter.drawText(QPointF(line.center().x() - metrics.horizontalAdvance(figures_.figure) / 2,
                             line.center().y() + (metrics.ascent() - metrics.descent()) / 2),
                     figures_.figure);
    const double unitWidth = textWidth(unit, figures_.unit);
    const double raise = (QFontMetricsF(font(figure)).capHeight() - QFontMetricsF(font(unit)).capHeight()) / 2;
    drawText(painter, lineAt(left + figureWidth + unitGap, middle - raise + capsCentred(unit), unitWidth), unit,
             color(Tone::textSecondary), figures_.unit, Qt::AlignLeft, Qt::ElideNone);
    drawText(painter, lineAt(0, centre().y() + captionDrop, width()), Type::small, color(Tone::textSecondary),
             figures_.caption, Qt::AlignHCenter);
}

void ThermalDial::paintGap(QPainter& painter) const {
    if (figures_.gapFigure.isEmpty())
        return;
    const double space = textWidth(Type::small, QStringLiteral(" "));
    const double captionWidth = textWidth(Type::small, figures_.gapCaption);
    const double figureWidth = textWidth(gapFigureStyle, figures_.gapFigure);
    const double left = std::max(0.0, centre().x() - (captionWidth + space + figureWidth) / 2);
    const double line = lineHeight(Type::small);
    const double top = std::min(centre().y() + gapDrop - line / 2, height() - line);
    const double room = width() - left - space - figureWidth;
    drawText(painter, QRectF(left, top, std::min(captionWidth, room), line), Type::small, color(Tone::textSecondary),
             figures_.gapCaption);
    drawText(painter, QRectF(left + std::min(captionWidth, room) + space, top, figureWidth, line), gapFigureStyle,
             color(Tone::textPrimary), figures_.gapFigure, Qt::AlignLeft, Qt::ElideNone);
}

void ThermalDial::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painted_ = position_.at(look().clock.now());
    const std::optional<double> shown = figures_.position ? std::optional(painted_) : std::nullopt;
    drawGauge(painter, centre(), GaugeShape::ofSize(size_), shown, figures_.heatStop, background_, theme());
    paintFigure(painter);
    if (!isSmall())
        paintGap(painter);
    drawFocusRing(painter, QRectF(rect()), 12);
}

void ThermalDial::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    position_.set(position_.target(), look().clock.now(), std::nullopt);
    PaintedWidget::hideEvent(event);
}

} // namespace vantoro
