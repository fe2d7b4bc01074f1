// The row of dials at the right of the verdict.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Now/DialsModel.h"

namespace vantoro {

class FanRotor;
class ThermalDial;

class Dials : public PaintedWidget {
    Q_OBJECT
public:
    /// Room on every side of what is drawn, for the focus rings.
    static constexpr int ringMargin = 4;

    explicit Dials(Look& look, QWidget* parent = nullptr);

    void show(const DialsModel& model);
    /// In a narrow window one or two rotors are smaller.
    void setNarrow(bool narrow);
    /// Whether the wheels may turn.
    void setTurning(bool allowed);

    QSize sizeHint() const override { return sizeWhen(narrow_); }
    /// What it would ask for in a narrow window, or in a wide one.
    QSize sizeWhen(bool narrow) const;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    struct Grid {
        int columns = 1;
        int rows = 1;
    };
    int diameter(bool narrow) const;
    int gap(bool narrow) const;
    Grid grid(bool narrow) const;
    QSize rotorSize(bool narrow) const;
    void rebuild();
    void place();

    DialsModel model_;
    std::vector<FanRotor*> rotors_; // owned by Qt as children
    ThermalDial* dial_ = nullptr;   // owned by Qt as a child
    bool narrow_ = false;
    bool turning_ = true;
};

} // namespace vantoro
