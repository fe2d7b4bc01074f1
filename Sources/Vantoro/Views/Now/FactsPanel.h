// The verdict's figures side by side, each with its course below.
#pragma once

#include "Design/Gauges/SmallGauges.h"
#include "Design/Panel.h"
#include "Views/Now/NowModel.h"
#include "Views/Shared/StepMeters.h"

namespace vantoro {

/// One figure: what it is, how much, what that means, and its course or the thermal pressure.
class FactCell : public PaintedWidget {
    Q_OBJECT
public:
    explicit FactCell(Look& look, QWidget* parent = nullptr);

    void show(const FactModel& model);
    using QWidget::show;
    static int cellHeight(const Theme& theme);
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    void place();
    QRect valueRect() const;

    FactModel model_;
    Sparkline* line_;      // owned by Qt as children
    FourStepMeter* meter_; // made when first needed
};

/// One stop of the keyboard.
class FactsPanel : public Panel {
    Q_OBJECT
public:
    explicit FactsPanel(Look& look, QWidget* parent = nullptr);

    void show(const FactsModel& model);
    using QWidget::show;
    /// Three to a row; so it is also with large text.
    void setNarrow(bool narrow);
    int heightFor(int width) const;

signals:
    /// The height it asks for has changed.
    void heightChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void themeChanged() override;

private:
    int columns() const;
    int rows() const;
    int cellsTop() const;
    double cellWidth() const;
    void place();

    FactsModel model_;
    std::vector<FactCell*> cells_; // owned by Qt as children
    bool isNarrow_ = false;
};

} // namespace vantoro
