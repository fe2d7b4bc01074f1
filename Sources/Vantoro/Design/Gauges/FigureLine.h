// A figure with its unit behind it in another size, both on one baseline.
#pragma once

#include "Design/Typography.h"

#include <QColor>
#include <QString>

class QPainter;

namespace vantoro {

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
