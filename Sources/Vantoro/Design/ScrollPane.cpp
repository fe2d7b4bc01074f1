#include "Design/ScrollPane.h"

#include "Design/Panel.h"

#include <algorithm>
#include <QApplication>
#include <QFocusEvent>
#include <QPainter>
#include <QScrollBar>

namespace vantoro {

namespace {

/// The thumb alone, as wide as it is high-contrast; hidden while there is nothing to scroll.
class ThinBar : public QScrollBar {
public:
    ThinBar(Look& look, QWidget* parent) : QScrollBar(Qt::Vertical, parent), look_(look) {
        setAttribute(Qt::WA_OpaquePaintEvent, false);
    }

    QSize sizeHint() const override { return {10, 40}; }

    bool hasKeyboard = false;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), palette().color(QPalette::Window));
        const int span = maximum() - minimum() + pageStep();
        if (maximum() <= minimum() || span <= 0)
            return;
        constexpr double shortest = 32;
        const double track = height() - 8;
        const double length = std::max(shortest, track * pageStep() / span);
        const double top = 4 + (track - length) * (value() - minimum()) / (maximum() - minimum());
        QColor thumb = look_.theme.color(hasKeyboard ? Tone::accent : Tone::textTertiary);
        thumb.setAlphaF(hasKeyboard ? 1 : 0.6F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(thumb);
        painter.drawRoundedRect(QRectF(width() - 8, top, 6, length), 3, 3);
    }

private:
    Look& look_;
};

} // namespace

ScrollPane::ScrollPane(Look& look, QWidget* parent)
    : QScrollArea(parent), look_(look), content_(new QWidget), column_(new QVBoxLayout(content_)) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ThinBar(look, this));
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    column_->setSpacing(Space::panelGap);
    setWidget(content_);
    applyTheme();
    connect(&look.theme, &Theme::changed, this, &ScrollPane::applyTheme);
}

void ScrollPane::applyTheme() {
    QPalette colors = palette();
    colors.setColor(QPalette::Window, look_.theme.color(surface_));
    setPalette(colors);
    content_->setPalette(colors);
    content_->setAutoFillBackground(true);
}

void ScrollPane::setSurface(Tone surface) {
    surface_ = surface;
    applyTheme();
}

void ScrollPane::focusInEvent(QFocusEvent* event) {
    QScrollArea::focusInEvent(event);
    static_cast<ThinBar*>(verticalScrollBar())->hasKeyboard =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    verticalScrollBar()->update();
}

void ScrollPane::focusOutEvent(QFocusEvent* event) {
    QScrollArea::focusOutEvent(event);
    static_cast<ThinBar*>(verticalScrollBar())->hasKeyboard = false;
    verticalScrollBar()->update();
}

void ScrollPane::resizeEvent(QResizeEvent* event) {
    // The bar takes its room from the margin it stands in, so that nothing shifts when it comes and goes.
    const bool scrolls = viewport()->width() < width();
    const int bar = scrolls ? width() - viewport()->width() : 0;
    const int side = Space::windowMargin + std::max(0, (width() - 2 * Space::windowMargin - widestContent) / 2);
    const QMargins margins = margins_.value_or(QMargins(side, 8, side, Space::windowMargin));
    column_->setContentsMargins(margins - (isRightToLeft() ? QMargins(bar, 0, 0, 0) : QMargins(0, 0, bar, 0)));
    QScrollArea::resizeEvent(event);
}

bool ScrollPane::focusNextPrevChild(bool next) {
    const bool moved = QScrollArea::focusNextPrevChild(next);
    if (QWidget* const focused = QApplication::focusWidget(); moved && focused != nullptr && isAncestorOf(focused))
        ensureWidgetVisible(focused, 0, Space::windowMargin);
    return moved;
}

} // namespace vantoro
