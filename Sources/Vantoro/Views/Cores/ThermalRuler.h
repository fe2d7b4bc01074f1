// The spread of many temperatures: four figures, and below them one tick per sensor over a ruler of the heat bands.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Cores/CoresModel.h"

namespace vantoro {

class ThermalRuler : public PaintedWidget {
public:
    explicit ThermalRuler(Look& look, QWidget* parent = nullptr);

    void show(const Spread& spread);
    using QWidget::show;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double figuresHeight() const;
    void paintFigures(QPainter& painter) const;
    void paintRuler(QPainter& painter) const;

    Spread spread_;
};

} // namespace vantoro
