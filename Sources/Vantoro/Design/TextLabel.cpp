#include "Design/TextLabel.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QTextLayout>
#include <utility>

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

QStringList brokenLines(const QString& text, const QFont& font, double width) {
    QStringList lines;
    for (const QString& paragraph : text.split(u'\n')) {
        // Broken as with the widest digits, so that no word changes its line when a figure does.
        QTextLayout layout(withWidestDigits(font, paragraph), font);
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            lines.append(paragraph.mid(line.textStart(), line.textLength()).trimmed());
        }
        layout.endLayout();
    }
    return lines;
}

void Label::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    forgetLines();
    updateGeometry();
    update();
    announceChange(QAccessible::NameChanged);
}

void Label::setTone(Tone tone) {
    if (tone == tone_)
        return;
    tone_ = tone;
    update();
}

void Label::setParagraph(bool isParagraph) {
    QSizePolicy policy(QSizePolicy::Preferred, isParagraph ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    policy.setHeightForWidth(isParagraph);
    setSizePolicy(policy);
}

Description Label::describe() {
    return {.role = isHeading_ ? QAccessible::Heading : QAccessible::StaticText, .name = text_};
}

TextLabel::TextLabel(Look& look, const TextStyle& style, Tone tone, QWidget* parent)
    : Label(look, tone, parent), style_(style) {
    setParagraph(false);
}

void TextLabel::setStyle(const TextStyle& style) {
    if (style == style_)
        return;
    style_ = style;
    forgetLines();
    updateGeometry();
    update();
}

void TextLabel::setAlignment(Qt::Alignment alignment) {
    alignment_ = alignment;
    update();
}

void TextLabel::setWraps(bool wraps, int lines) {
    wraps_ = wraps;
    mostLines_ = lines;
    setParagraph(wraps);
    brokenAt_ = -1;
    updateGeometry();
    update();
}

void TextLabel::forgetLines() {
    brokenAt_ = -1;
    keptAt_ = -1;
}

void TextLabel::keepRoomFor(const QStringList& texts) {
    alternatives_ = texts;
    keptAt_ = -1;
    updateGeometry();
}

const QStringList& TextLabel::lines(double width) const {
    if (brokenAt_ == width)
        return broken_;
    const QFont shown = font(style_);
    broken_ = text().isEmpty() ? QStringList() : brokenLines(text(), shown, width);
    if (mostLines_ > 0 && broken_.size() > mostLines_) {
        const QString rest = broken_.mid(mostLines_ - 1).join(u' ');
        broken_ = broken_.mid(0, mostLines_ - 1);
        broken_.append(elidedTabular(shown, rest, width, Qt::ElideMiddle));
    }
    brokenAt_ = width;
    return broken_;
}

int TextLabel::linesKept(double width) const {
    if (keptAt_ == width)
        return kept_;
    kept_ = 0;
    for (const QString& text : alternatives_)
        kept_ = std::max(kept_, static_cast<int>(brokenLines(text, font(style_), width).size()));
    keptAt_ = width;
    return kept_;
}

int TextLabel::heightForWidth(int width) const {
    if (!wraps_)
        return sizeHint().height();
    const int count = std::max(linesKept(width), static_cast<int>(lines(width).size()));
    return static_cast<int>(count * lineHeight(style_));
}

QSize TextLabel::sizeHint() const {
    const int line = static_cast<int>(lineHeight(style_));
    const int width = static_cast<int>(std::ceil(textWidth(style_, text())));
    if (!wraps_)
        return {width, line};
    constexpr int readable = 640;
    const int shown = std::min(width, readable);
    return {shown, heightForWidth(std::max(shown, 1))};
}

QSize TextLabel::minimumSizeHint() const {
    return {wraps_ ? 40 : 16, static_cast<int>(lineHeight(style_))};
}

void TextLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (!wraps_) {
        drawText(painter, QRectF(rect()), style_, ink(), text(), alignment_);
        return;
    }
    const double height = lineHeight(style_);
    painter.setPen(ink());
    QRectF place(0, 0, width(), height);
    for (const QString& line : lines(width())) {
        drawLine(painter, place, font(style_), line, mirrored(alignment_), Qt::ElideNone);
        place.translate(0, height);
    }
}

void TextLabel::resizeEvent(QResizeEvent*) {
    const bool isCut = !wraps_ && textWidth(style_, text()) > width() + 0.5;
    explain(isCut);
}

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
    : Label(look, tone, parent), steps_(std::move(steps)) {
    setParagraph(true);
}

const BalancedLabel::Setting& BalancedLabel::set(int width) const {
    if (set_.width == width)
        return set_;
    set_ = {.width = width};
    if (text().isEmpty())
        return set_;
    for (const Step& step : steps_) {
        const QFont shown = font(step.style);
        set_.style = step.style;
        set_.lines = balancedLines(text(), shown, width);
        const bool fits = step.mostLines == 0 || set_.lines.size() <= step.mostLines;
        if (fits && (step.mostLines == 0 || widestWord(text(), shown) <= width))
            return set_;
    }
    const Step& last = steps_.back();
    if (set_.lines.size() > last.mostLines) {
        set_.lines = elidedLines(text(), font(last.style), width, last.mostLines);
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

void BalancedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Setting& setting = set(width());
    const QFont shown = font(setting.style);
    const double height = lineHeight(setting.style);
    painter.setFont(shown);
    painter.setPen(ink());
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
    explain(set(width()).isElided);
    PaintedWidget::resizeEvent(event);
}

} // namespace vantoro
