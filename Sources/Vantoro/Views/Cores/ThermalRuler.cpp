#include "Views/Cores/ThermalRuler.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

constexpr double figureGap = 40;
constexpr double ticksGap = 8;
constexpr double tallTick = 31;
constexpr double shortTick = 23;
constexpr double tickWidth = 3;
constexpr double bandGap = 3;
constexpr double bandHeight = 4;
constexpr double marksGap = 4;

} // namespace

ThermalRuler::ThermalRuler(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ThermalRuler::show(const Spread& spread) {
    if (spread == spread_)
        return;
    const bool sameFigures = spread.figures == spread_.figures && spread.placeholder == spread_.placeholder;
    spread_ = spread;
    if (sameFigures) {
        update(0, static_cast<int>(figuresHeight()), width(), height());
    } else {
        update();
        announceChange();
    }
}

double ThermalRuler::figuresHeight() const {
    return lineHeight(Type::caption) + lineHeight(Type::figure);
}

QSize ThermalRuler::sizeHint() const {
    const double ruler = ticksGap + tallTick + bandGap + bandHeight + marksGap + lineHeight(Type::caption);
    return {360, static_cast<int>(std::ceil(figuresHeight() + ruler))};
}

QSize ThermalRuler::minimumSizeHint() const {
    return {200, sizeHint().height()};
}

void ThermalRuler::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!spread_.placeholder.isEmpty()) {
        drawText(painter, QRectF(rect()), Type::body, color(Tone::textSecondary), spread_.placeholder);
        return;
    }
    paintFigures(painter);
    paintRuler(painter);
}

void ThermalRuler::paintFigures(QPainter& painter) const {
    double widest = 0;
    for (const Spread::Figure& figure : spread_.figures)
        widest = std::max({widest, textWidth(Type::caption, figure.label), textWidth(Type::figure, figure.value)});
    const double pitch = std::min(widest + figureGap, width() / 4.0);
    for (std::size_t i = 0; i < spread_.figures.size(); ++i) {
        const Spread::Figure& figure = spread_.figures[i];
        const QRectF label(static_cast<double>(i) * pitch, 0, pitch, lineHeight(Type::caption));
        drawText(painter, label, Type::caption, color(Tone::textTertiary), figure.label);
        drawText(painter, QRectF(label.left(), label.bottom(), pitch, lineHeight(Type::figure)), Type::figure,
                 color(Tone::textPrimary), figure.value);
    }
}

void ThermalRuler::paintRuler(QPainter& painter) const {
    const double ground = figuresHeight() + ticksGap + tallTick;
    painter.setPen(Qt::NoPen);
    for (const RulerTick& tick : spread_.ticks) {
        const double height = tick.isExtreme ? tallTick : shortTick;
        const double x = std::clamp(width() * tick.position - tickWidth / 2, 0.0, width() - tickWidth);
        painter.setBrush(theme().heatFill(tick.heatStop));
        painter.drawRoundedRect(QRectF(x, ground - height, tickWidth, height), tickWidth / 2, tickWidth / 2);
    }

    const double top = ground + bandGap;
    painter.setBrush(color(Tone::well));
    double left = 0;
    for (std::size_t i = 0; i <= spread_.marks.size(); ++i) {
        const bool isLast = i == spread_.marks.size();
        const double end = isLast ? width() : width() * spread_.marks[i].position - bandGap / 2;
        painter.drawRoundedRect(QRectF(left, top, end - left, bandHeight), 1, 1);
        left = end + bandGap;
    }
    for (const RulerMark& mark : spread_.marks) {
        const double wide = textWidth(Type::caption, mark.text);
        drawText(painter,
                 QRectF(width() * mark.position - wide / 2, top + bandHeight + marksGap, wide + 1,
                        lineHeight(Type::caption)),
                 Type::caption, color(Tone::textTertiary), mark.text, Qt::AlignLeft, Qt::ElideNone);
    }
}

Description ThermalRuler::describe() {
    return {.role = QAccessible::StaticText, .name = spread_.caption, .value = spread_.spokenValue};
}

} // namespace vantoro
