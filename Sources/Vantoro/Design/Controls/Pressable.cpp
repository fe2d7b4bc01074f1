#include "Design/Controls/Pressable.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <utility>

namespace vantoro {

void Pressable::cancelPress() {
    pressed_ = false;
    update();
}

void Pressable::setHovered(bool hovered) {
    if (hovered == hovered_)
        return;
    hovered_ = hovered;
    update();
}

bool Pressable::isPressKey(int key) const {
    return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
}

std::vector<Description::Action> Pressable::pressAction(const QString& name) {
    if (!isEnabled() || !isPressable())
        return {};
    return {{name, [this] { press(); }}};
}

void Pressable::enterEvent(QEnterEvent* event) {
    setHovered(pressPlace().contains(event->position().toPoint()));
}

void Pressable::leaveEvent(QEvent*) {
    setHovered(false);
}

void Pressable::mousePressEvent(QMouseEvent* event) {
    const bool isOurs =
        event->button() == Qt::LeftButton && isPressable() && pressPlace().contains(event->position().toPoint());
    // What is not pressed is left to what lies behind: a title bar drags its window.
    event->setAccepted(isOurs);
    pressed_ = isOurs && !atOnce_;
    if (pressed_)
        update();
    else if (isOurs)
        press();
}

void Pressable::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !std::exchange(pressed_, false))
        return;
    update();
    if (isPressable() && pressPlace().contains(event->position().toPoint()))
        press();
}

void Pressable::keyPressEvent(QKeyEvent* event) {
    keyUsed();
    if (!isPressable() || !isPressKey(event->key()))
        PaintedWidget::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        press();
}

void Pressable::focusOutEvent(QFocusEvent* event) {
    pressed_ = false;
    PaintedWidget::focusOutEvent(event);
}

SpokenPart::SpokenPart(Look& look, QWidget* parent, std::function<Description()> describe)
    : PaintedWidget(look, parent), describe_(std::move(describe)) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

} // namespace vantoro
