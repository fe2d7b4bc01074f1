// The course of one figure as a small line with a dot at its end.
#pragma once

#include "Design/PaintedWidget.h"
#include "Model/ChartSeries.h"

namespace vantoro {

/// Points outside `least` to `most` lie at the edge; `from` and `to` are the instants of the two ends (without them
/// those of the first and the last point). `ramp` is marked by a dashed line.
struct SparklineLine {
    std::vector<TimePoint> points;
    double least = 0;
    double most = 100;
    UnixSeconds from = 0;
    UnixSeconds to = 0;
    std::optional<UnixSeconds> ramp;

    bool operator==(const SparklineLine&) const = default;
};

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
