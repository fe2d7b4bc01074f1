#include "Design/Controls/Switch.h"

#include <algorithm>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace vantoro {

namespace {
constexpr QSize drawnSize(38, 22);
constexpr int knobInset = 2;
constexpr double knobResponseSeconds = 0.2;
} // namespace

Switch::Switch(Look& look, QWidget* parent) : PaintedWidget(look, parent), knob_(look, 0, [this] { update(); }) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Switch::setOn(bool on) {
    if (on == on_)
        return;
    on_ = on;
    knob_.set(on ? 1 : 0, knobResponseSeconds, isVisible());
    announceChange(QAccessible::StateChanged);
}

void Switch::setSpokenName(const QString& name) {
    spoken_ = name;
}

void Switch::toggle() {
    setOn(!on_);
    emit toggled(on_);
}

QSize Switch::sizeHint() const {
    return drawnSize + QSize(2 * ringMargin, 2 * ringMargin);
}

Description Switch::describe() {
    return {.role = QAccessible::CheckBox,
            .name = spoken_,
            .isSelected = on_,
            .actions = {{QAccessibleActionInterface::toggleAction(), [this] { toggle(); }}}};
}

void Switch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track(QPointF(ringMargin, (height() - drawnSize.height()) / 2.0), drawnSize);
    // Off, the outlines are what is seen; on, the colour is.
    if (!on_)
        painter.setPen(QPen(color(Tone::textTertiary), 1));
    else
        painter.setPen(theme().increasesContrast() ? QPen(color(Tone::buttonLine), 1) : QPen(Qt::NoPen));
    painter.setBrush(color(on_ ? Tone::accent : Tone::well));
    const double inset = on_ ? 0 : 0.5;
    painter.drawRoundedRect(track.adjusted(inset, inset, -inset, -inset), track.height() / 2 - inset,
                            track.height() / 2 - inset);

    const double diameter = track.height() - 2 * knobInset;
    const double travel = track.width() - 2 * knobInset - diameter;
    const double along = std::clamp(isRightToLeft() ? 1 - knob_.value() : knob_.value(), 0.0, 1.0);
    const QRectF knob(track.left() + knobInset + along * travel, track.top() + knobInset, diameter, diameter);
    painter.setBrush(color(on_ ? Tone::knobOnAccent : Tone::knob));
    painter.drawEllipse(knob.adjusted(inset, inset, -inset, -inset));
    if (hasFocus() && focus_.showsRing())
        drawFocusRing(painter, track.adjusted(-ringMargin, -ringMargin, ringMargin, ringMargin),
                      track.height() / 2 + ringMargin - 1, theme());
}

void Switch::hideEvent(QHideEvent* event) {
    knob_.settle();
    PaintedWidget::hideEvent(event);
}

void Switch::mousePressEvent(QMouseEvent* event) {
    pressed_ = event->button() == Qt::LeftButton;
}

void Switch::mouseReleaseEvent(QMouseEvent* event) {
    if (pressed_ && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        toggle();
    pressed_ = false;
}

void Switch::keyPressEvent(QKeyEvent* event) {
    focus_.keyUsed();
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        toggle();
    else
        PaintedWidget::keyPressEvent(event);
}

void Switch::focusInEvent(QFocusEvent* event) {
    focus_.focusIn(event->reason());
    PaintedWidget::focusInEvent(event);
    update();
}

void Switch::focusOutEvent(QFocusEvent* event) {
    focus_.focusOut();
    PaintedWidget::focusOutEvent(event);
    update();
}

} // namespace vantoro
