#include "Views/Updates/UpdateParts.h"

#include "Design/TextLabel.h"

#include <algorithm>
#include <cmath>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {
constexpr double ringStroke = 2.6;
constexpr double secondsPerTurn = 1.4;
constexpr int sixteenthsPerTurn = 360 * 16;
} // namespace

UpdateMark::UpdateMark(Look& look, int size, Tone tone, QWidget* parent)
    : PaintedWidget(look, parent), size_(size), tone_(tone) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    keepDirection();
}

void UpdateMark::show(const UpdateMarkModel& mark) {
    if (mark == mark_)
        return;
    mark_ = mark;
    update();
    turnIfSeen();
}

void UpdateMark::turnIfSeen() {
    if (mark_.turns && isVisible() && !theme().reducesMotion())
        look().clock.run(*this);
    else
        look().clock.stop(*this);
}

bool UpdateMark::advance(double /*now*/) {
    update();
    return mark_.turns;
}

Description UpdateMark::describe() {
    return {.isDecoration = true};
}

void UpdateMark::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!mark_.ring) {
        drawIcon(painter, QRectF(rect()), mark_.icon, size_, color(tone_));
        return;
    }
    constexpr double inset = ringStroke / 2 + 0.25;
    const QRectF ring = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    painter.setPen(QPen(color(Tone::well), ringStroke, Qt::SolidLine, Qt::FlatCap));
    painter.drawEllipse(ring);
    painter.setPen(QPen(color(Tone::textPrimary), ringStroke, Qt::SolidLine, Qt::FlatCap));
    const bool turns = mark_.turns && !theme().reducesMotion();
    const double turned = turns ? std::fmod(look().clock.now() / secondsPerTurn, 1.0) : 0;
    constexpr int top = sixteenthsPerTurn / 4;
    painter.drawArc(ring, top - static_cast<int>(std::lround(turned * sixteenthsPerTurn)),
                    -static_cast<int>(std::lround(*mark_.ring * sixteenthsPerTurn)));
}

void UpdateMark::showEvent(QShowEvent* event) {
    turnIfSeen();
    PaintedWidget::showEvent(event);
}

void UpdateMark::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    PaintedWidget::hideEvent(event);
}

void UpdateMark::themeChanged() {
    turnIfSeen();
}

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

namespace {
constexpr int rowHeight = 44;
constexpr int buttonHeight = 24;
constexpr int rowIconSize = 16;
constexpr int rowIconGap = 10;
constexpr int buttonGap = 12;
/// Above and below a text of two lines.
constexpr int padding = 8;
} // namespace

UpdateRow::UpdateRow(Look& look, QWidget* parent)
    : PaintedWidget(look, parent)
    , mark_(new UpdateMark(look, rowIconSize, Tone::textSecondary, this))
    , text_(new TextLabel(look, Type::body, Tone::textPrimary, this))
    , button_(new Button(look, Button::Kind::bordered, QString(), this)) {
    text_->setWraps(true, 2);
    button_->setDrawnHeight(buttonHeight);
    connect(button_, &Button::clicked, this, [this] {
        if (line_.command)
            emit pressed(*line_.command);
    });
    hide();
}

void UpdateRow::show(const UpdateLine& line) {
    if (line == line_)
        return;
    const int before = heightForWidth(width());
    line_ = line;
    mark_->show(line.mark);
    text_->setText(line.text);
    setToolTip(line.more);
    button_->setVisible(line.command.has_value());
    if (line.command)
        button_->setText(updateWord(*line.command));
    place();
    setVisible(!line.text.isEmpty());
    if (heightForWidth(width()) != before)
        updateGeometry();
}

int UpdateRow::textWidth(int width) const {
    const int button = line_.command ? button_->sizeHint().width() - 2 * ringMargin + buttonGap : 0;
    return std::max(width - 2 * ringMargin - rowIconSize - rowIconGap - button, 1);
}

int UpdateRow::heightForWidth(int width) const {
    return std::max(qRound(rowHeight * theme().textScale()), text_->heightForWidth(textWidth(width)) + 2 * padding);
}

QSize UpdateRow::sizeHint() const {
    return {width(), heightForWidth(width())};
}

void UpdateRow::place() {
    const auto centred = [this](int left, const QSize& size) {
        return mirrored(QRect(QPoint(left, (height() - size.height()) / 2), size));
    };
    mark_->setGeometry(centred(ringMargin, {rowIconSize, rowIconSize}));
    const int textSpace = textWidth(width());
    text_->setGeometry(centred(ringMargin + rowIconSize + rowIconGap, {textSpace, text_->heightForWidth(textSpace)}));
    const QSize button = button_->sizeHint();
    button_->setGeometry(centred(width() - button.width(), button));
}

void UpdateRow::resizeEvent(QResizeEvent* event) {
    place();
    PaintedWidget::resizeEvent(event);
}

} // namespace vantoro
