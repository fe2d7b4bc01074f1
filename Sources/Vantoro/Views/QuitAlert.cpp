#include "Views/QuitAlert.h"

namespace vantoro {

namespace {
constexpr int cardRadius = 14;
constexpr int padding = 20;
constexpr int titleGap = 6;
constexpr int buttonsGap = 16;
constexpr int betweenButtons = 8;
constexpr TextStyle titleStyle{15, 20, QFont::DemiBold};
} // namespace

void QuitAlert::ask(ViewContext& context, QWidget& view, std::int32_t pid) {
    const std::optional<QuitModel> model = quitModel(context.hub, pid);
    if (!model)
        return;
    // A screen reader reaches what lies below a question; it is not asked twice.
    for (const QuitAlert* const open : view.window()->findChildren<QuitAlert*>())
        if (open->isVisible())
            return;
    auto* const alert = new QuitAlert(context, *view.window(), *model); // deletes itself once it has closed
    alert->open(alert->cancel());
}

QuitAlert::QuitAlert(ViewContext& context, QWidget& window, const QuitModel& model)
    : Sheet(context.look, window, cardRadius)
    , hub_(context.hub)
    , model_(model)
    , title_(new TextLabel(context.look, titleStyle, Tone::textPrimary, card()))
    , text_(new TextLabel(context.look, Type::body, Tone::textSecondary, card()))
    , confirm_(new Button(context.look, Button::Kind::bordered, model.confirm, card()))
    , cancel_(new Button(context.look, Button::Kind::standard, model.cancel, card())) {
    setSpokenName(model.title);
    title_->setWraps(true, 3);
    title_->setHeading(true);
    title_->setText(model.title);
    text_->setWraps(true);
    text_->setText(model.text);
    confirm_->setEnabled(model.canQuit);
    connect(confirm_, &Button::clicked, this, [this] {
        confirmQuit(hub_, model_);
        close();
    });
    connect(cancel_, &Button::clicked, this, &QuitAlert::close);
    place();
}

void QuitAlert::place() {
    constexpr int ring = Button::ringMargin;
    const int outer = cardSize({}).width();
    const int wide = outer - 2 * padding;
    int y = padding;
    title_->setGeometry(padding, y, wide, title_->heightForWidth(wide));
    y += title_->height() + titleGap;
    text_->setGeometry(padding, y, wide, text_->heightForWidth(wide));
    y += text_->height() + buttonsGap;
    const int button = (wide - betweenButtons) / 2 + 2 * ring;
    const int height = confirm_->sizeHint().height();
    const QRect first(padding - ring, y - ring, button, height);
    const QRect second(outer - padding + ring - button, y - ring, button, height);
    confirm_->setGeometry(isRightToLeft() ? second : first);
    cancel_->setGeometry(isRightToLeft() ? first : second);
    cardHeight_ = y + height - 2 * ring + padding;
}

QSize QuitAlert::cardSize(const QSize&) const {
    return {qRound(cardWidth * theme().textScale()), cardHeight_};
}

void QuitAlert::themeChanged() {
    place();
}

} // namespace vantoro
