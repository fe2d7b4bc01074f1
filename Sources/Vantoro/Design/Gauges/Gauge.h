// What gauges are drawn of: the arc of five bands, 270 degrees from the lower left clockwise, and a figure with its
// unit behind it in another size, both on one baseline.
#pragma once

#include "Design/PaintedWidget.h"
#include "Design/Typography.h"

#include <QPainter>
#include <QString>

namespace vantoro {

/// The outer edge of the arc and how thick it is, in points.
struct GaugeShape {
    double outerRadius = 0;
    double stroke = 0;

    /// The shape for a rotor or dial of this nominal size.
    static GaugeShape ofSize(int size);
    /// How far the cursor reaches from the centre.
    double reach() const;
    /// How long the whole arc is.
    double arcLength() const;

    bool operator==(const GaugeShape&) const = default;
};

/// Filled in one heat stop up to the position (0 to 1), where a cursor stands in a halo of the background; without a
/// position it is empty and has no cursor.
void drawGauge(QPainter& painter, const QPointF& centre, const GaugeShape& shape, std::optional<double> position,
               int heatStop, Tone background, const Theme& theme);

struct FigureLine {
    QString figure;
    QString unit;
    TextStyle figureStyle = Type::panelTitle;
    TextStyle unitStyle = Type::small;

    bool operator==(const FigureLine&) const = default;
};

double figureLineWidth(const FigureLine& line, const Theme& theme);

/// In primary and secondary text, at the left, at the right or in the middle of the rectangle; a unit that does not fit
/// is left out.
void drawFigureLine(QPainter& painter, const QRectF& rectangle, const FigureLine& line, const Theme& theme,
                    Qt::Alignment alignment = Qt::AlignLeft);

} // namespace vantoro
