#include "Views/Shared/NoticeAlert.h"

#include "Design/Controls/Button.h"
#include "Design/TextLabel.h"

#include <QVBoxLayout>

namespace vantoro {

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
