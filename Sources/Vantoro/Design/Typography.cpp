#include "Design/Typography.h"

#include "Design/Theme.h"

#include <algorithm>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>

namespace vantoro {

namespace {

bool isDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

double widestDigit(const QFontMetricsF& metrics) {
    double widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

/// Calls `run(text, width, isDigit)` for each digit and each stretch between digits.
template <class Run>
void forEachRun(const QFontMetricsF& metrics, const QString& text, Run run) {
    const double digit = widestDigit(metrics);
    for (qsizetype begin = 0; begin < text.size();) {
        qsizetype end = begin + 1;
        if (isDigit(text[begin])) {
            run(text.mid(begin, 1), digit, true);
        } else {
            while (end < text.size() && !isDigit(text[end]))
                ++end;
            const QString stretch = text.mid(begin, end - begin);
            run(stretch, metrics.horizontalAdvance(stretch), false);
        }
        begin = end;
    }
}

bool hasDigits(const QString& text) {
    return std::any_of(text.begin(), text.end(), isDigit);
}

} // namespace

QString interfaceFamily() {
    static const QString family = [] {
        const QString desktop = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
        const QStringList unspecific{"", "Sans", "Sans Serif", "sans-serif", "Sans-Serif", "DejaVu Sans"};
        const bool isUnspecific = unspecific.contains(desktop);
        return isUnspecific && QFontDatabase::hasFamily("Inter") ? QString("Inter") : desktop;
    }();
    return family;
}

QFont fontOf(const TextStyle& style, const Theme& theme) {
    // Inter has a cut of its own for large type, with tighter letters.
    constexpr double smallestDisplay = 26;
    static const bool hasDisplay = interfaceFamily() == "Inter" && QFontDatabase::hasFamily("Inter Display");
    QFont font(hasDisplay && style.size >= smallestDisplay ? QString("Inter Display") : interfaceFamily());
    const double size = style.size * theme.textScale();
    font.setPixelSize(std::max(1, qRound(size)));
    font.setWeight(style.weight);
    if (style.trackingPercent != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, size * style.trackingPercent / 100);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

double lineHeightOf(const TextStyle& style, const Theme& theme) {
    return std::round(style.lineHeight * theme.textScale());
}

QString withWidestDigits(const QFont& font, QString text) {
    if (!hasDigits(text))
        return text;
    const QFontMetricsF metrics(font);
    QChar widest = u'0';
    for (char16_t digit = u'1'; digit <= u'9'; ++digit)
        if (metrics.horizontalAdvance(QChar(digit)) > metrics.horizontalAdvance(widest))
            widest = QChar(digit);
    std::replace_if(text.begin(), text.end(), isDigit, widest);
    return text;
}

double tabularWidth(const QFont& font, const QString& text) {
    const QFontMetricsF metrics(font);
    if (!hasDigits(text))
        return metrics.horizontalAdvance(text);
    double width = 0;
    forEachRun(metrics, text, [&width](const QString&, double advance, bool) { width += advance; });
    return width;
}

QString elidedTabular(const QFont& font, const QString& text, double width, Qt::TextElideMode elide) {
    const double natural = tabularWidth(font, text);
    if (elide == Qt::ElideNone || natural <= width + 0.5)
        return text;
    // The metrics elide by natural digit widths: what tabular digits take more is taken off beforehand.
    const QFontMetricsF metrics(font);
    return metrics.elidedText(text, elide, std::max(0.0, width - (natural - metrics.horizontalAdvance(text))));
}

void drawLine(QPainter& painter, const QRectF& rectangle, const QFont& font, const QString& text,
              Qt::Alignment alignment, Qt::TextElideMode elide) {
    const QString shown = elidedTabular(font, text, rectangle.width(), elide);
    const QFontMetricsF metrics(font);
    const double width = tabularWidth(font, shown);
    double x = rectangle.left();
    if (alignment & Qt::AlignRight)
        x = rectangle.right() - width;
    else if (alignment & Qt::AlignHCenter)
        x = rectangle.center().x() - width / 2;
    const double baseline = rectangle.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    painter.setFont(font);
    // Each text in its own direction, whatever the layout's is; one from right to left is not taken apart at its
    // digits.
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    if (!hasDigits(shown) || shown.isRightToLeft()) {
        painter.drawText(QPointF(x, baseline), shown);
        return;
    }
    forEachRun(metrics, shown, [&](const QString& run, double advance, bool digit) {
        const double inset = digit ? (advance - metrics.horizontalAdvance(run)) / 2 : 0;
        painter.drawText(QPointF(x + inset, baseline), run);
        x += advance;
    });
}

} // namespace vantoro
