// The control bar's word about updates: a mark, a text, and a button's word where there is something to do.
#pragma once

#include "Views/Updates/UpdateMark.h"

namespace vantoro {

/// Hidden while there is nothing to say. By pointer its word is pressed; by keyboard the chip is.
class UpdateChip : public PaintedWidget {
    Q_OBJECT
public:
    /// Room around what is drawn, for the focus ring.
    static constexpr int ringMargin = 4;

    UpdateChip(Look& look, QWidget* parent);

    void show(const UpdateLine& line);
    using PaintedWidget::show;

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
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    enum class Form { whole, markAndWord, mark };

    QString word() const { return line_.command ? updateWord(*line_.command) : QString(); }
    int wordWidth() const;
    /// What is drawn of it, before mirroring.
    QRect drawn() const { return rect().adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin); }
    /// Where the pointer presses; empty where there is nothing to press.
    QRect button() const;
    QRect textPlace() const;
    void setHovered(bool hovered);
    void explain();

    UpdateLine line_;
    UpdateMark* mark_; // owned by Qt as a child
    Form form_ = Form::whole;
    bool hovered_ = false;
    bool pressedDown_ = false;
    FocusTracker focus_;
};

} // namespace vantoro
