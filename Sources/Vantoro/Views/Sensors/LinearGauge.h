// A fan's speed within its limits: the heat bands laid flat, where it stands, where it is heading, and the limits.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Sensors/SensorsModel.h"

namespace vantoro {

/// Left out of what is read: the row that it stands in says it.
class LinearGauge : public PaintedWidget, private Animated {
public:
    explicit LinearGauge(Look& look, QWidget* parent = nullptr);

    /// The fill heads for the new value with this animation, none is at once.
    void show(const FanRowModel& fan, const std::optional<Animation>& animation);
    using QWidget::show;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {200, sizeHint().height()}; }
    Description describe() override { return {.isDecoration = true}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool advance(double now) override;
    void paintBands(QPainter& painter, double position) const;
    void paintCaptions(QPainter& painter, double target) const;

    FanRowModel fan_;
    AnimatedValue position_;
    AnimatedValue target_;
};

} // namespace vantoro
