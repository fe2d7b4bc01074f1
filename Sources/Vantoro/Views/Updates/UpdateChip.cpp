#include "Views/Updates/UpdateChip.h"

#include <algorithm>
#include <cmath>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {

constexpr int chipHeight = 24;
constexpr int iconSize = 14;
constexpr int iconLeft = 7;
constexpr int iconGap = 6;
constexpr int textLeft = iconLeft + iconSize + iconGap;
constexpr int rightPadding = 10;
constexpr int beforeLine = 9;
constexpr int afterLine = 9;
constexpr int lineInset = 3;
/// Fewer points of a text than this are not worth showing.
constexpr int leastText = 72;

constexpr TextStyle textStyle = Type::small.medium();
constexpr TextStyle wordStyle = Type::small.semibold();

} // namespace

UpdateChip::UpdateChip(Look& look, QWidget* parent)
    : Pressable(look, parent), mark_(new UpdateMark(look, iconSize, Tone::textPrimary, this)) {
    setMouseTracking(true);
    hide();
}

void UpdateChip::show(const UpdateLine& line) {
    if (line == line_)
        return;
    const bool isSteps = line.mark.ring && line_.mark.ring;
    // The word stays pressed while the figures beside it go on.
    if (line.command != line_.command)
        cancelPress();
    line_ = line;
    mark_->show(line.mark);
    setFocusPolicy(line.command ? Qt::StrongFocus : Qt::NoFocus);
    setHovered(isHovered() && line.command);
    explain();
    update();
    setVisible(!line.text.isEmpty());
    // A screen reader is not told of every per cent.
    if (!isSteps)
        announceChange(QAccessible::NameChanged);
}

int UpdateChip::wordWidth() const {
    return static_cast<int>(std::ceil(textWidth(wordStyle, word())));
}

QSize UpdateChip::sizeHint() const {
    int width = textLeft + static_cast<int>(std::ceil(textWidth(textStyle, line_.text))) + rightPadding;
    if (line_.command)
        width += beforeLine + afterLine + wordWidth();
    return {width + 2 * ringMargin, qRound(chipHeight * theme().textScale()) + 2 * ringMargin};
}

QSize UpdateChip::fit(int room, bool barIsNarrow) {
    const QSize wanted = sizeHint();
    const int text = static_cast<int>(std::ceil(textWidth(textStyle, line_.text)));
    const int least = wanted.width() - text + std::min(text, qRound(leastText * theme().textScale()));
    const int bare = textLeft + wordWidth() + rightPadding + 2 * ringMargin;
    form_ = !barIsNarrow && room >= least   ? Form::whole
            : line_.command && room >= bare ? Form::markAndWord
                                            : Form::mark;
    explain();
    update();
    if (form_ == Form::whole)
        return {std::min(wanted.width(), room), wanted.height()};
    return {form_ == Form::mark ? iconLeft + iconSize + iconLeft + 2 * ringMargin : bare, wanted.height()};
}

QRect UpdateChip::button() const {
    if (!line_.command)
        return {};
    QRect place = drawn();
    if (form_ == Form::whole)
        place.setLeft(place.right() + 1 - rightPadding - wordWidth() - afterLine);
    return place;
}

QRect UpdateChip::textPlace() const {
    QRect place = drawn();
    place.setLeft(place.left() + textLeft);
    place.setRight(line_.command ? button().left() - beforeLine - 1 : place.right() - rightPadding);
    return place;
}

void UpdateChip::explain() {
    const bool isCut = form_ != Form::whole || textWidth(textStyle, line_.text) > textPlace().width() + 1;
    QStringList told;
    for (const QString& part : {isCut ? line_.text : QString(), line_.more})
        if (!part.isEmpty())
            told.append(part);
    setToolTip(told.join(u'\n'));
}

Description UpdateChip::describe() {
    Description what{.role = QAccessible::StaticText, .name = line_.text, .value = line_.more};
    if (line_.command) {
        what.role = QAccessible::Button;
        what.actions = pressAction(word());
    }
    return what;
}

void UpdateChip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF chip(drawn());
    QPainterPath pill;
    pill.addRoundedRect(chip, chip.height() / 2, chip.height() / 2);
    painter.fillPath(pill, color(Tone::segment));
    if (form_ == Form::whole)
        drawText(painter, QRectF(textPlace()), textStyle, color(Tone::textPrimary), line_.text);
    if (line_.command) {
        const QRectF place(button());
        if (isHovered()) {
            painter.setClipPath(pill);
            painter.fillRect(mirrored(place), color(isPressed() ? Tone::buttonPressed : Tone::buttonHover));
            painter.setClipping(false);
        }
        if (form_ == Form::whole)
            painter.fillRect(mirrored(QRectF(place.left(), place.top() + lineInset, 1, place.height() - 2 * lineInset)),
                             color(Tone::line));
        const double left = place.left() + (form_ == Form::whole ? afterLine : textLeft);
        if (form_ != Form::mark)
            drawText(painter, QRectF(left, place.top(), wordWidth() + 1, place.height()), wordStyle,
                     color(Tone::textPrimary), word(), Qt::AlignLeft, Qt::ElideNone);
    }
    drawFocusRing(painter, QRectF(rect()), height() / 2.0);
}

void UpdateChip::resizeEvent(QResizeEvent* event) {
    const QRect chip = drawn();
    const QPoint corner(chip.left() + iconLeft, chip.top() + (chip.height() - iconSize) / 2);
    mark_->setGeometry(mirrored(QRect(corner, QSize(iconSize, iconSize))));
    explain();
    Pressable::resizeEvent(event);
}

void UpdateChip::mouseMoveEvent(QMouseEvent* event) {
    setHovered(pressPlace().contains(event->position().toPoint()));
}

} // namespace vantoro
