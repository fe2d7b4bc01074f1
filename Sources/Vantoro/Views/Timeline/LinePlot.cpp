#include "Views/Timeline/LinePlot.h"

#include "Design/Theme.h"

#include <algorithm>
#include <cmath>
#include <QList>
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

QList<QLineF> segmentsOf(const QPolygonF& polygon) {
    QList<QLineF> segments;
    segments.reserve(polygon.size());
    for (qsizetype i = 1; i < polygon.size(); ++i)
        segments.append({polygon[i - 1], polygon[i]});
    return segments;
}

/// The drawn pieces of the segments. `along` is how far the pattern has come; it goes on from there.
QList<QLineF> dashesOf(const QList<QLineF>& segments, double& along) {
    constexpr double pitch = dashLength + dashGap;
    QList<QLineF> dashes;
    for (const QLineF& segment : segments) {
        const double length = segment.length();
        const double first = -std::fmod(along, pitch);
        const int count = static_cast<int>(std::ceil((length - first) / pitch));
        for (int i = 0; i < count; ++i) {
            const double at = first + i * pitch;
            const double from = std::max(at, 0.0);
            const double to = std::min(at + dashLength, length);
            if (from < to)
                dashes.append({segment.pointAt(from / length), segment.pointAt(to / length)});
        }
        along += length;
    }
    return dashes;
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
    QPen pen(theme.color(Tone::ink), isBanded ? bandWidth : inkWidth);
    // Single lines are drawn many times faster than one outlined path, and as opaque ones they look the same: square
    // ends close the gaps between them.
    pen.setCapStyle(line.isDashed ? Qt::FlatCap : Qt::SquareCap);
    double along = 0;
    for (const BandStretch& stretch : bandStretches(line.points, line.borders)) {
        if (isBanded)
            pen.setColor(theme.heatFill(stretch.stop));
        const QList<QLineF> segments = segmentsOf(polygonOf(frame, stretch.points));
        painter.setPen(pen);
        painter.drawLines(line.isDashed ? dashesOf(segments, along) : segments);
    }
}

void fillPlotArea(QPainter& painter, const PlotFrame& frame, const std::vector<TimePoint>& points, const Theme& theme) {
    if (points.size() < 2)
        return;
    QPolygonF polygon = polygonOf(frame, points);
    polygon.append({polygon.last().x(), frame.area.bottom()});
    polygon.append({polygon.first().x(), frame.area.bottom()});
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(Tone::area));
    // Its edge lies under the line.
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.drawPolygon(polygon);
    painter.restore();
}

void drawRampMark(QPainter& painter, double x, double top, double bottom, const Theme& theme) {
    constexpr double dot = 2;
    constexpr double pitch = 5;
    const QColor color = theme.color(Tone::rampMark);
    const double left = std::floor(x);
    const int dots = static_cast<int>(std::ceil((bottom - top) / pitch));
    for (int i = 0; i < dots; ++i) {
        const double y = top + i * pitch;
        painter.fillRect(QRectF(left, y, 1, std::min(dot, bottom - y)), color);
    }
}

} // namespace vantoro
