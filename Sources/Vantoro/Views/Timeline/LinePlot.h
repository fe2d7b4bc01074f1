// Lines over time within a rectangle: where a value lies, how a line is cut where its colour changes, and how it is
// drawn.
#pragma once

#include "Model/History/History.h"

#include <QPointF>
#include <QRectF>
#include <vector>

class QPainter;

namespace vantoro {

class Theme;

/// What a rectangle shows: these times from left to right, these values from bottom to top. Neither may be empty.
struct PlotFrame {
    QRectF area;
    UnixSeconds first = 0;
    UnixSeconds last = 1;
    double least = 0;
    double most = 1;

    double x(UnixSeconds time) const { return area.left() + (time - first) / (last - first) * area.width(); }
    /// Held to the rectangle.
    double y(double value) const;
    QPointF at(const TimePoint& point) const { return {x(point.time), y(point.value)}; }
    /// The time at this x, held to the rectangle.
    UnixSeconds timeAt(double x) const;
};

/// A stretch of a line within one band of values.
struct BandStretch {
    int stop = 0;
    std::vector<TimePoint> points;

    bool operator==(const BandStretch&) const = default;
};

/// The line cut at every border that it crosses, with a point on the border in both stretches; a value on a border
/// belongs to the band above. `borders` ascend; without any there is one stretch.
std::vector<BandStretch> bandStretches(const std::vector<TimePoint>& points, const std::vector<double>& borders);

struct PlotLine {
    const std::vector<TimePoint>& points;
    /// Borders of the heat stops; none draws the line in ink.
    const std::vector<double>& borders;
    bool isDashed = false;
};

void drawPlotLine(QPainter& painter, const PlotFrame& frame, const PlotLine& line, const Theme& theme);
/// What lies under the line, down to the bottom of the frame.
void fillPlotArea(QPainter& painter, const PlotFrame& frame, const std::vector<TimePoint>& points, const Theme& theme);
/// An upright dotted line at the start of the ramp.
void drawRampMark(QPainter& painter, double x, double top, double bottom, const Theme& theme);

} // namespace vantoro
