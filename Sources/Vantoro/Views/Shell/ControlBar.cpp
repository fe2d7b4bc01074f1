#include "Views/Shell/ControlBar.h"

#include "Views/Shared/Words.h"
#include "Views/Updates/UpdateParts.h"

#include <cmath>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWindow>

namespace vantoro {

/// The dashed mark.
class BadgeView : public PaintedWidget {
public:
    /// Room around the badge for the focus ring.
    static constexpr int ringMargin = 4;

    explicit BadgeView(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
        setFocusPolicy(Qt::TabFocus);
        hide();
    }

    void show(const Badge& badge) {
        badge_ = badge;
        explain();
        setVisible(!badge.text.isEmpty());
        update();
    }

    /// Without its text, where there is no room for it.
    void setCompact(bool compact) {
        if (compact == isCompact_)
            return;
        isCompact_ = compact;
        explain();
        update();
    }

    int widthWithText() const {
        return static_cast<int>(std::ceil(textWidth(Type::small, badge_.text))) + iconSize + 28;
    }

    QSize sizeHint() const override {
        return QSize(isCompact_ ? iconSize + 14 : widthWithText(), qRound(24 * theme().textScale())) +
               QSize(2 * ringMargin, 2 * ringMargin);
    }

    Description describe() override {
        return {.role = QAccessible::StaticText, .name = badge_.text, .value = badge_.tooltip};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPen dashes(color(Tone::textTertiary), 1);
        dashes.setDashPattern({3, 2.5});
        painter.setPen(dashes);
        constexpr double inset = ringMargin + 0.5;
        const QRectF drawn = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
        painter.drawRoundedRect(drawn, drawn.height() / 2, drawn.height() / 2);
        const int left = ringMargin + (isCompact_ ? 7 : 9);
        drawIcon(painter, QRectF(left, 0, iconSize, height()), badge_.icon, iconSize, color(Tone::textSecondary));
        if (!isCompact_)
            drawText(painter, QRectF(left + iconSize + 6, 0, width(), height()), Type::small,
                     color(Tone::textSecondary), badge_.text);
        drawFocusRing(painter, QRectF(rect()), height() / 2.0);
    }

    // Reached by the keyboard for what the pointer would have it say.
    void focusInEvent(QFocusEvent* event) override {
        PaintedWidget::focusInEvent(event);
        // Queued: a tooltip goes with the next change of focus, and this one is still under way.
        if (hasKeyboard() && event->reason() != Qt::OtherFocusReason)
            QMetaObject::invokeMethod(
                this,
                [this] {
                    QToolTip::showText(mapToGlobal(rect().bottomLeft()), hasFocus() ? toolTip() : QString(), this);
                },
                Qt::QueuedConnection);
    }

    void focusOutEvent(QFocusEvent* event) override {
        PaintedWidget::focusOutEvent(event);
        QToolTip::hideText();
    }

private:
    static constexpr int iconSize = 14;

    void explain() { setToolTip(isCompact_ ? badge_.text + u'\n' + badge_.tooltip : badge_.tooltip); }

    Badge badge_;
    bool isCompact_ = false;
};

namespace {

QStringList paneTitles() {
    QStringList titles;
    for (const PaneKind& kind : panes)
        titles.append(tr(kind.title));
    return titles;
}

} // namespace

ControlBar::ControlBar(Look& look, QWidget* parent)
    : PaintedWidget(look, parent)
    , switcher_(new SegmentedControl(look, SegmentedControl::Meaning::tabs, paneTitles(), this))
    , badge_(new BadgeView(look, this))
    , chip_(new UpdateChip(look, this))
    , settings_(new Button(look, Button::Kind::quiet, QString(), this)) {
    switcher_->setSegmentSize({88, 28});
    settings_->setIcon("gearshape", 18);
    settings_->setDrawnHeight(28);
    settings_->setSpokenName(vantoro::tr("Settings"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(switcher_, &SegmentedControl::chosen, this,
            [this](int index) { emit paneChosen(static_cast<Pane>(index)); });
    connect(settings_, &Button::clicked, this, &ControlBar::settingsRequested);
    connect(chip_, &UpdateChip::pressed, this, &ControlBar::updatePressed);
}

void ControlBar::showPane(Pane pane) {
    switcher_->setCurrent(static_cast<int>(pane));
}

void ControlBar::showBadge(const Badge& badge) {
    badge_->show(badge);
    place();
}

void ControlBar::showUpdate(const UpdateLine& line) {
    chip_->show(line);
    place();
}

QSize ControlBar::sizeHint() const {
    return {switcher_->sizeHint().width() + 240, qRound(barHeight * std::min(theme().textScale(), 1.3))};
}

QSize ControlBar::minimumSizeHint() const {
    return {switcher_->sizeHint().width(), sizeHint().height()};
}

Description ControlBar::describe() {
    return {.role = QAccessible::ToolBar, .name = QStringLiteral("Vantoro")};
}

void ControlBar::place() {
    const auto centred = [this](const QSize& size, int left) {
        return mirrored(QRect(QPoint(left, (height() - size.height()) / 2), size));
    };
    const QSize switcher = switcher_->sizeHint();
    switcher_->setGeometry(centred(switcher, (width() - switcher.width()) / 2));
    const QSize button = settings_->sizeHint();
    constexpr int right = 16;
    int x = width() - right - button.width() + Button::ringMargin;
    settings_->setGeometry(centred(button, x));
    constexpr int gap = 8;
    constexpr int ring = UpdateChip::ringMargin;
    const bool isNarrow = width() < narrowWidth * theme().textScale();
    const bool hasChip = !chip_->isHidden();
    // The chip's word is worth more than the badge's.
    const int room = x - gap - (width() + switcher.width()) / 2;
    const int chipRoom = hasChip ? chip_->fit(room + ring, isNarrow).width() - 2 * ring + gap : 0;
    badge_->setCompact(badge_->widthWithText() + chipRoom + gap > room);
    const QSize badge = badge_->sizeHint();
    constexpr int badgeRing = BadgeView::ringMargin;
    const int badgeRoom = badge_->isHidden() ? 0 : badge.width() - 2 * badgeRing + gap;
    if (hasChip) {
        const QSize chip = chip_->fit(room - badgeRoom + ring, isNarrow);
        x -= chip.width() - ring + gap;
        chip_->setGeometry(centred(chip, x));
        x += ring;
    }
    x -= badge.width() - badgeRing + gap;
    badge_->setGeometry(centred(badge, x));
}

void ControlBar::resizeEvent(QResizeEvent*) {
    place();
}

void ControlBar::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), color(Tone::window));
}

void ControlBar::mousePressEvent(QMouseEvent* event) {
    // The empty parts are the window's title bar, as on every system that draws none above them.
    if (event->button() == Qt::LeftButton && window()->windowHandle() != nullptr)
        window()->windowHandle()->startSystemMove();
}

void ControlBar::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (window()->isMaximized())
        window()->showNormal();
    else
        window()->showMaximized();
}

} // namespace vantoro
