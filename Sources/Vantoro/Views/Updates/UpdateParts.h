// What an update is seen by: the mark, the control bar's chip and the menu-bar panel's row.
#pragma once

#include "Design/Controls/Button.h"
#include "Design/Controls/Pressable.h"
#include "Design/PaintedWidget.h"
#include "Views/Updates/UpdatesModel.h"

namespace vantoro {

class TextLabel;

/// The icon or the ring of progress before a text about updates. Turns only while it is seen and an installation runs.
class UpdateMark : public PaintedWidget, public Animated {
    Q_OBJECT
public:
    /// Square, `size` wide.
    UpdateMark(Look& look, int size, Tone tone, QWidget* parent);

    void show(const UpdateMarkModel& mark);
    using PaintedWidget::show;

    QSize sizeHint() const override { return {size_, size_}; }
    Description describe() override;
    bool advance(double now) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void themeChanged() override;

private:
    void turnIfSeen();

    int size_;
    Tone tone_;
    UpdateMarkModel mark_;
};

/// The control bar's word: a mark, a text, and a button's word where there is something to do. Hidden while there is
/// nothing to say. By pointer its word is pressed; by keyboard the chip is.
class UpdateChip : public Pressable {
    Q_OBJECT
public:
    /// Room around what is drawn, for the focus ring.
    static constexpr int ringMargin = 4;

    UpdateChip(Look& look, QWidget* parent);

    void show(const UpdateLine& line);
    using QWidget::show;

    /// Settles on a form for this much room and says what size it takes: the text is cut where it does not fit, and
    /// left out where the bar is narrow or next to nothing of it would remain; then the word too where it does not fit.
    QSize fit(int room, bool barIsNarrow);

    QSize sizeHint() const override;
    Description describe() override;

signals:
    void pressed(UpdateCommand command);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void press() override { emit pressed(*line_.command); }
    bool isPressable() const override { return line_.command.has_value(); }
    QRect pressPlace() const override { return mirrored(button()); }

private:
    enum class Form { whole, markAndWord, mark };

    QString word() const { return line_.command ? updateWord(*line_.command) : QString(); }
    int wordWidth() const;
    /// What is drawn of it, before mirroring.
    QRect drawn() const { return rect().adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin); }
    /// Where the pointer presses; empty where there is nothing to press.
    QRect button() const;
    QRect textPlace() const;
    void explain();

    UpdateLine line_;
    UpdateMark* mark_; // owned by Qt as a child
    Form form_ = Form::whole;
};

/// The menu-bar panel's row. Hidden while there is nothing to say. Draws itself this much smaller than it is at both
/// sides, for the focus ring.
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
