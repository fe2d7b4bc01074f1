#include "Design/Controls/Sheet.h"

#include "Design/Controls/Button.h"
#include "Design/TextLabel.h"

#include <algorithm>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace vantoro {

namespace {
constexpr double riseSeconds = 0.2;
constexpr double fadeSeconds = 0.12;
constexpr double risePoints = 12;
} // namespace

Sheet::Sheet(Look& look, QWidget& window, int radius)
    : PaintedWidget(look, &window), card_(new QWidget(this)), radius_(radius) {
    setFocusPolicy(Qt::StrongFocus);
    window.installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now != nullptr && now != this && now->window() == this->window() && isOnTop() && !isAncestorOf(now))
            setFocus(Qt::OtherFocusReason);
    });
}

Sheet::~Sheet() = default;

bool Sheet::isOnTop() const {
    const auto sheets = parentWidget()->findChildren<Sheet*>(Qt::FindDirectChildrenOnly);
    // Children are kept from the lowest to the topmost.
    const auto top = std::find_if(sheets.rbegin(), sheets.rend(),
                                  [this](const Sheet* sheet) { return sheet->isVisibleTo(parentWidget()); });
    return top != sheets.rend() && *top == this;
}

void Sheet::open(QWidget* focus) {
    focusBefore_ = QApplication::focusWidget();
    setGeometry(parentWidget()->rect());
    opened_ = look().clock.now();
    const bool isSeen = parentWidget()->isVisible() && !look().clock.isPaused();
    progress_ = isSeen ? 0 : 1;
    if (isSeen)
        look().clock.run(*this);
    show();
    raise();
    placeCard();
    (focus != nullptr ? focus : this)->setFocus(Qt::OtherFocusReason);
}

void Sheet::close() {
    if (!isVisibleTo(parentWidget()))
        return;
    hide();
    if (focusBefore_ != nullptr)
        focusBefore_->setFocus(Qt::OtherFocusReason);
    emit closed();
    deleteLater();
}

bool Sheet::advance(double now) {
    const double duration = theme().reducesMotion() ? fadeSeconds : riseSeconds;
    const double t = std::clamp((now - opened_) / duration, 0.0, 1.0);
    progress_ = 1 - (1 - t) * (1 - t);
    placeCard();
    update();
    return t < 1;
}

void Sheet::placeCard() {
    const QSize size = cardSize(this->size()).boundedTo(this->size());
    const double rise = theme().reducesMotion() ? 0 : (1 - progress_) * risePoints;
    card_->setGeometry((width() - size.width()) / 2, (height() - size.height()) / 2 + qRound(rise), size.width(),
                       size.height());
}

Description Sheet::describe() {
    return {.role = QAccessible::Dialog, .name = spokenName()};
}

void Sheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(progress_);
    painter.fillRect(rect(), color(Tone::dim));
    const QRectF card = card_->geometry();
    // The shadow is a handful of outlines, fainter outwards: a blur of 64 points would be a picture of the window's
    // size.
    constexpr int rings = 12;
    QColor shadow = color(Tone::shadow);
    shadow.setAlphaF(shadow.alphaF() / (rings * 1.6F));
    painter.setPen(Qt::NoPen);
    painter.setBrush(shadow);
    for (int ring = rings; ring > 0; --ring) {
        const double spread = ring * 32.0 / rings;
        painter.drawRoundedRect(card.adjusted(-spread, -spread + 24, spread, spread + 24), radius_ + spread,
                                radius_ + spread);
    }
    painter.setPen(QPen(color(Tone::outline), 1));
    painter.setBrush(color(Tone::raised));
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), radius_, radius_);
}

void Sheet::resizeEvent(QResizeEvent*) {
    placeCard();
}

void Sheet::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        accept();
    // Nothing below the sheet hears a key.
}

void Sheet::mousePressEvent(QMouseEvent*) {}

bool Sheet::event(QEvent* event) {
    // Accepted, a key comes to the sheet as a press instead of setting off a shortcut of the window.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    return PaintedWidget::event(event);
}

bool Sheet::eventFilter(QObject* watched, QEvent* event) {
    if (watched != parentWidget())
        return PaintedWidget::eventFilter(watched, event);
    if (event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    if (!isOnTop())
        return PaintedWidget::eventFilter(watched, event);
    // Keys that reach the window passed the sheet by: the keyboard is on something below it.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::KeyPress) {
        setFocus(Qt::OtherFocusReason);
        QApplication::sendEvent(this, event);
        event->accept();
        return true;
    }
    return PaintedWidget::eventFilter(watched, event);
}

bool Sheet::focusNextPrevChild(bool next) {
    // Around within the card: past its last stop comes its first.
    QList<QWidget*> stops;
    for (QWidget* const child : card_->findChildren<QWidget*>())
        if ((child->focusPolicy() & Qt::TabFocus) != 0 && child->isVisible() && child->isEnabled())
            stops.append(child);
    if (stops.isEmpty())
        return true;
    // Children are found in the order they were made, which is the reading order.
    const qsizetype at = stops.indexOf(QApplication::focusWidget());
    const qsizetype to = at < 0 ? (next ? 0 : stops.size() - 1) : (at + (next ? 1 : stops.size() - 1)) % stops.size();
    stops[to]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

namespace {
constexpr int alertWidth = 300;
constexpr int alertRadius = 14;
constexpr int padding = 20;
} // namespace

NoticeAlert::NoticeAlert(Look& look, QWidget& window, const QString& title, const QString& text, const QString& answer)
    : Sheet(look, window, alertRadius)
    , title_(new TextLabel(look, Type::sectionTitle, Tone::textPrimary, card()))
    , text_(new TextLabel(look, Type::note, Tone::textSecondary, card()))
    , answer_(new Button(look, Button::Kind::standard, answer, card())) {
    setSpokenName(title);
    title_->setText(title);
    title_->setWraps(true);
    text_->setText(text);
    text_->setWraps(true);
    auto* const column = new QVBoxLayout(card()); // owned by Qt as a child
    column->setContentsMargins(padding, padding, padding, padding - Button::ringMargin);
    column->setSpacing(8);
    column->addWidget(title_);
    column->addWidget(text_);
    column->addSpacing(4);
    column->addWidget(answer_);
    connect(answer_, &Button::clicked, this, &Sheet::close);
}

void NoticeAlert::open() {
    Sheet::open(answer_);
}

QSize NoticeAlert::cardSize(const QSize&) const {
    const int wide = qRound(alertWidth * theme().textScale());
    return {wide, card()->layout()->heightForWidth(wide)};
}

} // namespace vantoro
