#include "Design/LinePlot.h"

#include "Design/Theme.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QPolygonF>

namespace vantoro {

namespace {

constexpr double inkWidth = 1.5;
constexpr double bandWidth = 2;
constexpr double dashLength = 5;
constexpr double dashGap = 4;

TimePoint crossing(const TimePoint& from, const TimePoint& to, double border) {
    const double share = (border - from.value) / (to.value - from.value);
    return {from.time + (to.time - from.time) * share, border};
}

QPolygonF polygonOf(const PlotFrame& frame, const std::vector<TimePoint>& points) {
    QPolygonF polygon;
    polygon.reserve(std::ssize(points) + 2);
    for (const TimePoint& point : points)
        polygon.append(frame.at(point));
    return polygon;
}

double lengthOf(const QPolygonF& polygon) {
    double length = 0;
    for (qsizetype i = 1; i < polygon.size(); ++i)
        length += std::hypot(polygon[i].x() - polygon[i - 1].x(), polygon[i].y() - polygon[i - 1].y());
    return length;
}

} // namespace

double PlotFrame::y(double value) const {
    const double share = std::clamp((value - least) / (most - least), 0.0, 1.0);
    return area.bottom() - share * area.height();
}

UnixSeconds PlotFrame::timeAt(double x) const {
    return first + std::clamp((x - area.left()) / area.width(), 0.0, 1.0) * (last - first);
}

std::vector<BandStretch> bandStretches(const std::vector<TimePoint>& points, const std::vector<double>& borders) {
    if (points.empty())
        return {};
    const auto stopOf = [&borders](double value) {
        return static_cast<int>(std::upper_bound(borders.begin(), borders.end(), value) - borders.begin());
    };
    std::vector<BandStretch> stretches{{.stop = stopOf(points.front().value), .points = {points.front()}}};
    for (auto point = points.begin() + 1; point != points.end(); ++point) {
        const int stop = stopOf(point->value);
        while (stretches.back().stop != stop) {
            const int current = stretches.back().stop;
            const bool rises = stop > current;
            const double border = borders[static_cast<std::size_t>(rises ? current : current - 1)];
            const TimePoint cut = crossing(stretches.back().points.back(), *point, border);
            stretches.back().points.push_back(cut);
            stretches.push_back({.stop = rises ? current + 1 : current - 1, .points = {cut}});
        }
        stretches.back().points.push_back(*point);
    }
    return stretches;
}

void drawPlotLine(QPainter& painter, const PlotFrame& frame, const PlotLine& line, const Theme& theme) {
    const bool isBanded = !line.borders.empty();
    const double width = isBanded ? bandWidth : inkWidth;
    QPen pen(theme.color(Tone::ink), width, Qt::SolidLine, line.isDashed ? Qt::FlatCap : Qt::RoundCap, Qt::RoundJoin);
    if (line.isDashed)
        pen.setDashPattern({dashLength / width, dashGap / width});
    double drawn = 0;
    for (const BandStretch& stretch : bandStretches(line.points, line.borders)) {
        const QPolygonF polygon = polygonOf(frame, stretch.points);
        if (isBanded)
            pen.setColor(theme.heatFill(stretch.stop));
        // The dashes go on where the stretch before left off.
        if (line.isDashed) {
            pen.setDashOffset(drawn / width);
            drawn += lengthOf(polygon);
        }
        painter.setPen(pen);
        painter.drawPolyline(polygon);
    }
}

void fillPlotArea(QPainter& painter, const PlotFrame& frame, const std::vector<TimePoint>& points, const Theme& theme) {
    if (points.size() < 2)
        return;
    QPolygonF polygon = polygonOf(frame, points);
    polygon.append({polygon.last().x(), frame.area.bottom()});
    polygon.append({polygon.first().x(), frame.area.bottom()});
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(Tone::area));
    painter.drawPolygon(polygon);
}

void drawRampMark(QPainter& painter, double x, double top, double bottom, const Theme& theme) {
    constexpr double dot = 2;
    constexpr double pitch = 5;
    const QColor color = theme.color(Tone::rampMark);
    const double left = std::floor(x);
    for (double y = top; y < bottom; y += pitch)
        painter.fillRect(QRectF(left, y, 1, std::min(dot, bottom - y)), color);
}

} // namespace vantoro
