#include "Design/Gauges/SmallGauges.h"

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
constexpr double leastOutline = 3;
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

void CoreBar::setHollow(bool hollow) {
    isHollow_ = hollow;
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
    painter.setPen(isHollow_ ? QPen(fill, 1) : QPen(Qt::NoPen));
    painter.setBrush(isHollow_ ? color(Tone::panel) : fill);
    for (int i = 0; i < cells && part(i) > 0; ++i) {
        QRectF filled = box(i);
        filled.setWidth(std::max(part(i) * cell, isHollow_ ? leastOutline : i == 0 ? leastFill : 0));
        if (isHollow_)
            filled.adjust(0.5, 0.5, -0.5, -0.5);
        const double corner = std::min(radius, filled.width() / 2);
        painter.drawRoundedRect(filled, corner, corner);
    }
}

namespace {
constexpr double lineWidth = 1.5;
constexpr double dotRadius = 3;
constexpr double haloWidth = 1.5;
/// Room for the dot and its halo right of the last point.
constexpr double rightInset = 6;
} // namespace

Sparkline::Sparkline(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void Sparkline::show(const SparklineLine& line) {
    SparklineLine shown = line;
    std::erase_if(shown.points, [&line](const TimePoint& point) {
        return !(point.value > 0 || (line.countsZero && point.value == 0));
    });
    if (shown.to <= shown.from && !shown.points.empty()) {
        shown.from = shown.points.front().time;
        shown.to = shown.points.back().time;
    }
    if (shown == line_)
        return;
    line_ = std::move(shown);
    update();
}

void Sparkline::setAreaShown(bool shown) {
    area_ = shown;
    update();
}

void Sparkline::setLineHeight(int points) {
    height_ = points;
    updateGeometry();
}

double Sparkline::xOf(UnixSeconds time) const {
    const double span = line_.to - line_.from;
    return span > 0 ? (time - line_.from) / span * (width() - rightInset) : 0;
}

void Sparkline::paintEvent(QPaintEvent*) {
    if (line_.points.size() < 2 || !(line_.most > line_.least))
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double bottom = height();
    QPolygonF course;
    course.reserve(static_cast<qsizetype>(line_.points.size()) + 2);
    for (const TimePoint& point : line_.points) {
        const double share = std::clamp((point.value - line_.least) / (line_.most - line_.least), 0.0, 1.0);
        const double y = std::clamp(bottom - share * bottom, lineWidth / 2, bottom - lineWidth / 2);
        course.append({xOf(point.time), y});
    }
    const QPointF end = course.back();
    if (area_) {
        QPolygonF ground = course;
        ground.append({end.x(), bottom});
        ground.append({course.front().x(), bottom});
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(Tone::area));
        painter.drawPolygon(ground);
    }
    if (line_.ramp && *line_.ramp >= line_.from && *line_.ramp <= line_.to) {
        QPen dashed(color(Tone::rampMark), 1);
        dashed.setDashPattern({2, 3});
        dashed.setCapStyle(Qt::FlatCap);
        painter.setPen(dashed);
        const double x = std::floor(xOf(*line_.ramp)) + 0.5;
        painter.drawLine(QPointF(x, 0), QPointF(x, bottom));
    }
    painter.setPen(QPen(color(Tone::ink), lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(course);
    painter.setPen(QPen(color(Tone::panel), haloWidth));
    painter.setBrush(color(Tone::ink));
    painter.drawEllipse(QPointF(end.x(), std::clamp(end.y(), dotRadius + 1, bottom - dotRadius - 1)), dotRadius,
                        dotRadius);
}

} // namespace vantoro
