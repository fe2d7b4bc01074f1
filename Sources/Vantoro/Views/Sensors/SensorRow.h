// One measured figure: what it is, its course, what it reads; some unfold into their single sensors.
#pragma once

#include "Design/Controls/Pressable.h"
#include "Views/Sensors/SensorsModel.h"

namespace vantoro {

class Sparkline;

class SensorRow : public Pressable {
    Q_OBJECT
public:
    /// Room at both sides for the focus ring.
    static constexpr int sideMargin = 8;

    /// The row is this high, or as high as its texts need; all but the first have a line above.
    SensorRow(Look& look, int leastHeight, bool isFirst, QWidget* parent = nullptr);

    void show(const SensorRowModel& model);
    /// Another row is the panel's first: what is above this one has changed.
    void setFirst(bool isFirst);
    using QWidget::show;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    Description describe() override;

signals:
    /// The user wants to see its single sensors, or to put them away.
    void unfoldAsked(bool unfolded);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;
    void press() override { emit unfoldAsked(!model_.isExpanded); }
    bool isPressable() const override { return model_.isExpandable; }

private:
    struct SensorGrid {
        double cellWidth = 1;
        int columns = 1;
        int rows = 0;
    };

    double nameWidth(double width) const;
    int lineWidthNow() const;
    int valueWidthNow() const;
    bool rangeFitsBesideName(double width) const;
    QStringList captionLines(double width) const;
    double headHeight(double width) const;
    SensorGrid grid(double width) const;
    void placeLine();
    void paintNames(QPainter& painter, const QRectF& head) const;
    void paintSensors(QPainter& painter, double top) const;

    int leastHeight_;
    bool isFirst_;
    SensorRowModel model_;
    Sparkline* line_; // owned by Qt as a child
};

} // namespace vantoro
