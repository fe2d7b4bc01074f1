// One chart of the Timeline pane: title, plot, and the moment that is picked on it by pointer or keyboard.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Timeline/LinePlot.h"
#include "Views/Timeline/TimelineModel.h"

#include <QPixmap>

namespace vantoro {

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

    void setModel(const ChartModel& model, const TimeSpan& span);
    void setReading(const ChartReading& reading, std::optional<UnixSeconds> scrub);
    /// The share of the plot, from its left, whose lines are shown.
    void setReveal(double share);

    Description describe() override;

signals:
    /// The pointer is over this moment.
    void scrubbed(double time);
    void scrubEnded();
    /// The keyboard asks for the point this many points later; beyond the ends means the end.
    void stepped(int points);
    /// The same by so many tenths of the points.
    void strode(int tenths);
    /// The moment under the pointer is to stay, or the one that is picked.
    void keepAsked(double time);
    void keepPickedAsked();
    void letGoAsked();

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
    const QPixmap& drawn();

    ChartModel model_;
    TimeSpan span_;
    ChartReading reading_;
    std::optional<UnixSeconds> scrub_;
    double reveal_ = 1;
    QPixmap drawn_;
};

} // namespace vantoro
