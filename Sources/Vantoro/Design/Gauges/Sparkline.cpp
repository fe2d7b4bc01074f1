#include "Design/Gauges/Sparkline.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

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
    shown.points.erase(std::remove_if(shown.points.begin(), shown.points.end(),
                                      [](const TimePoint& point) { return !(point.value > 0); }),
                       shown.points.end());
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
