// Says once that this desktop has no place for the menu-bar item, and what that means.
#pragma once

#include "Design/Controls/Sheet.h"

namespace vantoro {

class Button;
class TextLabel;

class NoticeAlert : public Sheet {
    Q_OBJECT
public:
    NoticeAlert(Look& look, QWidget& window, const QString& title, const QString& text, const QString& answer);

    /// As Sheet::open, with the keyboard on the answer.
    void open();

protected:
    QSize cardSize(const QSize& window) const override;
    void accept() override { close(); }

private:
    TextLabel* title_; // these three are owned by Qt as children
    TextLabel* text_;
    Button* answer_;
};

} // namespace vantoro
