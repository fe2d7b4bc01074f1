// The Timeline pane: the last 15 minutes as charts, and any moment of them reconstructed.
#pragma once

#include "Design/ScrollPane.h"
#include "Views/Shared/View.h"
#include "Views/Timeline/RewindPanel.h"
#include "Views/Timeline/TimelineCharts.h"

namespace vantoro {

class TimelineView : public View, private Animated {
    Q_OBJECT
public:
    explicit TimelineView(ViewContext& context, QWidget* parent = nullptr);
    ~TimelineView() override;

    void refresh() override;

    /// The moment under the pointer or picked by the keyboard.
    std::optional<UnixSeconds> scrubDate() const { return scrub_ ? std::optional(scrub_->time) : std::nullopt; }
    bool isPinned() const { return scrub_ && scrub_->isPinned; }
    TimelineCharts& charts() { return *charts_; }
    RewindPanel& rewind() { return *rewind_; }

    Description describe() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void grant(const ScrubWish& wish);
    void pick(const std::optional<Scrub>& scrub);
    /// What the pointer picks, or with none leaves: nothing while a moment is pinned.
    void hover(std::optional<UnixSeconds> date);
    void step(int points);
    /// Pins the record nearest to this moment.
    void pin(std::optional<UnixSeconds> date);
    void unpin();
    /// Whether the picked moment can still be shown.
    bool isStillThere() const;
    void showModel();
    void showReadings();
    bool advance(double now) override;

    TimelineModel model_;
    std::optional<Scrub> scrub_;
    double drawInBegan_ = 0;
    TimelineCharts* charts_; // owned by Qt as a child
    RewindPanel* rewind_;    // owned by Qt as a child
};

} // namespace vantoro
