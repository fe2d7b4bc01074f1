#include "Design/TextLabel.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

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

TextLabel::TextLabel(Look& look, const TextStyle& style, Tone tone, QWidget* parent)
    : PaintedWidget(look, parent), style_(style), tone_(tone) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void TextLabel::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    brokenAt_ = -1;
    updateGeometry();
    update();
    announceChange(QAccessible::NameChanged);
}

void TextLabel::setStyle(const TextStyle& style) {
    if (style == style_)
        return;
    style_ = style;
    brokenAt_ = -1;
    keptAt_ = -1;
    updateGeometry();
    update();
}

void TextLabel::setTone(Tone tone) {
    if (tone == tone_)
        return;
    tone_ = tone;
    update();
}

void TextLabel::setAlignment(Qt::Alignment alignment) {
    alignment_ = alignment;
    update();
}

void TextLabel::setWraps(bool wraps, int lines) {
    wraps_ = wraps;
    mostLines_ = lines;
    QSizePolicy policy(QSizePolicy::Preferred, wraps ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    policy.setHeightForWidth(wraps);
    setSizePolicy(policy);
    brokenAt_ = -1;
    updateGeometry();
    update();
}

void TextLabel::keepRoomFor(const QStringList& texts) {
    alternatives_ = texts;
    keptAt_ = -1;
    updateGeometry();
}

void TextLabel::setHeading(bool heading) {
    heading_ = heading;
}

std::vector<TextLabel::Line> TextLabel::lines(double width) const {
    if (brokenAt_ == width)
        return broken_;
    const QFont shown = font(style_);
    QStringList texts = text_.isEmpty() ? QStringList() : brokenLines(text_, shown, width);
    if (mostLines_ > 0 && texts.size() > mostLines_) {
        const QString rest = texts.mid(mostLines_ - 1).join(u' ');
        texts = texts.mid(0, mostLines_ - 1);
        texts.append(elidedTabular(shown, rest, width, Qt::ElideMiddle));
    }
    broken_.clear();
    for (QString& text : texts)
        broken_.push_back({std::move(text)});
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
    const int width = static_cast<int>(std::ceil(textWidth(style_, text_)));
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
    const QColor ink = color(tone_);
    if (!wraps_) {
        drawText(painter, QRectF(rect()), style_, ink, text_, alignment_);
        return;
    }
    const double height = lineHeight(style_);
    painter.setPen(ink);
    QRectF place(0, 0, width(), height);
    for (const Line& line : lines(width())) {
        drawLine(painter, place, font(style_), line.text, mirrored(alignment_), Qt::ElideNone);
        place.translate(0, height);
    }
}

void TextLabel::resizeEvent(QResizeEvent*) {
    const bool isCut = !wraps_ && textWidth(style_, text_) > width() + 0.5;
    setToolTip(isCut ? text_ : QString());
}

void TextLabel::themeChanged() {
    brokenAt_ = -1;
    keptAt_ = -1;
}

Description TextLabel::describe() {
    return {.role = heading_ ? QAccessible::Heading : QAccessible::StaticText, .name = text_};
}

} // namespace vantoro
