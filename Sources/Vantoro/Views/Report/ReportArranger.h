// Where everything of a report stands on a page of a given width.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Report/ReportModel.h"

#include <memory>
#include <QTextLayout>

namespace vantoro {

/// A stretch of text in one style at its place.
struct TextRun {
    QString text;
    /// What stands before it in a copied text.
    QString joint;
    Tone tone = Tone::textPrimary;
    /// In the colour of the report's heat instead.
    bool isHeat = false;
    QPointF origin;
    QSizeF size;
    std::unique_ptr<QTextLayout> layout;
};

struct ReportArrangement {
    struct Icon {
        QRectF place;
        QString name;
    };

    int width = -1;
    double height = 0;
    /// In reading order.
    std::vector<TextRun> runs;
    std::vector<Icon> icons;
    std::vector<QRectF> lines;
    /// Beside emphasised rows.
    std::vector<QRectF> bars;
    /// The places of spokenParts, in their order.
    std::vector<QRectF> voices;
    QPointF pips;
};

/// The page has a gutter at the left for the bars of emphasised rows.
inline constexpr int reportGutter = 12;

/// Mirrored where the layout runs from right to left.
ReportArrangement arrangeReport(const ReportModel& model, const Theme& theme, int width, bool oneColumn,
                                Qt::LayoutDirection direction = Qt::LeftToRight);

/// What a screen reader finds on the page: each paragraph and each row.
std::vector<Description> spokenParts(const ReportModel& model);

} // namespace vantoro
