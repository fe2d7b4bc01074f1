#include "Views/Now/AdvicePanel.h"

#include <algorithm>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {
constexpr int sentenceGap = 10;
constexpr int buttonGap = 16;
constexpr int noteGap = 10;
constexpr int lowestGap = 16;
constexpr int sealSize = 32;
constexpr int noteHeight = 56;
constexpr int noteIcon = 16;
constexpr int noteInset = 14;
constexpr int footerIcon = 16;
constexpr int footerTextLeft = Space::panelPadding + footerIcon + 10;
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
    const int width = static_cast<int>(textWidth(Type::body.medium(), text_)) + footerTextLeft + 2 * chevronInset;
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
    drawIcon(painter, QRectF(Space::panelPadding, content.top(), footerIcon, content.height()), icon_, footerIcon,
             color(isEnabled() ? Tone::textSecondary : Tone::textTertiary));
    drawText(painter, content.adjusted(footerTextLeft, 0, -2 * chevronInset, 0), Type::body.medium(),
             color(isEnabled() ? Tone::textPrimary : Tone::textTertiary), text_);
    if (!isEnabled())
        return;
    drawIcon(painter, QRectF(width() - chevronInset - 10, content.top(), 20, content.height()), "chevron.right",
             chevronSize, color(Tone::textTertiary));
    drawFocusRing(painter, QRectF(rect()).adjusted(4, 4, -4, -4), Space::buttonRadius);
}

/// What became of a quitting.
class AdvicePanel::ResultNote : public PaintedWidget {
public:
    using PaintedWidget::PaintedWidget;

    void show(const QuitResultModel& model) {
        if (model == model_)
            return;
        model_ = model;
        update();
        announceChange(QAccessible::Alert);
    }
    using PaintedWidget::show;
    QSize sizeHint() const override { return {120, qRound(noteHeight * theme().textScale())}; }
    Description describe() override {
        const QString gap = model_.detail.isEmpty() ? QString() : QStringLiteral(", ");
        return {.role = QAccessible::Notification, .name = model_.text + gap + model_.detail};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(Tone::hover));
        painter.drawRoundedRect(QRectF(rect()), Space::buttonRadius, Space::buttonRadius);
        drawIcon(painter, QRectF(noteInset, 0, noteIcon, height()), model_.icon, noteIcon, color(Tone::textSecondary));
        const double left = noteInset + noteIcon + 10;
        const double wide = width() - left - noteInset;
        const double line = lineHeight(Type::body);
        const double detail = model_.detail.isEmpty() ? 0 : lineHeight(Type::caption);
        const double y = (height() - line - detail) / 2;
        drawText(painter, {left, y, wide, line}, Type::body.medium(), color(Tone::textPrimary), model_.text);
        drawText(painter, {left, y + line, wide, detail}, Type::caption, color(Tone::textTertiary), model_.detail);
    }

private:
    QuitResultModel model_;
};

AdvicePanel::AdvicePanel(Look& look, QWidget* parent)
    : Panel(look, parent)
    , note_(new ResultNote(look, this))
    , explain_(new FooterButton(look, "list.bullet.indent", this)) {
    note_->hide();
    connect(explain_, &FooterButton::clicked, this, &AdvicePanel::explainRequested);
}

AdvicePanel::Item AdvicePanel::newItem(std::size_t index) {
    const Item item{new TextLabel(look(), Type::advice, Tone::textPrimary, this),
                    new Button(look(), Button::Kind::bordered, {}, this)};
    item.text->setWraps(true);
    connect(item.quit, &Button::clicked, this, [this, index] {
        if (index < model_.items.size() && model_.items[index].quitPID)
            emit quitRequested(*model_.items[index].quitPID);
    });
    return item;
}

void AdvicePanel::show(const AdviceModel& model) {
    if (model == model_)
        return;
    const bool wasEmpty = isEmpty();
    model_ = model;
    setTitle(model.title);
    explain_->setText(model.explain);
    explain_->setEnabled(!model.isPending);
    for (std::size_t i = 0; i < std::max(items_.size(), model.items.size()); ++i) {
        if (i >= items_.size())
            items_.push_back(newItem(i));
        const Item& item = items_[i];
        const bool isUsed = i < model.items.size();
        const bool isQuit = isUsed && model.items[i].quitPID.has_value();
        item.quit->setVisible(isQuit);
        item.text->setVisible(isUsed && !(isQuit && model.items[i].note.isEmpty()));
        if (!isUsed)
            continue;
        const AdviceItemModel& shown = model.items[i];
        if (isQuit)
            item.quit->setText(shown.text);
        item.text->setStyle(isQuit ? Type::caption : Type::advice);
        item.text->setTone(isQuit ? Tone::textTertiary : Tone::textPrimary);
        item.text->setText(isQuit ? shown.note : shown.text);
    }
    stack(width(), true);
    if (model.result)
        note_->show(*model.result);
    note_->setVisible(model.result.has_value());
    if (wasEmpty || isEmpty())
        update();
    const int height = heightFor(width());
    if (height == askedHeight_)
        return;
    askedHeight_ = height;
    emit heightChanged();
}

int AdvicePanel::stack(int width, bool place) const {
    const int left = Space::panelPadding;
    const int wide = width - 2 * Space::panelPadding;
    int y = qRound(titleHeight * theme().textScale());
    for (std::size_t i = 0; i < model_.items.size(); ++i) {
        const Item& item = items_[i];
        const bool isQuit = model_.items[i].quitPID.has_value();
        if (i > 0)
            y += isQuit ? buttonGap : model_.items[i - 1].quitPID ? buttonGap : sentenceGap;
        if (isQuit) {
            constexpr int ring = Button::ringMargin;
            const int height = item.quit->sizeHint().height();
            if (place)
                item.quit->setGeometry(left - ring, y - ring, wide + 2 * ring, height);
            y += height - 2 * ring;
            if (model_.items[i].note.isEmpty())
                continue;
            y += noteGap;
        }
        const int height = item.text->heightForWidth(wide);
        if (place)
            item.text->setGeometry(left, y, wide, height);
        y += height;
    }
    if (model_.result) {
        const int height = note_->sizeHint().height();
        y += model_.items.empty() ? 0 : buttonGap;
        if (place)
            note_->setGeometry(left, y, wide, height);
        y += height;
    }
    return y;
}

int AdvicePanel::heightFor(int width) const {
    int body = stack(width, false);
    if (isEmpty())
        body += sealSize + 10 + static_cast<int>(lineHeight(Type::body));
    return body + lowestGap + explain_->sizeHint().height();
}

void AdvicePanel::resizeEvent(QResizeEvent* event) {
    Panel::resizeEvent(event);
    askedHeight_ = heightFor(width());
    const int footer = explain_->sizeHint().height();
    explain_->setGeometry(0, height() - footer, width(), footer);
    stack(width(), true);
}

void AdvicePanel::themeChanged() {
    Panel::themeChanged();
    stack(width(), true);
}

void AdvicePanel::paintEvent(QPaintEvent* event) {
    Panel::paintEvent(event);
    if (!isEmpty())
        return;
    constexpr int gap = 10;
    QPainter painter(this);
    const double top = titleHeight * theme().textScale();
    const double line = lineHeight(Type::body);
    const double y = top + (explain_->y() - top - sealSize - gap - line) / 2;
    if (model_.isPending) {
        constexpr int barHeight = 10;
        constexpr int pitch = 20;
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(Tone::cell));
        double bar = top + 4;
        for (const double share : {0.95, 0.66}) {
            const QRectF shape(Space::panelPadding, bar, share * (width() - 2 * Space::panelPadding), barHeight);
            painter.drawRoundedRect(mirrored(shape), barHeight / 2.0, barHeight / 2.0);
            bar += pitch;
        }
        return;
    }
    const QRectF inner = QRectF(rect()).adjusted(Space::panelPadding, 0, -Space::panelPadding, 0);
    drawIcon(painter, QRectF(inner.left(), y, inner.width(), sealSize), "checkmark.seal", sealSize,
             color(Tone::textTertiary));
    drawText(painter, QRectF(inner.left(), y + sealSize + gap, inner.width(), line), Type::body,
             color(Tone::textSecondary), model_.emptyText, Qt::AlignHCenter);
}

} // namespace vantoro
