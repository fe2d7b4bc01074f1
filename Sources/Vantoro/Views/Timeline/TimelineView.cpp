#include "Views/Timeline/TimelineView.h"

#include "Views/Shared/Words.h"

#include <algorithm>
#include <QKeyEvent>
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
    connect(charts_, &TimelineCharts::asked, this, &TimelineView::grant);
    connect(rewind_, &RewindPanel::unpinAsked, this, &TimelineView::unpin);
    shows({&SensorHub::snapshotChanged, &SensorHub::verdictChanged, &SensorHub::seriesChanged});
}

// The charts lose the pointer when they go, after this view has gone.
TimelineView::~TimelineView() {
    charts_->disconnect(this);
}

Description TimelineView::describe() {
    return {.role = QAccessible::Pane, .name = vantoro::tr("Timeline")};
}

void TimelineView::grant(const ScrubWish& wish) {
    switch (wish.kind) {
    case ScrubWish::Kind::hover:
        hover(wish.time);
        break;
    case ScrubWish::Kind::leave:
        hover(std::nullopt);
        break;
    case ScrubWish::Kind::step:
        step(wish.count);
        break;
    case ScrubWish::Kind::stride:
        step(wish.count * tenthOf(hub().series().cpu));
        break;
    case ScrubWish::Kind::keep:
        pin(wish.time);
        break;
    case ScrubWish::Kind::keepPicked:
        pin(scrub_ ? scrubDate() : pointBeside(hub().series().cpu, std::nullopt, 0));
        break;
    case ScrubWish::Kind::letGo:
        pick(std::nullopt);
        break;
    }
}

void TimelineView::showModel() {
    TimelineModel model = timelineModel(hub(), isPinned());
    if (model == model_)
        return;
    model_ = std::move(model);
    charts_->show(model_);
}

bool TimelineView::isStillThere() const {
    if (!scrub_->isPinned)
        return model_.span && model_.span->holds(scrub_->time);
    const Snapshot* const nearest = snapshotNearest(hub().history(), scrub_->time);
    return nearest != nullptr && nearest->timestamp == scrub_->time;
}

void TimelineView::refresh() {
    showModel();
    // Time goes on under a moment that stays picked, until it leaves the charts, or pinned, the history.
    if (scrub_ && !isStillThere())
        pick(std::nullopt);
    else
        showReadings();
}

void TimelineView::showReadings() {
    const Format& format = hub().format();
    const Snapshot* const nearest = snapshotNearest(hub().history(), scrubDate());
    const Snapshot& shown = nearest != nullptr ? *nearest : hub().snapshot();
    const QString time = nearest != nullptr ? toQString(format.timeWithSeconds(nearest->timestamp)) : QString();
    charts_->showReadings(chartReadings(model_, shown, scrub_, format), scrub_, time);
    rewind_->show(rewindModel(nearest, isPinned(), format));
}

void TimelineView::pick(const std::optional<Scrub>& scrub) {
    if (scrub == scrub_)
        return;
    scrub_ = scrub;
    showModel();
    showReadings();
}

void TimelineView::hover(std::optional<UnixSeconds> date) {
    if (isPinned())
        return;
    pick(date ? std::optional(Scrub{.time = *date}) : std::nullopt);
}

void TimelineView::step(int points) {
    if (const auto time = pointBeside(hub().series().cpu, scrubDate(), points))
        pick(Scrub{.time = *time, .isPinned = isPinned()});
}

void TimelineView::pin(std::optional<UnixSeconds> date) {
    if (const Snapshot* const nearest = snapshotNearest(hub().history(), date))
        pick(Scrub{.time = nearest->timestamp, .isPinned = true});
}

void TimelineView::unpin() {
    // The button goes, and the keyboard stays with what it spoke of.
    if (rewind_->unpin().hasFocus() && !charts_->charts().empty())
        charts_->charts().front()->setFocus(Qt::OtherFocusReason);
    pick(std::nullopt);
}

void TimelineView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && scrub_)
        unpin();
    else
        View::keyPressEvent(event);
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
    hover(std::nullopt);
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
