// Thermal pressure as four capsules, filled up to the present case.
#pragma once

#include "Design/PaintedWidget.h"
#include "Model/Records/Telemetry.h"

namespace vantoro {

class FourStepMeter : public PaintedWidget {
    Q_OBJECT
public:
    enum class Names {
        ends, ///< under the first and the last capsule
        all,  ///< under each, the present one bold
    };

    FourStepMeter(Look& look, Names names, QWidget* parent = nullptr);

    void show(ThermalPressure pressure);
    using QWidget::show;
    /// What it measures; without it the meter is left out of what is read, as beside a figure that says the same.
    void setSpokenName(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {120, sizeHint().height()}; }
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Names names_;
    ThermalPressure pressure_ = ThermalPressure::nominal;
    QString spoken_;
};

} // namespace vantoro
