#include "Views/Timeline/TimelineCharts.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

namespace {

constexpr TextStyle pillText = Type::caption.semibold();
constexpr double pillHeight = 22;
constexpr double pillPadding = 7;
constexpr double pillRadius = 6;
constexpr int pinIcon = 12;
constexpr double pinGap = 3;
constexpr double apart = 8; // labels closer than that would seem to touch

double lineCentre(const Theme& theme) {
    return pillHeight * theme.textScale() / 2 + 1;
}

bool touches(const QRectF& one, const QRectF& other) {
    return one.left() - apart < other.right() && other.left() - apart < one.right();
}

} // namespace

TimelineAxis::TimelineAxis(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    // The pointer belongs to the charts.
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

int TimelineAxis::riseAboveFooter(const Theme& theme) {
    constexpr double footerCentre = 6;
    return static_cast<int>(std::round(lineCentre(theme) - footerCentre * theme.textScale()));
}

double TimelineAxis::plotRight() const {
    return width() - TimelineChart::sideInset - TimelineChart::scaleWidth(theme());
}

double TimelineAxis::x(UnixSeconds time) const {
    const double left = TimelineChart::sideInset;
    return left + (time - span_.first) / span_.seconds() * (plotRight() - left);
}

QRectF TimelineAxis::labelRect(const TimeMark& mark) const {
    const double wide = textWidth(Type::caption, mark.text);
    const double height = lineHeight(Type::caption);
    const double left = std::clamp(x(mark.time) - wide / 2, double{TimelineChart::sideInset},
                                   std::max(double{TimelineChart::sideInset}, plotRight() - wide));
    return {left, lineCentre(theme()) - height / 2, wide + 1, height};
}

double TimelineAxis::pinWidth() const {
    return isPinned_ ? pinIcon + pinGap : 0;
}

QRectF TimelineAxis::pillRect() const {
    if (!scrub_)
        return {};
    const double wide = pinWidth() + textWidth(pillText, scrubText_) + 2 * pillPadding;
    const double height = pillHeight * theme().textScale();
    const double left = std::clamp(x(*scrub_) - wide / 2, double{TimelineChart::sideInset},
                                   std::max(double{TimelineChart::sideInset}, plotRight() - wide));
    return {left, lineCentre(theme()) - height / 2, wide, height};
}

void TimelineAxis::show(const std::vector<TimeMark>& times, const TimeSpan& span) {
    if (times == times_ && span == span_)
        return;
    times_ = times;
    span_ = span;
    update();
}

void TimelineAxis::showScrub(std::optional<UnixSeconds> scrub, const QString& text, bool isPinned) {
    if (scrub == scrub_ && text == scrubText_ && isPinned == isPinned_)
        return;
    const auto updateAround = [this] {
        if (!scrub_)
            return;
        // Labels come and go on both sides of it.
        double widest = 0;
        for (const TimeMark& mark : times_)
            widest = std::max(widest, labelRect(mark).width());
        const double side = widest + apart + 1;
        update(pillRect().adjusted(-side, 0, side, 1).toAlignedRect());
    };
    updateAround();
    scrub_ = scrub;
    scrubText_ = text;
    isPinned_ = isPinned;
    updateAround();
}

Description TimelineAxis::describe() {
    return {.isDecoration = true};
}

void TimelineAxis::paintEvent(QPaintEvent*) {
    if (times_.empty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF pill = pillRect();
    const QRectF last = labelRect(times_.back());
    std::optional<QRectF> before;
    for (const TimeMark& mark : times_) {
        const QRectF label = labelRect(mark);
        const bool isLast = &mark == &times_.back();
        if ((scrub_ && touches(label, pill)) || (!isLast && touches(label, last)) ||
            (before && touches(label, *before)))
            continue;
        drawText(painter, label, Type::caption, color(Tone::textTertiary), mark.text, Qt::AlignLeft, Qt::ElideNone);
        before = label;
    }
    if (!scrub_)
        return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(Tone::pill));
    painter.drawRoundedRect(pill, pillRadius, pillRadius);
    QRectF inside = pill.adjusted(pillPadding, 0, -pillPadding, 0);
    if (isPinned_)
        drawIcon(painter, QRectF(inside.left(), inside.top(), pinIcon, inside.height()), "pin", pinIcon,
                 color(Tone::onPill));
    inside.setLeft(inside.left() + pinWidth());
    drawText(painter, inside.adjusted(-1, 0, 1, 0), pillText, color(Tone::onPill), scrubText_, Qt::AlignHCenter,
             Qt::ElideNone);
}

namespace {

constexpr int aboveCharts = 6;
constexpr int leastFooter = 36;
constexpr int designHeight = 746;
constexpr int leastWidth = 360;
constexpr int noticeWidth = 360;
constexpr int noticeIcon = 28;
constexpr int noticeGap = 10;
// From the panel's edge to the charts, which keep room for their focus ring.
constexpr int chartInset = Space::panelPadding - TimelineChart::sideInset;
// What a chart's height in the design holds beside its plot.
constexpr int aroundPlot = 40 + TimelineChart::belowPlot;

} // namespace

TimelineCharts::TimelineCharts(Look& look, QWidget* parent)
    : Panel(look, parent)
    , notice_(new TextLabel(look, Type::report, Tone::textSecondary, this))
    , axis_(new TimelineAxis(look, this)) {
    notice_->setWraps(true);
    notice_->setAlignment(Qt::AlignHCenter);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void TimelineCharts::matchCharts(std::size_t count) {
    while (charts_.size() > count) {
        delete charts_.back(); // owned by Qt, but gone for good
        charts_.pop_back();
    }
    while (charts_.size() < count) {
        auto* const chart = new TimelineChart(look(), this); // owned by Qt as a child
        connect(chart, &TimelineChart::asked, this, &TimelineCharts::asked);
        chart->show();
        charts_.push_back(chart);
    }
}

void TimelineCharts::show(const TimelineModel& model) {
    const auto heights = [](const TimelineModel& of) {
        std::vector<int> each;
        for (const ChartModel& chart : of.charts)
            each.push_back(chart.height);
        return each;
    };
    const bool isPlacedAnew = heights(model) != heights(model_) || model.notice != model_.notice;
    model_ = model;
    matchCharts(model.charts.size());
    if (isPlacedAnew) {
        notice_->setText(model.notice);
        setTitle(model.noticeTitle);
        notice_->setVisible(!model.notice.isEmpty());
        axis_->setVisible(model.span.has_value());
        updateGeometry();
        place();
    }
    if (!model.span)
        return;
    for (std::size_t i = 0; i < charts_.size(); ++i)
        charts_[i]->show(model.charts[i], *model.span);
    axis_->show(model.times, *model.span);
}

void TimelineCharts::showReadings(const std::vector<ChartReading>& readings, const std::optional<Scrub>& scrub,
                                  const QString& scrubText) {
    std::optional<UnixSeconds> rule;
    if (scrub && model_.span && model_.span->holds(scrub->time))
        rule = scrub->time;
    for (std::size_t i = 0; i < std::min(charts_.size(), readings.size()); ++i)
        charts_[i]->showReading(readings[i], rule);
    axis_->showScrub(rule, scrubText, scrub && scrub->isPinned);
}

void TimelineCharts::setReveal(double share) {
    for (TimelineChart* const chart : charts_)
        chart->setReveal(share);
}

int TimelineCharts::footerHeight() const {
    int charts = 0;
    for (const ChartModel& chart : model_.charts)
        charts += chart.height;
    const int left = charts > 0 ? designHeight - aboveCharts - charts : leastFooter;
    return static_cast<int>(std::round(std::max(left, leastFooter) * theme().textScale()));
}

double TimelineCharts::heightAt(double plotScale) const {
    double height = aboveCharts + footerHeight();
    for (const ChartModel& chart : model_.charts)
        height += TimelineChart::titleHeight(theme()) + TimelineChart::belowPlot +
                  std::max<double>(TimelineChart::leastPlotHeight, (chart.height - aroundPlot) * plotScale);
    return height;
}

QSize TimelineCharts::sizeHint() const {
    return {leastWidth, minimumSizeHint().height()};
}

QSize TimelineCharts::minimumSizeHint() const {
    return {leastWidth, static_cast<int>(std::ceil(heightAt(0)))};
}

void TimelineCharts::place() {
    const int wide = std::min(noticeWidth, width() - 2 * Space::panelPadding);
    const int high = notice_->heightForWidth(wide);
    notice_->setGeometry((width() - wide) / 2, (height() - high + noticeIcon + noticeGap) / 2, wide, high);
    double plots = 0;
    for (const ChartModel& chart : model_.charts)
        plots += chart.height - aroundPlot;
    // What is left for the plots; a plot at its least takes from the higher ones.
    double scale = (height() - heightAt(1) + plots) / std::max(plots, 1.0);
    if (heightAt(scale) > height()) {
        const double least = heightAt(0);
        scale = std::max(0.0, scale * (height() - least) / std::max(1.0, heightAt(scale) - least));
    }
    double y = aboveCharts;
    for (std::size_t i = 0; i < charts_.size(); ++i) {
        const double plot =
            std::max<double>(TimelineChart::leastPlotHeight, (model_.charts[i].height - aroundPlot) * scale);
        const double bottom = y + TimelineChart::titleHeight(theme()) + plot + TimelineChart::belowPlot;
        charts_[i]->setGeometry(
            QRect(QPoint(chartInset, qRound(y)), QPoint(width() - chartInset - 1, qRound(bottom) - 1)));
        y = bottom;
    }
    const int rise = TimelineAxis::riseAboveFooter(theme());
    axis_->setGeometry(chartInset, qRound(y) - rise, width() - 2 * chartInset, footerHeight() + rise);
    axis_->raise();
}

void TimelineCharts::paintEvent(QPaintEvent* event) {
    Panel::paintEvent(event);
    if (model_.notice.isEmpty())
        return;
    QPainter painter(this);
    const QRectF above(0, notice_->y() - noticeGap - noticeIcon, width(), noticeIcon);
    drawIcon(painter, above, "clock.rewind", noticeIcon, color(Tone::textTertiary));
}

void TimelineCharts::resizeEvent(QResizeEvent* event) {
    Panel::resizeEvent(event);
    place();
}

void TimelineCharts::themeChanged() {
    Panel::themeChanged();
    place();
}

} // namespace vantoro
