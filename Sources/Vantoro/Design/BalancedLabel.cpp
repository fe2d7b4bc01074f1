#include "Design/BalancedLabel.h"

#include "Design/TextLabel.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

constexpr double smallestDisplay = 26;

double widestWord(const QString& text, const QFont& font) {
    double widest = 0;
    for (const QString& word : text.split(u' '))
        widest = std::max(widest, tabularWidth(font, word));
    return widest;
}

/// The text with so much left out of its middle that it takes no more than these lines.
QStringList elidedLines(const QString& text, const QFont& font, double width, int mostLines) {
    const auto lines = [&](qsizetype kept) {
        return brokenLines(text.left((kept + 1) / 2).trimmed() + u'…' + text.right(kept / 2).trimmed(), font, width);
    };
    qsizetype fits = 0;
    for (qsizetype low = 0, high = text.size(); low <= high;) {
        const qsizetype kept = (low + high) / 2;
        if (lines(kept).size() <= mostLines) {
            fits = kept;
            low = kept + 1;
        } else {
            high = kept - 1;
        }
    }
    return lines(fits);
}

} // namespace

QStringList balancedLines(const QString& text, const QFont& font, double width) {
    QStringList best = brokenLines(text, font, width);
    if (best.size() < 2)
        return best;
    // The narrowest column that needs no more lines, found to the point; no word is broken for it.
    double narrow = std::max(width / static_cast<double>(best.size()), widestWord(text, font));
    for (double wide = width; wide - narrow > 1;) {
        const double middle = (narrow + wide) / 2;
        QStringList tried = brokenLines(text, font, middle);
        if (tried.size() > best.size()) {
            narrow = middle;
        } else {
            best = std::move(tried);
            wide = middle;
        }
    }
    return best;
}

BalancedLabel::BalancedLabel(Look& look, std::vector<Step> steps, Tone tone, QWidget* parent)
    : PaintedWidget(look, parent), steps_(std::move(steps)), tone_(tone) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void BalancedLabel::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    set_.width = -1;
    updateGeometry();
    update();
    announceChange(QAccessible::NameChanged);
}

const BalancedLabel::Setting& BalancedLabel::set(int width) const {
    if (set_.width == width)
        return set_;
    set_ = {.width = width};
    if (text_.isEmpty())
        return set_;
    for (const Step& step : steps_) {
        const QFont shown = font(step.style);
        set_.style = step.style;
        set_.lines = balancedLines(text_, shown, width);
        const bool fits = step.mostLines == 0 || set_.lines.size() <= step.mostLines;
        if (fits && (step.mostLines == 0 || widestWord(text_, shown) <= width))
            return set_;
    }
    const Step& last = steps_.back();
    if (set_.lines.size() > last.mostLines) {
        set_.lines = elidedLines(text_, font(last.style), width, last.mostLines);
        set_.isElided = true;
    }
    return set_;
}

int BalancedLabel::heightForWidth(int width) const {
    const Setting& setting = set(width);
    return static_cast<int>(static_cast<double>(setting.lines.size()) * lineHeight(setting.style));
}

QSize BalancedLabel::sizeHint() const {
    constexpr int readable = 640;
    return {readable, heightForWidth(readable)};
}

QSize BalancedLabel::minimumSizeHint() const {
    return {80, static_cast<int>(lineHeight(steps_.back().style))};
}

Description BalancedLabel::describe() {
    return {.role = heading_ ? QAccessible::Heading : QAccessible::StaticText, .name = text_};
}

void BalancedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Setting& setting = set(width());
    const QFont shown = font(setting.style);
    const double height = lineHeight(setting.style);
    painter.setFont(shown);
    painter.setPen(color(tone_));
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    const QFontMetricsF metrics(shown);
    QRectF place(0, 0, width(), height);
    for (const QString& line : setting.lines) {
        // Large digits are set as they come: each in the room of the widest, they would stand apart.
        if (setting.style.size >= smallestDisplay)
            painter.drawText(QPointF(isRightToLeft() ? width() - metrics.horizontalAdvance(line) : 0,
                                     place.center().y() + (metrics.ascent() - metrics.descent()) / 2),
                             line);
        else
            drawLine(painter, place, shown, line, mirrored(Qt::AlignLeft), Qt::ElideNone);
        place.translate(0, height);
    }
}

void BalancedLabel::resizeEvent(QResizeEvent* event) {
    setToolTip(set(width()).isElided ? text_ : QString());
    PaintedWidget::resizeEvent(event);
}

void BalancedLabel::themeChanged() {
    set_.width = -1;
}

} // namespace vantoro
