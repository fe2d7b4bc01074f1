#include "Design/StackedBar.h"

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
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

double StackedBar::rowHeight() const {
    return entryHeight - Type::body.lineHeight + lineHeight(Type::body);
}

QSize StackedBar::sizeHint() const {
    const double rows = std::ceil(static_cast<double>(legend_.entries.size()) / 2);
    return {456, static_cast<int>(std::ceil(legendTop + rows * rowHeight()))};
}

void StackedBar::show(const LegendModel& legend, const std::optional<Animation>& animation) {
    if (legend == legend_)
        return;
    const bool isFirst = legend.entries.size() != legend_.entries.size();
    const std::optional<Animation> shown = isVisible() && !isFirst ? animation : std::nullopt;
    const double now = look().clock.now();
    parts_ = 0;
    for (const LegendEntry& entry : legend.entries)
        if (entry.share && parts_ < mostParts)
            lengths_[parts_++].set(*entry.share, now, shown);
    legend_ = legend;
    if (isFirst)
        updateGeometry();
    update();
    if (shown)
        look().clock.run(*this);
    announceChange();
}

bool StackedBar::advance(double now) {
    update(0, 0, width(), static_cast<int>(barTop + barHeight));
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
    const double column = (width() - columnGap) / 2;
    std::size_t part = 0;
    for (std::size_t i = 0; i < legend_.entries.size(); ++i) {
        const LegendEntry& entry = legend_.entries[i];
        const QRectF cell(i % 2 == 0 ? 0 : column + columnGap, legendTop + static_cast<double>(i / 2) * rowHeight(),
                          column, rowHeight());
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
        painter.drawRoundedRect(box.adjusted(inset, inset, -inset, -inset), partRadius, partRadius);
        line.setLeft(box.right() + squareGap);
    }
    drawText(painter, line, Type::body.semibold(), color(Tone::textPrimary), entry.value, Qt::AlignRight,
             Qt::ElideNone);
    line.setRight(line.right() - textWidth(Type::body.semibold(), entry.value) - valueGap);
    drawText(painter, line, Type::body, color(Tone::textSecondary), entry.label);
}

Description StackedBar::describe() {
    return {.role = QAccessible::StaticText, .name = spoken_, .value = legend_.spokenValue};
}

} // namespace vantoro
