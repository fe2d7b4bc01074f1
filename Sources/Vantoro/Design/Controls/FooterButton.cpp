#include "Design/Controls/FooterButton.h"

#include "Design/Panel.h"

#include <algorithm>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {
constexpr int iconSize = 16;
constexpr int textLeft = Space::panelPadding + iconSize + 10;
constexpr int chevronSize = 14;
/// From the right edge to the chevron's middle.
constexpr int chevronInset = 19;
} // namespace

FooterButton::FooterButton(Look& look, const QString& icon, QWidget* parent) : Pressable(look, parent), icon_(icon) {
    setFocusPolicy(Qt::StrongFocus);
}

void FooterButton::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    update();
    announceChange(QAccessible::NameChanged);
}

QSize FooterButton::sizeHint() const {
    const int width = static_cast<int>(textWidth(Type::body.medium(), text_)) + textLeft + 2 * chevronInset;
    return {width, std::max(48, static_cast<int>(lineHeight(Type::body)) + 30)};
}

Description FooterButton::describe() {
    return {.role = QAccessible::Button, .name = text_, .actions = pressAction()};
}

void FooterButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isHovered() && isEnabled()) {
        QPainterPath shape;
        shape.addRoundedRect(QRectF(rect()).adjusted(0, -Space::panelRadius, 0, 0), Space::panelRadius,
                             Space::panelRadius);
        painter.setClipRect(rect());
        painter.fillPath(shape, color(isPressed() ? Tone::buttonPressed : Tone::hover));
    }
    painter.fillRect(QRect(0, 0, width(), 1), color(Tone::line));
    const QRectF content(0, 2, width(), height() - 2);
    drawIcon(painter, QRectF(Space::panelPadding, content.top(), iconSize, content.height()), icon_, iconSize,
             color(isEnabled() ? Tone::textSecondary : Tone::textTertiary));
    drawText(painter, content.adjusted(textLeft, 0, -2 * chevronInset, 0), Type::body.medium(),
             color(isEnabled() ? Tone::textPrimary : Tone::textTertiary), text_);
    if (!isEnabled())
        return;
    drawIcon(painter, QRectF(width() - chevronInset - 10, content.top(), 20, content.height()), "chevron.right",
             chevronSize, color(Tone::textTertiary));
    drawFocusRing(painter, QRectF(rect()).adjusted(4, 4, -4, -4), Space::buttonRadius);
}

} // namespace vantoro
