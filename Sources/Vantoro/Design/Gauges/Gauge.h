// The gauge of five bands, an arc of 270 degrees from the lower left clockwise, as it stands round rotors and
// temperatures.
#pragma once

#include "Design/PaintedWidget.h"

#include <QPainter>

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

} // namespace vantoro
