#include "Views/Settings/SettingsControls.h"

#include <algorithm>
#include <cmath>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace vantoro {

namespace {
constexpr double knobRadius = 10;
constexpr double stopRadius = 3;
constexpr double trackHeight = 4;
constexpr double centerLine = 22;
constexpr double captionTop = 41;
constexpr double knobResponseSeconds = 0.4;
} // namespace

StepSlider::StepSlider(Look& look, int stops, QWidget* parent)
    : PaintedWidget(look, parent), stops_(std::max(2, stops)), knob_(look, 0, [this] { update(); }) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void StepSlider::setCurrent(int stop) {
    stop = std::clamp(stop, 0, stops_ - 1);
    if (stop == current_)
        return;
    current_ = stop;
    knob_.set(stop, knobResponseSeconds, isVisible());
}

void StepSlider::setCaption(int stop, const QString& caption) {
    captions_[stop] = caption;
    update();
}

void StepSlider::setSpokenValue(const QString& value) {
    if (value == spokenValue_)
        return;
    spokenValue_ = value;
    announceChange();
}

void StepSlider::moveTo(int stop) {
    const int before = current_;
    setCurrent(stop);
    if (current_ != before)
        emit chosen(current_);
}

double StepSlider::xAt(double position) const {
    const double left = ringMargin + knobRadius;
    const double along = position / (stops_ - 1) * (width() - 2 * left);
    return isRightToLeft() ? width() - left - along : left + along;
}

int StepSlider::stopAt(double x) const {
    const double first = xAt(0);
    const double pitch = (xAt(stops_ - 1) - first) / (stops_ - 1);
    return std::clamp(static_cast<int>(std::round((x - first) / pitch)), 0, stops_ - 1);
}

QSize StepSlider::sizeHint() const {
    return {360, static_cast<int>(captionTop + lineHeight(Type::caption)) + 2};
}

Description StepSlider::describe() {
    return {.role = QAccessible::Slider,
            .name = spokenName(),
            .value = spokenValue_,
            .number = current_,
            .least = 0,
            .most = stops_ - 1.0,
            .setNumber = [this](double stop) { moveTo(qRound(stop)); },
            .actions = {{QAccessibleActionInterface::increaseAction(), [this] { moveTo(current_ + 1); }},
                        {QAccessibleActionInterface::decreaseAction(), [this] { moveTo(current_ - 1); }}}};
}

void StepSlider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double knobAt = std::clamp(knob_.value(), 0.0, stops_ - 1.0);
    const double x = xAt(knobAt);
    const auto bar = [&](double from, double to, Tone tone) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(tone));
        painter.drawRoundedRect(QRectF(QPointF(std::min(from, to), centerLine - trackHeight / 2),
                                       QPointF(std::max(from, to), centerLine + trackHeight / 2)),
                                trackHeight / 2, trackHeight / 2);
    };
    bar(xAt(0), xAt(stops_ - 1), Tone::well);
    bar(xAt(0), x, Tone::accent);
    for (int stop = 0; stop < stops_; ++stop) {
        painter.setBrush(color(stop <= knobAt ? Tone::accent : Tone::textTertiary));
        painter.drawEllipse(QPointF(xAt(stop), centerLine), stopRadius, stopRadius);
    }
    paintCaptions(painter);
    const QPointF center(x, centerLine);
    painter.setPen(QPen(color(Tone::blade), 1));
    painter.setBrush(color(Tone::knob));
    painter.drawEllipse(center, knobRadius - 0.5, knobRadius - 0.5);
    constexpr double reach = knobRadius + ringMargin;
    drawFocusRing(painter, QRectF(center.x() - reach, center.y() - reach, 2 * reach, 2 * reach), reach - 1);
}

void StepSlider::paintCaptions(QPainter& painter) const {
    const double height = lineHeight(Type::caption);
    for (const auto& [stop, caption] : captions_) {
        const double width = textWidth(Type::caption, caption);
        const double x = xAt(stop);
        // The captions of the ends stand flush with the knob at its ends, the others centred under their stop.
        const double left = std::clamp(x - width / 2, double(ringMargin), this->width() - ringMargin - width);
        // The stop it belongs to is mirrored already.
        drawText(painter, mirrored(QRectF(left, captionTop, width + 1, height)), Type::caption,
                 color(Tone::textTertiary), caption);
        if (stop > 0 && stop < stops_ - 1) {
            painter.fillRect(QRectF(x - 1, centerLine + knobRadius + 2, 2, 5), color(Tone::rampMark));
        }
    }
}

void StepSlider::hideEvent(QHideEvent* event) {
    knob_.settle();
    PaintedWidget::hideEvent(event);
}

void StepSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        moveTo(stopAt(event->position().x()));
}

void StepSlider::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton)
        moveTo(stopAt(event->position().x()));
}

void StepSlider::keyPressEvent(QKeyEvent* event) {
    keyUsed();
    const int forward = isRightToLeft() ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Left:
        moveTo(current_ - forward);
        break;
    case Qt::Key_Right:
        moveTo(current_ + forward);
        break;
    case Qt::Key_Down:
        moveTo(current_ - 1);
        break;
    case Qt::Key_Up:
        moveTo(current_ + 1);
        break;
    case Qt::Key_Home:
        moveTo(0);
        break;
    case Qt::Key_End:
        moveTo(stops_ - 1);
        break;
    default:
        PaintedWidget::keyPressEvent(event);
    }
}

namespace {
constexpr QSize drawnSize(38, 22);
constexpr int knobInset = 2;
constexpr double switchResponseSeconds = 0.2;
} // namespace

Switch::Switch(Look& look, QWidget* parent) : Pressable(look, parent), knob_(look, 0, [this] { update(); }) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Switch::setOn(bool on) {
    if (on == on_)
        return;
    on_ = on;
    knob_.set(on ? 1 : 0, switchResponseSeconds, isVisible());
    announceChange(QAccessible::StateChanged);
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
            .name = spokenName(),
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
