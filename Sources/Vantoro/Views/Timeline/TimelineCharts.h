// The panel of stacked charts over one time axis.
#pragma once

#include "Design/PaintedWidget.h"
#include "Design/Panel.h"
#include "Views/Timeline/TimelineChart.h"
#include "Views/Timeline/TimelineModel.h"

namespace vantoro {

/// The times under the last chart, and the picked moment's as a pill among them. As wide as the charts, so that its
/// times stand under theirs.
class TimelineAxis : public PaintedWidget {
    Q_OBJECT
public:
    explicit TimelineAxis(Look& look, QWidget* parent = nullptr);

    /// How far it reaches into the room below the last plot: the pill is higher than a line of times.
    static int riseAboveFooter(const Theme& theme);

    void show(const std::vector<TimeMark>& times, const TimeSpan& span);
    using QWidget::show;
    /// The moment under the rule and its text; none hides the pill. Pinned, the pill shows so.
    void showScrub(std::optional<UnixSeconds> scrub, const QString& text, bool isPinned);

    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double plotRight() const;
    double x(UnixSeconds time) const;
    /// A label as wide as its text, its middle at the time, held within the plot.
    QRectF labelRect(const TimeMark& mark) const;
    QRectF pillRect() const;
    double pinWidth() const;

    std::vector<TimeMark> times_;
    TimeSpan span_;
    std::optional<UnixSeconds> scrub_;
    QString scrubText_;
    bool isPinned_ = false;
};

/// The charts share its height in the design's proportions; it asks for as much as they need to be read.
class TimelineCharts : public Panel {
    Q_OBJECT
public:
    explicit TimelineCharts(Look& look, QWidget* parent = nullptr);

    void show(const TimelineModel& model);
    using QWidget::show;
    /// One reading per chart, and the picked moment with its text. A moment that lies outside the axis has no rule.
    void showReadings(const std::vector<ChartReading>& readings, const std::optional<Scrub>& scrub,
                      const QString& scrubText);
    void setReveal(double share);

    /// Top to bottom.
    const std::vector<TimelineChart*>& charts() const { return charts_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// Of any of the charts.
    void asked(const ScrubWish& wish);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    void matchCharts(std::size_t count);
    void place();
    int footerHeight() const;
    /// The height with plots that are as high as the design's, times this.
    double heightAt(double plotScale) const;

    TimelineModel model_;
    TextLabel* notice_;                  // owned by Qt as a child
    TimelineAxis* axis_;                 // owned by Qt as a child
    std::vector<TimelineChart*> charts_; // owned by Qt as children
};

} // namespace vantoro
