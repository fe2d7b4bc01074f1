#include "Views/Updates/UpdateMark.h"

#include <cmath>
#include <QPainter>

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

} // namespace vantoro
