// One chart of the Timeline pane: title, plot, and the moment that is picked on it by pointer or keyboard.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Timeline/LinePlot.h"
#include "Views/Timeline/TimelineModel.h"

#include <QPixmap>

namespace vantoro {

/// What pointer or keyboard want of the moment that is picked on a chart.
struct ScrubWish {
    enum class Kind {
        hover,      ///< the pointer is over `time`
        leave,      ///< it has gone, or the keyboard has
        step,       ///< to the point so many later; beyond the ends means the end
        stride,     ///< the same by so many tenths of the points
        keep,       ///< `time` is to stay picked
        keepPicked, ///< what is picked is to stay so
        letGo,
    };

    Kind kind = Kind::leave;
    UnixSeconds time = 0;
    int count = 0;
};

/// What stays between two publishings is drawn once and kept as a picture; a moving scrub repaints only where it was
/// and where it is.
class TimelineChart : public PaintedWidget {
    Q_OBJECT
public:
    /// Room round the plot for the focus ring.
    static constexpr int sideInset = 6;
    static constexpr int belowPlot = 12;
    /// The least height of a plot that can still be read.
    static constexpr int leastPlotHeight = 48;

    explicit TimelineChart(Look& look, QWidget* parent = nullptr);

    static int titleHeight(const Theme& theme);
    /// From the plot's right edge to the end of its value labels.
    static int scaleWidth(const Theme& theme);

    void show(const ChartModel& model, const TimeSpan& span);
    using QWidget::show;
    void showReading(const ChartReading& reading, std::optional<UnixSeconds> scrub);
    /// The share of the plot, from its left, whose lines are shown.
    void setReveal(double share);

    Description describe() override;

signals:
    void asked(const ScrubWish& wish);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void themeChanged() override;

private:
    PlotFrame frame() const;
    QRectF titleLine() const;
    QRect valueRect() const;
    QRect ruleRect() const;
    double ruleX() const;
    void paintGround(QPainter& painter) const;
    void paintLines(QPainter& painter) const;
    void paintEmptyText(QPainter& painter, const PlotFrame& frame) const;
    void paintRamp(QPainter& painter, const PlotFrame& frame) const;
    void paintScrub(QPainter& painter) const;
    /// What is wanted of the moment under the pointer.
    void askAt(ScrubWish::Kind kind, const QPointF& point);
    const QPixmap& drawn();

    ChartModel model_;
    TimeSpan span_;
    ChartReading reading_;
    std::optional<UnixSeconds> scrub_;
    double reveal_ = 1;
    QPixmap drawn_;
};

} // namespace vantoro
