#include "Design/Gauges/CoreBar.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {
constexpr double gap = 2;
constexpr double radius = 2;
constexpr double narrowestCell = 6;
/// What works at all is to be seen.
constexpr double leastFill = 1.5;
} // namespace

CoreBar::CoreBar(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

int CoreBar::cellsIn(int width, int cores) {
    if (cores < 1 || cores > mostCells)
        return 1;
    return (width - gap * (cores - 1)) / cores >= narrowestCell ? cores : 1;
}

double CoreBar::fullPercent() const {
    return 100.0 * std::max(cores_, 1);
}

void CoreBar::show(double percent, int cores, std::optional<int> heatStop) {
    if (cores != cores_ || heatStop != heatStop_) {
        cores_ = cores;
        heatStop_ = heatStop;
        update();
    }
    if (percent == percent_.target())
        return;
    percent_.setResolution(fullPercent() * smallestSeen(width()));
    percent_.set(percent, look().clock.now(), isInSight() ? look().update() : std::nullopt);
    if (advance(look().clock.now()))
        look().clock.run(*this);
}

void CoreBar::jump() {
    look().clock.stop(*this);
    percent_.set(percent_.target(), look().clock.now(), std::nullopt);
    advance(look().clock.now());
}

void CoreBar::setBarHeight(int points) {
    height_ = points;
    updateGeometry();
    update();
}

bool CoreBar::advance(double now) {
    constexpr double visible = 0.25;
    const double shown = percent_.at(now);
    const bool isMoving = !percent_.isAtRest(now);
    if (std::abs(shown - painted_) / fullPercent() * width() >= visible || (!isMoving && shown != painted_)) {
        painted_ = shown;
        update();
    }
    return isMoving;
}

void CoreBar::hideEvent(QHideEvent* event) {
    jump();
    PaintedWidget::hideEvent(event);
}

void CoreBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int cells = cellsIn(width(), cores_);
    const double share = fullPercent() / cells;
    const double cell = (width() - gap * (cells - 1)) / cells;
    const double top = (height() - height_) / 2.0;
    const QPen outline = theme().increasesContrast() ? QPen(color(Tone::line), 1) : QPen(Qt::NoPen);
    const QColor fill = heatStop_ ? theme().heatFill(*heatStop_) : color(Tone::bar);
    const auto box = [&](int i) { return QRectF(i * (cell + gap), top, cell, height_); };
    const auto part = [&](int i) { return std::clamp((painted_ - i * share) / share, 0.0, 1.0); };
    // The lower edge of what is empty, along its corners: without it the cells could hardly be counted.
    QPainterPath edges;
    painter.setPen(outline);
    painter.setBrush(color(Tone::cell));
    for (int i = 0; i < cells; ++i) {
        if (part(i) >= 1)
            continue;
        painter.drawRoundedRect(box(i), radius, radius);
        const QRectF line = box(i).adjusted(0.5, 0, -0.5, -0.5);
        edges.moveTo(line.left(), line.bottom() - radius);
        edges.quadTo(line.bottomLeft(), QPointF(line.left() + radius, line.bottom()));
        edges.lineTo(line.right() - radius, line.bottom());
        edges.quadTo(line.bottomRight(), QPointF(line.right(), line.bottom() - radius));
    }
    painter.strokePath(edges, QPen(color(Tone::rampMark), 1, Qt::SolidLine, Qt::FlatCap));
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    for (int i = 0; i < cells && part(i) > 0; ++i) {
        QRectF filled = box(i);
        filled.setWidth(std::max(part(i) * cell, i == 0 ? leastFill : 0));
        const double corner = std::min(radius, filled.width() / 2);
        painter.drawRoundedRect(filled, corner, corner);
    }
}

} // namespace vantoro
