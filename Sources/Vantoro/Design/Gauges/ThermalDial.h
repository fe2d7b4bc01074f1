// How hard a machine works of whose fans nothing is told: the gauge with the chip's temperature, or the busy share,
// within.
#pragma once

#include "Design/Gauges/Gauge.h"
#include "Design/Gauges/GaugeFigures.h"
#include "Design/PaintedWidget.h"

namespace vantoro {

/// One stop of the keyboard at its full size; below 100 the figure stands alone in it.
class ThermalDial : public PaintedWidget, public Animated {
    Q_OBJECT
public:
    /// Room on every side of what is drawn, for the focus ring and the cursor of small gauges.
    static constexpr int ringMargin = 4;

    /// `size` across: 196 or 68; `background` is what it stands on.
    ThermalDial(Look& look, int size, Tone background = Tone::window, QWidget* parent = nullptr);

    void show(const ThermalDialFigures& figures);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;
    bool advance(double now) override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isSmall() const { return size_ < 100; }
    QPointF centre() const;
    void paintFigure(QPainter& painter) const;
    void paintGap(QPainter& painter) const;

    int size_;
    Tone background_;
    ThermalDialFigures figures_;
    AnimatedValue position_;
    /// Where it was painted last.
    double painted_ = 0;
};

} // namespace vantoro
