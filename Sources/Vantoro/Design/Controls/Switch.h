// An on-off switch.
#pragma once

#include "Design/Glide.h"

namespace vantoro {

class Switch : public PaintedWidget {
    Q_OBJECT
public:
    /// Room around the switch for the focus ring.
    static constexpr int ringMargin = 4;

    explicit Switch(Look& look, QWidget* parent = nullptr);

    /// Without the signal: what the model says.
    void setOn(bool on);
    /// What a screen reader calls it: the text beside it.
    void setSpokenName(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

signals:
    /// The user turned it.
    void toggled(bool on);

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void toggle();

    bool on_ = false;
    bool pressed_ = false;
    /// 0 off, 1 on.
    Glide knob_;
    QString spoken_;
    FocusTracker focus_;
};

} // namespace vantoro
