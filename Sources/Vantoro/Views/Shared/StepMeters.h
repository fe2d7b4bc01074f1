// Levels in steps: thermal pressure as four capsules, and the level of stress as five pips.
#pragma once

#include "Design/PaintedWidget.h"
#include "Model/Records/Telemetry.h"

namespace vantoro {

/// Left out of what is read where it has no spoken name, as beside a figure that says the same.
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

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {120, sizeHint().height()}; }
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Names names_;
    ThermalPressure pressure_ = ThermalPressure::nominal;
};

/// Stands beside a word that says the same, so it is hidden from screen readers.
class LevelPips : public PaintedWidget {
    Q_OBJECT
public:
    enum class Height : std::uint8_t { regular = 14, small = 12 };

    explicit LevelPips(Look& look, Height height = Height::regular, QWidget* parent = nullptr);

    /// The level by its raw value, 0 to 4; none, while a reading is awaited, leaves all five empty.
    void show(std::optional<int> level, int heatStop);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int height_;
    std::optional<int> level_;
    int heatStop_ = 0;
};

} // namespace vantoro
