#include "Design/Controls/PopUpButton.h"

#include "Design/Controls/ChoiceList.h"
#include "Design/Panel.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {
constexpr int drawnHeight = 26;
constexpr int leftPadding = 10;
constexpr int chevronSize = 12;
constexpr int chevronGap = 10;
constexpr int rightPadding = 6;
} // namespace

PopUpButton::PopUpButton(Look& look, const QStringList& choices, QWidget* parent)
    : Pressable(look, parent), choices_(choices) {
    setFocusPolicy(Qt::StrongFocus);
    setPressedAtOnce();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PopUpButton::setCurrent(int index) {
    if (index == current_ || index < 0 || index >= choices_.size())
        return;
    current_ = index;
    update();
    announceChange();
}

void PopUpButton::setSpokenName(const QString& name) {
    spoken_ = name;
}

void PopUpButton::press() {
    auto* const list = new ChoiceList(look(), choices_, current_, this); // deletes itself when it closes
    connect(list, &ChoiceList::chosen, this, [this](int index) {
        if (index == current_)
            return;
        setCurrent(index);
        emit chosen(index);
    });
    list->openAt(*this, drawnRect());
}

bool PopUpButton::isPressKey(int key) const {
    return key == Qt::Key_Up || key == Qt::Key_Down || Pressable::isPressKey(key);
}

QRect PopUpButton::drawnRect() const {
    return rect().adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin);
}

QSize PopUpButton::sizeHint() const {
    double widest = 0;
    for (const QString& choice : choices_)
        widest = std::max(widest, textWidth(Type::body, choice));
    return {static_cast<int>(std::ceil(widest)) + leftPadding + chevronGap + chevronSize + rightPadding +
                2 * ringMargin,
            qRound(drawnHeight * theme().textScale()) + 2 * ringMargin};
}

Description PopUpButton::describe() {
    return {.role = QAccessible::ComboBox,
            .name = spoken_,
            .value = choices_[current_],
            .actions = pressAction(QAccessibleActionInterface::showMenuAction())};
}

void PopUpButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF drawn = drawnRect();
    constexpr double radius = Space::buttonRadius - 2;
    painter.setPen(QPen(color(Tone::buttonLine), 1));
    painter.setBrush(color(isHovered() ? Tone::buttonHover : Tone::button));
    painter.drawRoundedRect(drawn.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    const QRectF chevron(drawn.right() - rightPadding - chevronSize, drawn.top(), chevronSize, drawn.height());
    const QRectF text(drawn.left() + leftPadding, drawn.top(),
                      chevron.left() - chevronGap - drawn.left() - leftPadding + 1, drawn.height());
    drawIcon(painter, chevron, "chevron.up.down", chevronSize, color(Tone::textSecondary));
    drawText(painter, text, Type::body, color(Tone::textPrimary), choices_[current_]);
    drawFocusRing(painter, QRectF(rect()), radius + ringMargin - 1);
}

} // namespace vantoro
