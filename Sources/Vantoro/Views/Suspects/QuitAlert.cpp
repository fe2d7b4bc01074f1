#include "Views/Suspects/QuitAlert.h"

#include <algorithm>
#include <QStyle>
#include <utility>

namespace vantoro {

namespace {
constexpr int cardRadius = 14;
constexpr int padding = 20;
constexpr int titleGap = 6;
constexpr int waitGap = 13;
constexpr int ringSize = 16;
constexpr int ringGap = 8;
constexpr int buttonsGap = 16;
constexpr int betweenButtons = 8;
constexpr TextStyle titleStyle{15, 20, QFont::DemiBold};
} // namespace

void QuitAlert::ask(ViewContext& context, QWidget& view, std::int32_t pid) {
    const std::optional<ProcessGroup> group = groupHolding(context.hub, pid);
    if (!group)
        return;
    // A screen reader reaches what lies below a question; it is not asked twice.
    for (const QuitAlert* const open : view.window()->findChildren<QuitAlert*>())
        if (open->isVisible())
            return;
    Quits& quits = context.actions.quits();
    QuitModel model;
    std::optional<QuitQuestion> question;
    if (const Quitting* const quitting = quits.find(group->key)) {
        model = quitModel(quits, *quitting);
    } else {
        question = quits.question(*group);
        if (!question && quits.canEnd())
            return; // which is told as the result
        model = quitModel(context.hub, *group, static_cast<int>(question ? question->processes.size() : 0));
    }
    // Deletes itself once it has closed.
    auto* const alert = new QuitAlert(context, *view.window(), group->key, model, std::move(question));
    alert->open(alert->cancel());
}

QuitAlert::QuitAlert(ViewContext& context, QWidget& window, std::string key, const QuitModel& model,
                     std::optional<QuitQuestion> question)
    : Sheet(context.look, window, cardRadius)
    , quits_(context.actions.quits())
    , key_(std::move(key))
    , question_(std::move(question))
    , title_(new TextLabel(context.look, titleStyle, Tone::textPrimary, card()))
    , text_(new TextLabel(context.look, Type::body, Tone::textSecondary, card()))
    , ring_(new UpdateMark(context.look, ringSize, Tone::textSecondary, card()))
    , wait_(new TextLabel(context.look, Type::small, Tone::textSecondary, card()))
    , confirm_(new Button(context.look, Button::Kind::bordered, model.confirm, card()))
    , cancel_(new Button(context.look, Button::Kind::standard, model.cancel, card())) {
    title_->setWraps(true, 3);
    title_->setHeading(true);
    text_->setWraps(true);
    connect(confirm_, &Button::clicked, this, &QuitAlert::confirmed);
    connect(cancel_, &Button::clicked, this, &QuitAlert::close);
    connect(&quits_, &Quits::changed, this, &QuitAlert::follow);
    connect(this, &Sheet::closed, this, [this] {
        if (std::exchange(isFollowing_, false))
            quits_.attend(key_, false);
    });
    show(model);
    if (!question_ && quits_.find(key_) != nullptr) {
        isFollowing_ = true;
        quits_.attend(key_, true);
    }
}

// A window that is closed takes its alert with it unanswered; what is under way goes on.
QuitAlert::~QuitAlert() {
    disconnect(&quits_, nullptr, this, nullptr);
    if (isFollowing_)
        quits_.attend(key_, false);
}

void QuitAlert::confirmed() {
    if (question_) {
        isFollowing_ = true;
        quits_.begin(*std::exchange(question_, std::nullopt));
    } else {
        quits_.force(key_);
    }
}

void QuitAlert::follow() {
    if (!isFollowing_)
        return;
    const Quitting* const quitting = quits_.find(key_);
    if (quitting == nullptr || quitting->stage() == Quitting::Stage::stuck) {
        close();
        return;
    }
    show(quitModel(quits_, *quitting));
}

void QuitAlert::show(const QuitModel& model) {
    if (model == model_)
        return;
    const bool isNewStage = model.title != model_.title;
    model_ = model;
    setSpokenName(model.title);
    title_->setText(model.title);
    text_->setText(model.text);
    wait_->setText(model.wait);
    ring_->show({.icon = {}, .ring = model.ring, .turns = false});
    ring_->setVisible(!model.wait.isEmpty());
    wait_->setVisible(!model.wait.isEmpty());
    confirm_->setText(model.confirm);
    cancel_->setText(model.cancel);
    if (isNewStage && isVisible())
        cancel_->setFocus(Qt::OtherFocusReason);
    confirm_->setEnabled(model.canConfirm);
    place();
    resizeEvent(nullptr);
    if (isNewStage)
        announceChange(QAccessible::NameChanged);
}

void QuitAlert::place() {
    constexpr int ring = Button::ringMargin;
    const int outer = cardSize({}).width();
    const int wide = outer - 2 * padding;
    int y = padding;
    title_->setGeometry(padding, y, wide, title_->heightForWidth(wide));
    y += title_->height() + titleGap;
    text_->setGeometry(padding, y, wide, text_->heightForWidth(wide));
    y += text_->height();
    if (!model_.wait.isEmpty()) {
        y += waitGap;
        const int line = wait_->sizeHint().height();
        const QRect mark(padding, y + (line - ringSize) / 2, ringSize, ringSize);
        const QRect words(padding + ringSize + ringGap, y, wide - ringSize - ringGap, line);
        ring_->setGeometry(QStyle::visualRect(layoutDirection(), {0, 0, outer, y}, mark));
        wait_->setGeometry(QStyle::visualRect(layoutDirection(), {0, 0, outer, y}, words));
        y += line;
    }
    const int button = (wide - betweenButtons) / 2 + 2 * ring;
    const int height = confirm_->sizeHint().height();
    // From one stage to the next it only grows: the buttons stay under the pointer's hand.
    cardHeight_ = std::max(cardHeight_, y + buttonsGap + height - 2 * ring + padding);
    y = cardHeight_ - padding - height + ring;
    const QRect first(padding - ring, y, button, height);
    const QRect second(outer - padding + ring - button, y, button, height);
    confirm_->setGeometry(isRightToLeft() ? second : first);
    cancel_->setGeometry(isRightToLeft() ? first : second);
}

QSize QuitAlert::cardSize(const QSize&) const {
    return {qRound(cardWidth * theme().textScale()), cardHeight_};
}

void QuitAlert::themeChanged() {
    cardHeight_ = 0;
    place();
}

} // namespace vantoro
