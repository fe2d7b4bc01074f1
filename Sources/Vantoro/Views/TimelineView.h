// The Timeline pane: the last 15 minutes as charts, and any moment of them reconstructed.
#pragma once

#include "Design/ScrollPane.h"
#include "Views/RewindPanel.h"
#include "Views/TimelineCharts.h"
#include "Views/View.h"

namespace vantoro {

class TimelineView : public View, private Animated {
    Q_OBJECT
public:
    explicit TimelineView(ViewContext& context, QWidget* parent = nullptr);
    ~TimelineView() override;

    void refresh() override;

    /// The moment under the pointer or picked by the keyboard.
    std::optional<UnixSeconds> scrubDate() const { return scrubDate_; }
    TimelineCharts& charts() { return *charts_; }
    RewindPanel& rewind() { return *rewind_; }

    Description describe() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void scrub(std::optional<UnixSeconds> date);
    void step(int points);
    void showReadings();
    bool advance(double now) override;

    TimelineModel model_;
    std::optional<UnixSeconds> scrubDate_;
    double drawInBegan_ = 0;
    TimelineCharts* charts_; // owned by Qt as a child
    RewindPanel* rewind_;    // owned by Qt as a child
};

} // namespace vantoro
