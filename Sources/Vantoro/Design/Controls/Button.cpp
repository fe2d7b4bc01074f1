#include "Design/Controls/Button.h"

#include "Design/Panel.h"

#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {
constexpr int iconGap = 8;
} // namespace

Button::Button(Look& look, Kind kind, const QString& text, QWidget* parent)
    : Pressable(look, parent), kind_(kind), text_(text) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Button::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    updateGeometry();
    update();
    announceChange(QAccessible::NameChanged);
}

void Button::setIcon(const QString& name, int size) {
    icon_ = name;
    iconSize_ = size;
    updateGeometry();
    update();
}

void Button::setSpokenName(const QString& name) {
    PaintedWidget::setSpokenName(name);
    if (text_.isEmpty())
        setToolTip(name);
}

void Button::setDrawnHeight(int points) {
    height_ = points;
    updateGeometry();
}

TextStyle Button::textStyle() const {
    return (isSmall() ? Type::small : Type::body).semibold();
}

QSize Button::sizeHint() const {
    const int height = static_cast<int>(std::round(height_ * theme().textScale())) + 2 * ringMargin;
    if (text_.isEmpty())
        return {height, height};
    double width = textWidth(textStyle(), text_) + 2 * (isSmall() ? smallSidePadding : sidePadding) + 2 * ringMargin;
    if (!icon_.isEmpty())
        width += iconSize_ + iconGap;
    return {static_cast<int>(std::ceil(width)), height};
}

QSize Button::minimumSizeHint() const {
    const QSize hint = sizeHint();
    return {std::min(hint.width(), 60), hint.height()};
}

Description Button::describe() {
    return {
        .role = QAccessible::Button, .name = spokenName().isEmpty() ? text_ : spokenName(), .actions = pressAction()};
}

QColor Button::fill() const {
    if (kind_ == Kind::standard) {
        const QColor blue = color(Tone::defaultButton);
        return isPressed() ? blue.darker(115) : isHovered() ? blue.lighter(108) : blue;
    }
    if (isPressed())
        return color(Tone::buttonPressed);
    if (isHovered() && isEnabled())
        return color(Tone::buttonHover);
    return kind_ == Kind::quiet ? QColor(Qt::transparent) : color(Tone::button);
}

QColor Button::ink() const {
    QColor shown = color(kind_ == Kind::standard ? Tone::onAccent
                         : text_.isEmpty()       ? Tone::textSecondary
                                                 : Tone::textPrimary);
    if (!isEnabled())
        shown.setAlphaF(0.45F);
    return shown;
}

void Button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF drawn = QRectF(rect()).adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin);
    if (kind_ == Kind::bordered) {
        painter.setPen(QPen(color(Tone::buttonLine), 1));
        painter.setBrush(fill());
        painter.drawRoundedRect(drawn.adjusted(0.5, 0.5, -0.5, -0.5), Space::buttonRadius, Space::buttonRadius);
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill());
        painter.drawRoundedRect(drawn, Space::buttonRadius, Space::buttonRadius);
    }
    QRectF content = drawn;
    if (!icon_.isEmpty() && text_.isEmpty()) {
        drawIcon(painter, drawn, icon_, iconSize_, ink());
    } else {
        if (!icon_.isEmpty()) {
            const double width = std::min(textWidth(textStyle(), text_) + iconSize_ + iconGap, drawn.width());
            content.setLeft(drawn.center().x() - width / 2);
            drawIcon(painter, QRectF(content.left(), drawn.top(), iconSize_, drawn.height()), icon_, iconSize_, ink());
            content.setLeft(content.left() + iconSize_ + iconGap);
            drawText(painter, content, textStyle(), ink(), text_);
        } else {
            drawText(painter, content.adjusted(6, 0, -6, 0), textStyle(), ink(), text_, Qt::AlignHCenter);
        }
    }
    drawFocusRing(painter, QRectF(rect()), Space::buttonRadius + ringMargin - 1);
}

} // namespace vantoro
