#include "Views/Sensors/SensorBars.h"

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

namespace {

constexpr double barTop = 2;
constexpr double barHeight = 10;
constexpr double partGap = 2;
constexpr double partRadius = 2;
constexpr double legendTop = 20;
constexpr double entryHeight = 26;
constexpr double columnGap = 32;
constexpr double square = 8;
constexpr double squareGap = 8;
constexpr double valueGap = 12;

} // namespace

StackedBar::StackedBar(Look& look, QWidget* parent) : PaintedWidget(look, parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

double StackedBar::rowHeight() const {
    return entryHeight - Type::body.lineHeight + lineHeight(Type::body);
}

std::size_t StackedBar::columnCount(double width) const {
    const double column = (width - columnGap) / 2;
    const bool fits = std::all_of(legend_.entries.begin(), legend_.entries.end(), [&](const LegendEntry& entry) {
        const double marker = entry.share ? square + squareGap : 0;
        const double texts = textWidth(Type::body, entry.label) + textWidth(Type::body.semibold(), entry.value);
        return marker + texts + valueGap <= column;
    });
    return fits ? 2 : 1;
}

int StackedBar::heightForWidth(int width) const {
    const std::size_t columns = columnCount(width);
    const std::size_t rows = (legend_.entries.size() + columns - 1) / columns;
    return static_cast<int>(std::ceil(legendTop + static_cast<double>(rows) * rowHeight()));
}

QSize StackedBar::sizeHint() const {
    constexpr int usual = 456;
    return {usual, heightForWidth(usual)};
}

void StackedBar::show(const LegendModel& legend, const std::optional<Animation>& animation) {
    if (legend == legend_)
        return;
    const bool isFirst = legend.entries.size() != legend_.entries.size();
    const int height = heightForWidth(width());
    const std::optional<Animation> shown = isInSight() && !isFirst ? animation : std::nullopt;
    const double now = look().clock.now();
    parts_ = 0;
    for (const LegendEntry& entry : legend.entries)
        if (entry.share && parts_ < mostParts) {
            lengths_[parts_].setResolution(smallestSeen(width()));
            lengths_[parts_++].set(*entry.share, now, shown);
        }
    legend_ = legend;
    if (isFirst || heightForWidth(width()) != height)
        updateGeometry();
    update();
    if (isMoving(now))
        look().clock.run(*this);
    announceChange();
}

bool StackedBar::advance(double now) {
    update(0, 0, width(), static_cast<int>(barTop + barHeight));
    return isMoving(now);
}

bool StackedBar::isMoving(double now) const {
    return std::any_of(lengths_.begin(), lengths_.end(),
                       [now](const AnimatedValue& length) { return !length.isAtRest(now); });
}

void StackedBar::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    for (AnimatedValue& length : lengths_)
        length.set(length.target(), 0, std::nullopt);
    PaintedWidget::hideEvent(event);
}

/// The last part is what is left over: it lies in the shade of what is empty.
bool StackedBar::isRemainder(std::size_t part) const {
    return part + 1 == parts_;
}

QColor StackedBar::shade(std::size_t part) const {
    constexpr std::array shades{Tone::ink, Tone::bar, Tone::blade};
    return color(isRemainder(part) ? Tone::cell : shades[std::min(part, shades.size() - 1)]);
}

void StackedBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBar(painter);
    const std::size_t columns = columnCount(width());
    const double column = columns == 2 ? (width() - columnGap) / 2 : width();
    std::size_t part = 0;
    for (std::size_t i = 0; i < legend_.entries.size(); ++i) {
        const LegendEntry& entry = legend_.entries[i];
        const std::size_t row = i / columns;
        const QRectF cell(static_cast<double>(i % columns) * (column + columnGap),
                          legendTop + static_cast<double>(row) * rowHeight(), column, rowHeight());
        paintEntry(painter, cell, entry, part);
        if (entry.share)
            ++part;
    }
}

void StackedBar::paintBar(QPainter& painter) const {
    const double now = look().clock.now();
    double left = 0;
    painter.setPen(theme().increasesContrast() ? QPen(color(Tone::line), 1) : QPen(Qt::NoPen));
    for (std::size_t part = 0; part < parts_; ++part) {
        const double right =
            isRemainder(part) ? width() : std::min(left + width() * lengths_[part].at(now), width() * 1.0);
        const double drawn = right - left - (isRemainder(part) ? 0 : partGap);
        painter.setBrush(shade(part));
        if (drawn > 0)
            painter.drawRoundedRect(QRectF(left, barTop, drawn, barHeight), partRadius, partRadius);
        left = right;
    }
}

void StackedBar::paintEntry(QPainter& painter, const QRectF& cell, const LegendEntry& entry, std::size_t part) const {
    QRectF line = cell;
    if (entry.share) {
        const QRectF box(line.left(), line.center().y() - square / 2, square, square);
        const bool isOutlined = isRemainder(part);
        painter.setPen(isOutlined ? QPen(color(Tone::textTertiary), 1) : QPen(Qt::NoPen));
        painter.setBrush(shade(part));
        const double inset = isOutlined ? 0.5 : 0;
        const double radius = partRadius - inset;
        painter.drawRoundedRect(mirrored(box).adjusted(inset, inset, -inset, -inset), radius, radius);
        line.setLeft(box.right() + squareGap);
    }
    drawText(painter, line, Type::body.semibold(), color(entry.isMissing ? Tone::textTertiary : Tone::textPrimary),
             entry.value, Qt::AlignRight, Qt::ElideNone);
    line.setRight(line.right() - textWidth(Type::body.semibold(), entry.value) - valueGap);
    drawText(painter, line, Type::body, color(Tone::textSecondary), entry.label);
}

Description StackedBar::describe() {
    return {.role = QAccessible::StaticText, .name = spokenName(), .value = legend_.spokenValue};
}

} // namespace vantoro
