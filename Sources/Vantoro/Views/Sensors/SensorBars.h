// The bars of the Sensors pane: a fan's speed within its limits, and a whole and its parts.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Sensors/SensorsModel.h"

#include <array>

namespace vantoro {

/// The heat bands laid flat, where a fan's speed stands, where it is heading, and the limits. Left out of what is read:
/// the row that it stands in says it.
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

/// A whole and its parts as one bar, and below it what each part is, in two columns (one where type is too large).
class StackedBar : public PaintedWidget, private Animated {
public:
    explicit StackedBar(Look& look, QWidget* parent = nullptr);

    /// The parts head for their new lengths with this animation, none is at once.
    void show(const LegendModel& legend, const std::optional<Animation>& animation);
    using QWidget::show;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {240, 40}; }
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    static constexpr std::size_t mostParts = 4;

    bool advance(double now) override;
    bool isMoving(double now) const;
    double rowHeight() const;
    std::size_t columnCount(double width) const;
    QColor shade(std::size_t part) const;
    bool isRemainder(std::size_t part) const;
    void paintBar(QPainter& painter) const;
    void paintEntry(QPainter& painter, const QRectF& cell, const LegendEntry& entry, std::size_t part) const;

    LegendModel legend_;
    std::size_t parts_ = 0;
    std::array<AnimatedValue, mostParts> lengths_;
};

} // namespace vantoro
