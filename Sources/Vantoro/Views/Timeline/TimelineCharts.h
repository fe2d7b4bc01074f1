// The panel of stacked charts over one time axis.
#pragma once

#include "Design/Panel.h"
#include "Views/Timeline/TimelineAxis.h"
#include "Views/Timeline/TimelineChart.h"

namespace vantoro {

/// The charts share its height in the design's proportions; it asks for as much as they need to be read.
class TimelineCharts : public Panel {
    Q_OBJECT
public:
    explicit TimelineCharts(Look& look, QWidget* parent = nullptr);

    void setModel(const TimelineModel& model);
    /// One reading per chart, and the picked moment with its text. A moment that lies outside the axis has no rule.
    void setReadings(const std::vector<ChartReading>& readings, const std::optional<Scrub>& scrub,
                     const QString& scrubText);
    void setReveal(double share);

    /// Top to bottom.
    const std::vector<TimelineChart*>& charts() const { return charts_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void scrubbed(double time);
    void scrubEnded();
    void stepped(int points);
    void strode(int tenths);
    void keepAsked(double time);
    void keepPickedAsked();
    void letGoAsked();

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
