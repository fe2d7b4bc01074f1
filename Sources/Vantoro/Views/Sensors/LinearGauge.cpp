#include "Views/Sensors/LinearGauge.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <QPainter>
#include <QPainterPath>

namespace vantoro {

namespace {

/// The loads at which the bands meet.
constexpr std::array bandEnds{0.06, 0.22, 0.48, 0.78, 1.0};
constexpr double bandGap = 2.4;
constexpr double bandTop = 11;
constexpr double bandHeight = 6;
constexpr double cursorWidth = 3;
constexpr double cursorHeight = 14;
constexpr double halo = 2;
constexpr double caretWidth = 8;
constexpr double caretHeight = 6;
constexpr double captionTop = 26;
constexpr double captionGap = 8;

} // namespace

LinearGauge::LinearGauge(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    keepDirection();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

QSize LinearGauge::sizeHint() const {
    return {456, static_cast<int>(std::ceil(captionTop + lineHeight(Type::caption)))};
}

void LinearGauge::show(const FanRowModel& fan, const std::optional<Animation>& animation) {
    if (fan == fan_)
        return;
    const bool appears = fan.position.has_value() != fan_.position.has_value();
    const std::optional<Animation> shown = isInSight() && !appears ? animation : std::nullopt;
    const double now = look().clock.now();
    position_.setResolution(smallestSeen(width()));
    target_.setResolution(smallestSeen(width()));
    position_.set(fan.position.value_or(0), now, shown);
    target_.set(fan.target.value_or(0), now, shown);
    fan_ = fan;
    update();
    if (!position_.isAtRest(now) || !target_.isAtRest(now))
        look().clock.run(*this);
}

bool LinearGauge::advance(double now) {
    // The caption of the target moves with its caret.
    update();
    return !position_.isAtRest(now) || !target_.isAtRest(now);
}

void LinearGauge::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    position_.set(position_.target(), 0, std::nullopt);
    target_.set(target_.target(), 0, std::nullopt);
    PaintedWidget::hideEvent(event);
}

void LinearGauge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double now = look().clock.now();
    paintBands(painter, position_.at(now));
    paintCaptions(painter, target_.at(now));
}

void LinearGauge::paintBands(QPainter& painter, double position) const {
    painter.setPen(Qt::NoPen);
    QPainterPath bands;
    double left = 0;
    for (const double end : bandEnds) {
        const double right = end < 1 ? width() * end - bandGap / 2 : width();
        bands.addRoundedRect(QRectF(left, bandTop, right - left, bandHeight), 1, 1);
        left = right + bandGap;
    }
    const QPen outline = theme().increasesContrast() ? QPen(color(Tone::line), 1) : QPen(Qt::NoPen);
    painter.setPen(outline);
    painter.setBrush(color(Tone::well));
    painter.drawPath(bands);
    painter.setPen(Qt::NoPen);
    if (!fan_.position)
        return;
    const double x = width() * position;
    painter.save();
    painter.setClipRect(QRectF(0, 0, x, height()));
    painter.setBrush(theme().heatFill(fan_.heatStop));
    painter.drawPath(bands);
    painter.restore();
    const double middle = bandTop + bandHeight / 2;
    const double at = std::clamp(x, cursorWidth / 2, width() - cursorWidth / 2);
    const QRectF cursor(at - cursorWidth / 2, middle - cursorHeight / 2, cursorWidth, cursorHeight);
    painter.setBrush(color(Tone::panel));
    painter.drawRect(cursor.adjusted(-halo, 0, halo, 0));
    painter.setBrush(color(Tone::textPrimary));
    painter.drawRoundedRect(cursor, cursorWidth / 2, cursorWidth / 2);
}

void LinearGauge::paintCaptions(QPainter& painter, double target) const {
    if (fan_.floorText.isEmpty())
        return;
    const QColor ink = color(Tone::textTertiary);
    const QRectF line(0, captionTop, width(), lineHeight(Type::caption));
    drawText(painter, line, Type::caption, ink, fan_.floorText);
    drawText(painter, line, Type::caption, ink, fan_.ceilingText, Qt::AlignRight);
    const double wide = textWidth(Type::caption, fan_.targetText);
    const double least = textWidth(Type::caption, fan_.floorText) + captionGap;
    const double most = width() - textWidth(Type::caption, fan_.ceilingText) - captionGap - wide;
    double left = (width() - wide) / 2;
    if (fan_.target) {
        // Its tip goes as far as the cursor does; at the ends of the gauge half of it is left.
        const double x = std::clamp(width() * target, cursorWidth / 2, width() - cursorWidth / 2);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(Tone::textSecondary));
        const std::array caret{QPointF(std::max(0.0, x - caretWidth / 2), 0),
                               QPointF(std::min<double>(width(), x + caretWidth / 2), 0), QPointF(x, caretHeight)};
        painter.drawConvexPolygon(caret.data(), static_cast<int>(caret.size()));
        left = x - wide / 2;
    }
    // Between its neighbours; where there is no room at all it yields to the limits.
    if (most >= least)
        drawText(painter, QRectF(std::clamp(left, least, most), line.top(), wide + 1, line.height()), Type::caption,
                 ink, fan_.targetText, Qt::AlignLeft, Qt::ElideNone);
}

} // namespace vantoro
