// The line over a headline: triangle, pips, level and duration.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/EyebrowModel.h"

namespace vantoro {

class LevelPips;

class Eyebrow : public PaintedWidget {
    Q_OBJECT
public:
    explicit Eyebrow(Look& look, QWidget* parent = nullptr);

    void show(const EyebrowModel& model);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    void placePips();
    double textLeft() const;

    EyebrowModel model_;
    LevelPips* pips_; // owned by Qt as a child
};

} // namespace vantoro
