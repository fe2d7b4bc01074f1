#include "Views/TimelineView.h"

#include "Views/Words.h"

#include <algorithm>
#include <cmath>
#include <QShowEvent>

namespace vantoro {

namespace {

constexpr double drawInSeconds = 0.6;
constexpr int narrowBelow = 940;
constexpr int rewindWidth = 312;
constexpr int narrowRewindWidth = 264;

double easedOut(double share) {
    const double left = 1 - std::clamp(share, 0.0, 1.0);
    return 1 - left * left * left;
}

} // namespace

TimelineView::TimelineView(ViewContext& context, QWidget* parent)
    : View(context, parent), charts_(new TimelineCharts(look())), rewind_(new RewindPanel(look())) {
    auto* const pane = new ScrollPane(look()); // owned by Qt as a child
    auto* const whole = new QVBoxLayout(this); // owned by Qt as a child
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(pane);
    auto* const row = new QHBoxLayout; // owned by Qt as a child
    row->setSpacing(Space::panelGap);
    row->addWidget(charts_, 1);
    row->addWidget(rewind_);
    pane->column()->addLayout(row, 1);
    connect(charts_, &TimelineCharts::scrubbed, this, [this](double time) { scrub(time); });
    connect(charts_, &TimelineCharts::scrubEnded, this, [this] { scrub(std::nullopt); });
    connect(charts_, &TimelineCharts::stepped, this, &TimelineView::step);
    shows({&SensorHub::snapshotChanged, &SensorHub::verdictChanged, &SensorHub::seriesChanged});
}

// The charts lose the pointer when they go, after this view has gone.
TimelineView::~TimelineView() {
    charts_->disconnect(this);
}

Description TimelineView::describe() {
    return {.role = QAccessible::Pane, .name = tr("Timeline")};
}

void TimelineView::refresh() {
    TimelineModel model = timelineModel(hub());
    if (model != model_) {
        model_ = std::move(model);
        charts_->setModel(model_);
    }
    // Time goes on under a moment that stays picked, until it leaves the charts.
    if (scrubDate_ && (!model_.span || !model_.span->holds(*scrubDate_)))
        scrubDate_.reset();
    showReadings();
}

void TimelineView::showReadings() {
    const Format& format = hub().format();
    const Snapshot* const nearest = snapshotNearest(hub().history(), scrubDate_);
    const Snapshot& shown = nearest != nullptr ? *nearest : hub().snapshot();
    const QString time = nearest != nullptr ? toQString(format.timeWithSeconds(nearest->timestamp)) : QString();
    charts_->setReadings(chartReadings(model_, shown, scrubDate_, format), scrubDate_, time);
    rewind_->setModel(rewindModel(nearest, format));
}

void TimelineView::scrub(std::optional<UnixSeconds> date) {
    if (date == scrubDate_)
        return;
    scrubDate_ = date;
    showReadings();
}

void TimelineView::step(int points) {
    if (const auto time = pointBeside(hub().series().cpu, scrubDate_, points))
        scrub(time);
}

void TimelineView::showEvent(QShowEvent* event) {
    View::showEvent(event);
    // A window that comes back from the dock shows what it showed before.
    if (event->spontaneous() || look().theme.reducesMotion() || look().clock.isPaused() || !look().motion.smooth())
        return;
    drawInBegan_ = look().clock.now();
    charts_->setReveal(0);
    look().clock.run(*this);
}

void TimelineView::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    charts_->setReveal(1);
    scrub(std::nullopt);
    View::hideEvent(event);
}

void TimelineView::resizeEvent(QResizeEvent* event) {
    rewind_->setFixedWidth(width() < narrowBelow ? narrowRewindWidth : rewindWidth);
    View::resizeEvent(event);
}

bool TimelineView::advance(double now) {
    const double share = (now - drawInBegan_) / drawInSeconds;
    charts_->setReveal(easedOut(share));
    return share < 1;
}

} // namespace vantoro
