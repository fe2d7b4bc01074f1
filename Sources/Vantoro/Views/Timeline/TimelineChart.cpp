#include "Views/Timeline/TimelineChart.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace vantoro {

namespace {

constexpr double titleCentre = 17.5; // from the top
constexpr int aboveRule = 4;         // the rule and the ramp mark begin above the plot
constexpr double ringRadius = 4;
constexpr int ringReach = 6; // with its stroke
constexpr double captionGap = 8;
constexpr double valueRoom = 112; // kept free of the caption
constexpr TextStyle valueStyle = Type::sectionTitle;

using Wish = ScrubWish::Kind;

int scaled(double points, const Theme& theme) {
    return static_cast<int>(std::round(points * theme.textScale()));
}

} // namespace

TimelineChart::TimelineChart(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

int TimelineChart::titleHeight(const Theme& theme) {
    return scaled(40, theme);
}

int TimelineChart::scaleWidth(const Theme& theme) {
    return scaled(44, theme);
}

PlotFrame TimelineChart::frame() const {
    const int top = titleHeight(theme());
    const int right = width() - sideInset - scaleWidth(theme());
    return {.area = QRectF(QPointF(sideInset, top), QPointF(right, std::max(top + 1, height() - belowPlot))),
            .first = span_.first,
            .last = span_.last,
            .least = model_.least,
            .most = model_.most};
}

QRectF TimelineChart::titleLine() const {
    const QRectF area = frame().area;
    return {area.left(), 0, area.width(), 2 * titleCentre * theme().textScale()};
}

QRect TimelineChart::valueRect() const {
    QRectF line = titleLine();
    line.setLeft(line.right() - textWidth(valueStyle, reading_.value) - 1);
    return line.toAlignedRect();
}

double TimelineChart::ruleX() const {
    const QRectF area = frame().area;
    return std::clamp(std::floor(frame().x(*scrub_)), area.left(), area.right() - 1);
}

QRect TimelineChart::ruleRect() const {
    if (!scrub_)
        return {};
    const QRectF area = frame().area;
    return QRectF(ruleX() - ringReach, area.top() - ringReach, 2 * ringReach + 1, area.height() + 2 * ringReach)
        .toAlignedRect();
}

void TimelineChart::show(const ChartModel& model, const TimeSpan& span) {
    if (model == model_ && span == span_)
        return;
    model_ = model;
    span_ = span;
    drawn_ = {};
    update();
}

void TimelineChart::showReading(const ChartReading& reading, std::optional<UnixSeconds> scrub) {
    if (reading == reading_ && scrub == scrub_)
        return;
    const QRect valueBefore = valueRect();
    const QRect ruleBefore = ruleRect();
    const bool isNewValue = reading.value != reading_.value;
    const bool isNewlySpoken = reading.spokenValue != reading_.spokenValue;
    reading_ = reading;
    scrub_ = scrub;
    if (isNewValue)
        update(valueBefore.united(valueRect()));
    update(ruleBefore);
    update(ruleRect());
    if ((isNewValue || (isNewlySpoken && scrub)) && hasFocus())
        announceChange();
}

void TimelineChart::setReveal(double share) {
    const QRectF area = frame().area;
    const double from = area.left() + std::min(share, reveal_) * area.width();
    const double to = area.left() + std::max(share, reveal_) * area.width();
    reveal_ = share;
    update(QRectF(from - 1, area.top() - aboveRule, to - from + 2, area.height() + aboveRule + 2).toAlignedRect());
}

Description TimelineChart::describe() {
    return {.role = QAccessible::Chart,
            .name = model_.spokenName,
            .value = reading_.spokenValue,
            .actions = {{"Earlier", [this] { emit asked({.kind = Wish::step, .count = -1}); }},
                        {"Later", [this] { emit asked({.kind = Wish::step, .count = 1}); }},
                        reading_.isPinned
                            ? Description::Action{"Unpin", [this] { emit asked({.kind = Wish::letGo}); }}
                            : Description::Action{"Pin", [this] { emit asked({.kind = Wish::keepPicked}); }}}};
}

void TimelineChart::paintGround(QPainter& painter) const {
    painter.fillRect(rect(), color(Tone::panel));
    QRectF title = titleLine();
    drawText(painter, title, Type::sectionTitle, color(Tone::textPrimary), model_.title);
    title.setLeft(title.left() + textWidth(Type::sectionTitle, model_.title) + captionGap);
    title.setRight(title.right() - valueRoom * theme().textScale());
    if (title.width() > 0)
        drawText(painter, title, Type::caption, color(Tone::textTertiary), model_.caption);
    const PlotFrame plot = frame();
    const double labelHeight = lineHeight(Type::caption);
    double labelledAbove = 0;
    for (const ScaleMark& mark : model_.scale) {
        const double y = plot.y(mark.value);
        painter.fillRect(QRectF(plot.area.left(), y - 0.5, plot.area.width(), 1), color(Tone::line));
        const bool isEnd = &mark == &model_.scale.front() || &mark == &model_.scale.back();
        if (!isEnd && (y - labelledAbove < labelHeight || plot.area.bottom() - y < labelHeight))
            continue;
        labelledAbove = y;
        drawText(painter, QRectF(plot.area.right() + 8, y - labelHeight / 2, scaleWidth(theme()) - 8, labelHeight),
                 Type::caption, color(Tone::textTertiary), mark.text, Qt::AlignLeft, Qt::ElideNone);
    }
}

void TimelineChart::paintLines(QPainter& painter) const {
    const PlotFrame plot = frame();
    for (const ChartLine& line : model_.lines)
        if (line.fillsArea)
            fillPlotArea(painter, plot, line.points, theme());
    paintRamp(painter, plot);
    painter.setClipRect(plot.area.adjusted(0, -aboveRule, 0, aboveRule));
    for (const ChartLine& line : model_.lines)
        drawPlotLine(painter, plot, {line.points, line.bands, line.stroke == ChartLine::Stroke::dashed}, theme());
    painter.setClipping(false);
    paintEmptyText(painter, plot);
}

void TimelineChart::paintEmptyText(QPainter& painter, const PlotFrame& plot) const {
    if (model_.emptyText.isEmpty())
        return;
    // Between two lines of the scale, which would strike it through.
    const double high = lineHeight(Type::small);
    drawText(
        painter,
        QRectF(plot.area.left(), plot.area.center().y() + plot.area.height() / 4 - high / 2, plot.area.width(), high),
        Type::small, color(Tone::textTertiary), model_.emptyText, Qt::AlignHCenter);
}

void TimelineChart::paintRamp(QPainter& painter, const PlotFrame& plot) const {
    if (!model_.ramp)
        return;
    const double x = plot.x(*model_.ramp);
    drawRampMark(painter, x, plot.area.top() - aboveRule, plot.area.bottom(), theme());
    if (model_.rampText.isEmpty())
        return;
    constexpr double gap = 6;
    const double wide = textWidth(Type::caption, model_.rampText);
    // Where it began near the left edge, what it says stands to its right.
    const double roomLeft = x - gap - plot.area.left();
    const double roomRight = plot.area.right() - x - gap;
    const bool isLeft = roomLeft >= std::min(wide, roomRight);
    const double shown = std::min(wide + 1, isLeft ? roomLeft : roomRight);
    drawText(painter, QRectF(isLeft ? x - gap - shown : x + gap, plot.area.top() - 2, shown, lineHeight(Type::caption)),
             Type::caption, color(Tone::textTertiary), model_.rampText);
}

const QPixmap& TimelineChart::drawn() {
    const double ratio = devicePixelRatioF();
    if (drawn_.isNull() || drawn_.devicePixelRatio() != ratio) {
        drawn_ = QPixmap(size() * ratio);
        drawn_.setDevicePixelRatio(ratio);
        QPainter painter(&drawn_);
        painter.setRenderHint(QPainter::Antialiasing);
        paintGround(painter);
        paintLines(painter);
    }
    return drawn_;
}

void TimelineChart::paintScrub(QPainter& painter) const {
    const PlotFrame plot = frame();
    const double x = ruleX();
    painter.fillRect(QRectF(x, plot.area.top() - aboveRule, 1, plot.area.height() + aboveRule), color(Tone::ink));
    painter.setPen(QPen(color(Tone::textPrimary), 2));
    painter.setBrush(color(Tone::panel));
    for (const std::optional<double>& value : reading_.rings)
        if (value)
            painter.drawEllipse(QPointF(x + 0.5, plot.y(*value)), ringRadius, ringRadius);
}

void TimelineChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (reveal_ < 1) {
        paintGround(painter);
        const QRectF area = frame().area;
        painter.save();
        painter.setClipRect(QRectF(0, area.top() - aboveRule, area.left() + reveal_ * area.width(), height()));
        painter.drawPixmap(0, 0, drawn());
        painter.restore();
    } else {
        painter.drawPixmap(0, 0, drawn());
    }
    drawText(painter, titleLine(), valueStyle, color(Tone::textPrimary), reading_.value, Qt::AlignRight, Qt::ElideNone);
    if (scrub_)
        paintScrub(painter);
    drawFocusRing(painter, QRectF(rect()), 4);
}

void TimelineChart::resizeEvent(QResizeEvent*) {
    drawn_ = {};
}

void TimelineChart::themeChanged() {
    drawn_ = {};
}

void TimelineChart::askAt(ScrubWish::Kind kind, const QPointF& point) {
    emit asked({.kind = kind, .time = frame().timeAt(point.x())});
}

void TimelineChart::enterEvent(QEnterEvent* event) {
    askAt(Wish::hover, event->position());
}

void TimelineChart::mouseMoveEvent(QMouseEvent* event) {
    askAt(Wish::hover, event->position());
}

void TimelineChart::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(event->button() == Qt::LeftButton);
}

void TimelineChart::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        askAt(Wish::keep, event->position());
}

void TimelineChart::leaveEvent(QEvent*) {
    emit asked({.kind = Wish::leave});
}

void TimelineChart::keyPressEvent(QKeyEvent* event) {
    constexpr int beyond = std::numeric_limits<int>::max();
    keyUsed();
    const bool strides = event->modifiers().testFlag(Qt::ShiftModifier);
    const auto go = [&](int direction) {
        emit asked({.kind = strides ? Wish::stride : Wish::step, .count = direction});
    };
    switch (event->key()) {
    case Qt::Key_Left:
        go(-1);
        break;
    case Qt::Key_Right:
        go(1);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        emit asked({.kind = Wish::keepPicked});
        break;
    case Qt::Key_Home:
        emit asked({.kind = Wish::step, .count = -beyond});
        break;
    case Qt::Key_End:
        emit asked({.kind = Wish::step, .count = beyond});
        break;
    case Qt::Key_Escape:
        // Without a moment to leave, it is the window's.
        if (!scrub_ && !reading_.isPinned) {
            PaintedWidget::keyPressEvent(event);
            return;
        }
        emit asked({.kind = Wish::letGo});
        break;
    default:
        PaintedWidget::keyPressEvent(event);
    }
}

void TimelineChart::focusOutEvent(QFocusEvent* event) {
    PaintedWidget::focusOutEvent(event);
    if (scrub_ && event->reason() != Qt::PopupFocusReason &&
        qobject_cast<TimelineChart*>(QApplication::focusWidget()) == nullptr)
        emit asked({.kind = Wish::leave});
}

} // namespace vantoro
