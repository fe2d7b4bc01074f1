#include "Views/Updates/UpdateRow.h"

#include "Design/TextLabel.h"
#include "Views/Updates/UpdateChip.h"

#include <algorithm>

namespace vantoro {

namespace {
constexpr int rowHeight = 44;
constexpr int buttonHeight = 24;
constexpr int iconSize = 16;
constexpr int iconGap = 10;
constexpr int buttonGap = 12;
/// Above and below a text of two lines.
constexpr int padding = 8;
} // namespace

UpdateRow::UpdateRow(Look& look, QWidget* parent)
    : PaintedWidget(look, parent)
    , mark_(new UpdateMark(look, iconSize, Tone::textSecondary, this))
    , text_(new TextLabel(look, Type::body, Tone::textPrimary, this))
    , button_(new Button(look, Button::Kind::bordered, QString(), this)) {
    text_->setWraps(true, 2);
    button_->setDrawnHeight(buttonHeight);
    connect(button_, &Button::clicked, this, [this] {
        if (line_.command)
            emit pressed(*line_.command);
    });
    hide();
}

void UpdateRow::show(const UpdateLine& line) {
    if (line == line_)
        return;
    const int before = heightForWidth(width());
    line_ = line;
    mark_->show(line.mark);
    text_->setText(line.text);
    setToolTip(line.more);
    button_->setVisible(line.command.has_value());
    if (line.command)
        button_->setText(updateWord(*line.command));
    place();
    setVisible(!line.text.isEmpty());
    if (heightForWidth(width()) != before)
        updateGeometry();
}

int UpdateRow::textWidth(int width) const {
    const int button = line_.command ? button_->sizeHint().width() - 2 * ringMargin + buttonGap : 0;
    return std::max(width - 2 * ringMargin - iconSize - iconGap - button, 1);
}

int UpdateRow::heightForWidth(int width) const {
    return std::max(qRound(rowHeight * theme().textScale()), text_->heightForWidth(textWidth(width)) + 2 * padding);
}

QSize UpdateRow::sizeHint() const {
    return {width(), heightForWidth(width())};
}

void UpdateRow::place() {
    const auto centred = [this](int left, const QSize& size) {
        return mirrored(QRect(QPoint(left, (height() - size.height()) / 2), size));
    };
    mark_->setGeometry(centred(ringMargin, {iconSize, iconSize}));
    const int textSpace = textWidth(width());
    text_->setGeometry(centred(ringMargin + iconSize + iconGap, {textSpace, text_->heightForWidth(textSpace)}));
    const QSize button = button_->sizeHint();
    button_->setGeometry(centred(width() - button.width(), button));
}

void UpdateRow::resizeEvent(QResizeEvent* event) {
    place();
    PaintedWidget::resizeEvent(event);
}

} // namespace vantoro
