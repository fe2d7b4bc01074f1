#include "Views/ControlBar.h"

#include "Views/UpdateChip.h"
#include "Views/Words.h"

#include <cmath>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace vantoro {

/// The dashed mark.
class BadgeView : public PaintedWidget {
public:
    explicit BadgeView(Look& look, QWidget* parent) : PaintedWidget(look, parent) { hide(); }

    void show(const Badge& badge) {
        badge_ = badge;
        setToolTip(badge.tooltip);
        setVisible(!badge.text.isEmpty());
        update();
    }

    QSize sizeHint() const override {
        return {static_cast<int>(std::ceil(textWidth(Type::small, badge_.text))) + iconSize + 28,
                qRound(24 * theme().textScale())};
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
        const QRectF drawn = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        painter.drawRoundedRect(drawn, drawn.height() / 2, drawn.height() / 2);
        drawIcon(painter, QRectF(9, 0, iconSize, height()), badge_.icon, iconSize, color(Tone::textSecondary));
        drawText(painter, QRectF(9 + iconSize + 6, 0, width(), height()), Type::small, color(Tone::textSecondary),
                 badge_.text);
    }

private:
    static constexpr int iconSize = 14;
    Badge badge_;
};

ControlBar::ControlBar(Look& look, QWidget* parent)
    : PaintedWidget(look, parent)
    , switcher_(new SegmentedControl(look, SegmentedControl::Meaning::tabs, paneTitles(), this))
    , badge_(new BadgeView(look, this))
    , chip_(new UpdateChip(look, this))
    , settings_(new Button(look, Button::Kind::quiet, QString(), this)) {
    switcher_->setSegmentSize({88, 28});
    settings_->setIcon("gearshape", 18);
    settings_->setDrawnHeight(28);
    settings_->setSpokenName(tr("Settings"));
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
    const QSize badge = badge_->sizeHint();
    const int badgeRoom = badge_->isHidden() ? 0 : badge.width() + gap;
    if (!chip_->isHidden()) {
        constexpr int ring = UpdateChip::ringMargin;
        const int switcherEnd = (width() + switcher.width()) / 2;
        const bool isNarrow = width() < narrowWidth * theme().textScale();
        const QSize chip = chip_->fit(x - gap - badgeRoom - switcherEnd + ring, isNarrow);
        x -= chip.width() - ring + gap;
        chip_->setGeometry(centred(chip, x));
        x += ring;
    }
    x -= badge.width() + gap;
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
