#include "Views/Timeline/TimelineAxis.h"

#include "Views/Timeline/TimelineChart.h"

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

void TimelineAxis::setTimes(const std::vector<TimeMark>& times, const TimeSpan& span) {
    if (times == times_ && span == span_)
        return;
    times_ = times;
    span_ = span;
    update();
}

void TimelineAxis::setScrub(std::optional<UnixSeconds> scrub, const QString& text, bool isPinned) {
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

} // namespace vantoro
