// The course of one figure as a small line with a dot at its end.
#pragma once

#include "Design/Gauges/GaugeFigures.h"
#include "Design/PaintedWidget.h"

namespace vantoro {

/// Drawn in ink on a panel. Points that are not above 0 are no readings and are left out; fewer than two draw nothing.
class Sparkline : public PaintedWidget {
    Q_OBJECT
public:
    explicit Sparkline(Look& look, QWidget* parent = nullptr);

    void show(const SparklineLine& line);
    using QWidget::show;
    /// Whether the ground under the line is tinted; it is unless told.
    void setAreaShown(bool shown);
    /// In points: 44 unless told.
    void setLineHeight(int points);

    QSize sizeHint() const override { return {128, height_}; }
    QSize minimumSizeHint() const override { return {40, height_}; }
    Description describe() override { return {.isDecoration = true}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double xOf(UnixSeconds time) const;

    SparklineLine line_;
    bool area_ = true;
    int height_ = 44;
};

} // namespace vantoro
