#include "Design/Panel.h"

#include <algorithm>
#include <QPainter>
#include <QPaintEvent>

namespace vantoro {

namespace {
/// Between the title and what stands beside it.
constexpr int titleGap = 12;
constexpr int markSize = 12;
constexpr int markGap = 4;
constexpr int dotWidth = 10;
} // namespace

Panel::Panel(Look& look, QWidget* parent) : PaintedWidget(look, parent), body_(new QVBoxLayout(this)) {
    body_->setSpacing(0);
    placeBody();
}

void Panel::placeBody() {
    const int title = title_.isEmpty() ? Space::panelPadding : qRound(titleHeight * theme().textScale());
    body_->setContentsMargins(sidePadding_, title, sidePadding_, bottomPadding_);
}

void Panel::assign(QString& member, const QString& value) {
    if (member == value)
        return;
    member = value;
    update();
}

void Panel::setTitle(const QString& title) {
    assign(title_, title);
    placeBody();
}

void Panel::setIcon(const QString& name) {
    assign(icon_, name);
}

void Panel::setSubtitle(const QString& subtitle) {
    assign(subtitle_, subtitle);
}

void Panel::setCaption(const QString& caption) {
    assign(caption_, caption);
}

void Panel::setCaptionMark(const QString& icon, const QString& text) {
    assign(markIcon_, icon);
    assign(markText_, text);
}

double Panel::markWidth() const {
    return markIcon_.isEmpty() ? 0 : dotWidth + markSize + markGap + textWidth(Type::caption, markText_);
}

bool Panel::hasRoomForCaption(const QString& caption) const {
    const double taken = 2 * Space::panelPadding + roomAtRight_ + textWidth(Type::sectionTitle, title_) + titleGap;
    return textWidth(Type::caption, caption) + markWidth() <= width() - taken;
}

void Panel::setRoomAtRight(int points) {
    if (points == roomAtRight_)
        return;
    roomAtRight_ = points;
    update();
}

void Panel::setFigure(const QString& figure) {
    assign(figure_, figure);
}

void Panel::setBottomPadding(int points) {
    bottomPadding_ = points;
    placeBody();
}

void Panel::setSidePadding(int points) {
    sidePadding_ = points;
    placeBody();
}

Description Panel::describe() {
    return {.role = QAccessible::Grouping, .name = title_};
}

void Panel::themeChanged() {
    placeBody();
}

void Panel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // Mostly a figure in the middle has changed: no corner and no title needs to be drawn for it.
    const QRect asked = event->rect();
    if (rect().adjusted(0, Space::panelRadius, 0, -Space::panelRadius).contains(asked)) {
        painter.fillRect(asked, color(Tone::panel));
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(Tone::panel));
        painter.drawRoundedRect(rect(), Space::panelRadius, Space::panelRadius);
    }
    if (title_.isEmpty() || asked.top() >= titleHeight * theme().textScale())
        return;
    constexpr int iconSize = 16;
    QRectF line(Space::panelPadding, 0, width() - 2 * Space::panelPadding, titleHeight * theme().textScale());
    if (roomAtRight_ > 0)
        line.setRight(line.right() - roomAtRight_);
    if (!icon_.isEmpty()) {
        drawIcon(painter, QRectF(line.left(), line.top(), iconSize, line.height()), icon_, iconSize,
                 color(Tone::textSecondary));
        line.setLeft(line.left() + iconSize + 8);
    }
    const double titleWidth = std::min(textWidth(Type::sectionTitle, title_), line.width());
    drawText(painter, line, Type::sectionTitle, color(Tone::textPrimary), title_);
    line.setLeft(line.left() + titleWidth + titleGap);
    if (!figure_.isEmpty()) {
        drawText(painter, line, Type::sectionTitle, color(Tone::textPrimary), figure_, Qt::AlignRight);
        line.setRight(line.right() - textWidth(Type::sectionTitle, figure_) - titleGap);
    } else if (!caption_.isEmpty()) {
        const auto say = [&](const QString& text) {
            drawText(painter, line, Type::caption, color(Tone::textTertiary), text, Qt::AlignRight);
        };
        if (!markIcon_.isEmpty()) {
            say(markText_);
            line.setRight(line.right() - markWidth());
            const QRectF dot(line.right(), line.top(), dotWidth, line.height());
            drawText(painter, dot, Type::caption, color(Tone::textTertiary), QStringLiteral("·"), Qt::AlignHCenter);
            drawIcon(painter, QRectF(dot.right(), line.top(), markSize, line.height()), markIcon_, markSize,
                     color(Tone::textTertiary));
        }
        say(caption_);
        line.setRight(line.right() - textWidth(Type::caption, caption_) - titleGap);
    }
    if (!subtitle_.isEmpty() && line.width() > 0)
        drawText(painter, line, Type::small, color(Tone::textTertiary), subtitle_);
}

} // namespace vantoro
