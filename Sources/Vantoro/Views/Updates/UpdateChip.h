// The control bar's word about updates: a mark, a text, and a button's word where there is something to do.
#pragma once

#include "Design/Controls/Pressable.h"
#include "Views/Updates/UpdateMark.h"

namespace vantoro {

/// Hidden while there is nothing to say. By pointer its word is pressed; by keyboard the chip is.
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

} // namespace vantoro
