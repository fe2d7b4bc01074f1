#include "Design/Controls/SegmentedControl.h"

#include "Design/Panel.h"

#include <algorithm>
#include <cmath>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace vantoro {

namespace {
constexpr int defaultHeight = 26;
constexpr int sidePadding = 14;
constexpr int inset = 2;
} // namespace

SegmentedControl::SegmentedControl(Look& look, Meaning meaning, const QStringList& segments, QWidget* parent)
    : PaintedWidget(look, parent), meaning_(meaning), texts_(segments) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    for (int i = 0; i < texts_.size(); ++i)
        segments_.push_back(new SpokenPart(look, this, [this, i] {
            return Description{.role = meaning_ == Meaning::tabs ? QAccessible::PageTab : QAccessible::RadioButton,
                               .name = texts_[i],
                               .isSelected = current_ == i,
                               .isSelectable = true,
                               .actions = {{QAccessibleActionInterface::pressAction(), [this, i] { choose(i); }}}};
        }));
}

void SegmentedControl::setCurrent(int index) {
    if (index == current_ || index < 0 || index >= texts_.size())
        return;
    current_ = index;
    update();
    segments_[static_cast<std::size_t>(index)]->announceChange(QAccessible::Selection);
}

void SegmentedControl::choose(int index) {
    if (index == current_ || index < 0 || index >= texts_.size())
        return;
    setCurrent(index);
    emit chosen(index);
}

void SegmentedControl::setSegmentSize(const QSize& size) {
    fixed_ = size;
    updateGeometry();
}

int SegmentedControl::segmentWidth(int index) const {
    if (fixed_)
        return qRound(fixed_->width() * std::max(1.0, theme().textScale()));
    return static_cast<int>(std::ceil(textWidth(Type::sectionTitle, texts_[index]))) + 2 * sidePadding;
}

QSize SegmentedControl::sizeHint() const {
    int width = 2 * ringMargin + 2 * inset;
    for (int i = 0; i < texts_.size(); ++i)
        width += segmentWidth(i);
    const double height = fixed_ ? fixed_->height() : defaultHeight;
    return {width, qRound(height * theme().textScale()) + 2 * ringMargin};
}

QRect SegmentedControl::segmentRect(int index) const {
    int left = ringMargin + inset;
    for (int i = 0; i < index; ++i)
        left += segmentWidth(i);
    const int top = ringMargin + inset;
    return {left, top, segmentWidth(index), height() - 2 * top};
}

void SegmentedControl::placeSegments() {
    for (std::size_t i = 0; i < segments_.size(); ++i)
        segments_[i]->setGeometry(mirrored(segmentRect(static_cast<int>(i))));
}

void SegmentedControl::resizeEvent(QResizeEvent*) {
    placeSegments();
}

Description SegmentedControl::describe() {
    return {.role = meaning_ == Meaning::tabs ? QAccessible::PageTabList : QAccessible::Grouping,
            .name = spokenName(),
            .value = texts_[current_]};
}

void SegmentedControl::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(Tone::segment));
    const QRectF drawn = QRectF(rect()).adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin);
    painter.drawRoundedRect(drawn, Space::buttonRadius, Space::buttonRadius);
    for (int i = 0; i < texts_.size(); ++i) {
        const QRectF segment = segmentRect(i);
        const bool isCurrent = i == current_;
        if (isCurrent) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(color(Tone::segmentSelected));
            painter.drawRoundedRect(mirrored(segment), Space::buttonRadius - inset, Space::buttonRadius - inset);
        }
        drawText(painter, segment.adjusted(4, 0, -4, 0), isCurrent ? Type::sectionTitle : Type::body,
                 color(isCurrent ? Tone::textPrimary : Tone::textSecondary), texts_[i], Qt::AlignHCenter);
    }
    drawFocusRing(painter, QRectF(rect()), Space::buttonRadius + ringMargin - 1);
}

void SegmentedControl::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    for (int i = 0; i < texts_.size(); ++i)
        if (mirrored(segmentRect(i)).contains(event->position().toPoint()))
            choose(i);
}

void SegmentedControl::keyPressEvent(QKeyEvent* event) {
    keyUsed();
    const int forward = isRightToLeft() ? -1 : 1;
    const bool isHeld = event->isAutoRepeat(); // one segment a press: what a segment stands for may be a whole pane
    if (event->key() == Qt::Key_Left)
        choose(isHeld ? current_ : current_ - forward);
    else if (event->key() == Qt::Key_Right)
        choose(isHeld ? current_ : current_ + forward);
    else
        PaintedWidget::keyPressEvent(event);
}

} // namespace vantoro
