// Type: the styles of the interface and how a line of text is set in one.
#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QRectF>
#include <QString>

class QPainter;

namespace vantoro {

class Theme;

/// Size and line height in points at a text scale of 1; tracking in per cent of the size.
struct TextStyle {
    double size = 13;
    double lineHeight = 18;
    QFont::Weight weight = QFont::Normal;
    double trackingPercent = 0;

    /// The same, heavier.
    constexpr TextStyle medium() const { return {size, lineHeight, QFont::Medium, trackingPercent}; }
    constexpr TextStyle semibold() const { return {size, lineHeight, QFont::DemiBold, trackingPercent}; }

    bool operator==(const TextStyle&) const = default;
};

namespace Type {
inline constexpr TextStyle display40{40, 44, QFont::DemiBold, -1.8};
inline constexpr TextStyle display32{32, 38, QFont::DemiBold, -1.8};
inline constexpr TextStyle display26{26, 32, QFont::DemiBold, -1.8};
inline constexpr TextStyle sheetTitle{26, 32, QFont::DemiBold, -1.0};
inline constexpr TextStyle figure{22, 28, QFont::DemiBold};
inline constexpr TextStyle panelTitle{17, 21, QFont::DemiBold};
inline constexpr TextStyle lead{15, 22};
inline constexpr TextStyle body{13, 18};
inline constexpr TextStyle advice{13, 20};
inline constexpr TextStyle report{13, 19};
inline constexpr TextStyle sectionTitle{13, 18, QFont::DemiBold};
inline constexpr TextStyle small{12, 16};
inline constexpr TextStyle note{12, 17};
inline constexpr TextStyle caption{11, 14};
inline constexpr TextStyle dialFigure{52, 60, QFont::DemiBold, -1.8};
inline constexpr TextStyle dialUnit{22, 28, QFont::Medium};
inline constexpr TextStyle menuBarFigure{11, 14, QFont::Medium};
} // namespace Type

/// The interface's family: the desktop's own where it names one, Inter where it only says "a sans serif".
QString interfaceFamily();

/// The style's font at the theme's text scale.
QFont fontOf(const TextStyle& style, const Theme& theme);
/// The height of one line, in pixels of the widget.
double lineHeightOf(const TextStyle& style, const Theme& theme);

/// How wide a line is with every digit as wide as the widest, so that figures do not shift as they change.
double tabularWidth(const QFont& font, const QString& text);

/// The text with every digit made the widest: what it may take whatever its figures come to be.
QString withWidestDigits(const QFont& font, QString text);

/// One line within a rectangle, its digits tabular, centred vertically on the line; too long a text is elided as told
/// (never, with Qt::ElideNone). The painter's pen is the colour.
void drawLine(QPainter& painter, const QRectF& rectangle, const QFont& font, const QString& text,
              Qt::Alignment alignment = Qt::AlignLeft, Qt::TextElideMode elide = Qt::ElideRight);

/// The text as it fits in the width, with tabular digits.
QString elidedTabular(const QFont& font, const QString& text, double width, Qt::TextElideMode elide);

} // namespace vantoro
