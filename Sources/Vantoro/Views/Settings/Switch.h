// An on-off switch.
#pragma once

#include "Design/Controls/Pressable.h"
#include "Design/Glide.h"

namespace vantoro {

class Switch : public Pressable {
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

    void press() override;

private:
    bool on_ = false;
    /// 0 off, 1 on.
    Glide knob_;
    QString spoken_;
};

} // namespace vantoro
