// How warm the chip of a machine without fans is: the gauge with the temperature within.
#pragma once

#include "Design/Gauges/Gauge.h"
#include "Design/Gauges/GaugeFigures.h"

namespace vantoro {

/// One stop of the keyboard at its full size; below 100 the temperature stands alone in it.
class ThermalDial : public Dial<ThermalDialFigures> {
    Q_OBJECT
public:
    /// `size` across: 196 or 68; `background` is what it stands on.
    ThermalDial(Look& look, int size, Tone background = Tone::window, QWidget* parent = nullptr);

    void show(const ThermalDialFigures& figures);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    bool advance(double now) override;

    using Dial::show;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    static constexpr int smallBelow = 100;
    bool isSmall() const { return size_ < smallBelow; }
    void paintFigure(QPainter& painter) const;
    void paintGap(QPainter& painter) const;
};

} // namespace vantoro
