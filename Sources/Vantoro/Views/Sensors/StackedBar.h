// A whole and its parts as one bar, and below it what each part is, in two columns (one where type is too large).
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Sensors/SensorsModel.h"

#include <array>

namespace vantoro {

class StackedBar : public PaintedWidget, private Animated {
public:
    explicit StackedBar(Look& look, QWidget* parent = nullptr);

    void setSpokenName(const QString& name) { spoken_ = name; }
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

    QString spoken_;
    LegendModel legend_;
    std::size_t parts_ = 0;
    std::array<AnimatedValue, mostParts> lengths_;
};

} // namespace vantoro
