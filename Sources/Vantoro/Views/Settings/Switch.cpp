#include "Views/Settings/Switch.h"

#include <algorithm>
#include <QPainter>

namespace vantoro {

namespace {
constexpr QSize drawnSize(38, 22);
constexpr int knobInset = 2;
constexpr double knobResponseSeconds = 0.2;
} // namespace

Switch::Switch(Look& look, QWidget* parent) : Pressable(look, parent), knob_(look, 0, [this] { update(); }) {
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

void Switch::press() {
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
            .actions = pressAction(QAccessibleActionInterface::toggleAction())};
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
    drawFocusRing(painter, track.adjusted(-ringMargin, -ringMargin, ringMargin, ringMargin),
                  track.height() / 2 + ringMargin - 1);
}

void Switch::hideEvent(QHideEvent* event) {
    knob_.settle();
    Pressable::hideEvent(event);
}

} // namespace vantoro
