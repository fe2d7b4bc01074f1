#include "Views/Sensors/StackedBar.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace vantoro {

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
    return {.role = QAccessible::StaticText, .name = spoken_, .value = legend_.spokenValue};
}

} // namespace vantoro
