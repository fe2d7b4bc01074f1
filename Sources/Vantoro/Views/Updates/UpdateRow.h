// The menu-bar panel's row about an update.
#pragma once

#include "Design/Controls/Button.h"
#include "Views/Updates/UpdateMark.h"

namespace vantoro {

class TextLabel;

/// Hidden while there is nothing to say. Draws itself this much smaller than it is at both sides, for the focus ring.
class UpdateRow : public PaintedWidget {
    Q_OBJECT
public:
    static constexpr int ringMargin = Button::ringMargin;

    UpdateRow(Look& look, QWidget* parent);

    void show(const UpdateLine& line);
    using PaintedWidget::show;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;

signals:
    void pressed(UpdateCommand command);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int textWidth(int width) const;
    void place();

    UpdateLine line_;
    UpdateMark* mark_; // these are owned by Qt as children
    TextLabel* text_;
    Button* button_;
};

} // namespace vantoro
