// The times under the last chart, and the picked moment's as a pill among them.
#pragma once

#include "Design/PaintedWidget.h"
#include "Views/Timeline/TimelineModel.h"

namespace vantoro {

/// As wide as the charts, so that its times stand under theirs.
class TimelineAxis : public PaintedWidget {
    Q_OBJECT
public:
    explicit TimelineAxis(Look& look, QWidget* parent = nullptr);

    /// How far it reaches into the room below the last plot: the pill is higher than a line of times.
    static int riseAboveFooter(const Theme& theme);

    void setTimes(const std::vector<TimeMark>& times, const TimeSpan& span);
    /// The moment under the rule and its text; none hides the pill. Pinned, the pill shows so.
    void setScrub(std::optional<UnixSeconds> scrub, const QString& text, bool isPinned);

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

} // namespace vantoro
