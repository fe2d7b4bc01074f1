#include "Views/Cores/CoreTiles.h"

#include "Design/Panel.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>

namespace vantoro {

namespace {

constexpr double padding = 12;
constexpr double meterWidth = 6;
constexpr double meterGap = 10;
constexpr double barHeight = 3;
constexpr double textTop = 10;
constexpr double captionGap = 3;
constexpr int tileGap = 8;

/// A track with its filled part, whose inner end is round too.
void drawMeter(QPainter& painter, const QRectF& track, const QRectF& filled, const QColor& empty, const QColor& full) {
    const double radius = std::min(track.width(), track.height()) / 2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(empty);
    painter.drawRoundedRect(track, radius, radius);
    QPainterPath shape;
    shape.addRoundedRect(track, radius, radius);
    painter.save();
    painter.setClipPath(shape);
    painter.setBrush(full);
    painter.drawRoundedRect(filled, radius, radius);
    painter.restore();
}

} // namespace

CoreTile::CoreTile(Look& look, QWidget* parent) : PaintedWidget(look, parent) {}

int CoreTile::heightFor(const Theme& theme) {
    const double nominalText = Type::small.lineHeight + Type::figure.lineHeight + Type::caption.lineHeight;
    const double text =
        lineHeightOf(Type::small, theme) + lineHeightOf(Type::figure, theme) + lineHeightOf(Type::caption, theme);
    return static_cast<int>(std::ceil(nominalHeight - nominalText + text));
}

void CoreTile::show(const CoreFigures& figures, const std::optional<Animation>& animation) {
    if (figures == figures_)
        return;
    const std::optional<Animation> shown = isInSight() ? animation : std::nullopt;
    const double now = look().clock.now();
    busy_.setResolution(smallestSeen(busyMeter().height()));
    frequency_.setResolution(smallestSeen(frequencyBar().width()));
    busy_.set(figures.busy, now, shown);
    frequency_.set(figures.frequencyFill.value_or(0), now, shown);
    const bool looksDifferent = figures.isHighlighted != figures_.isHighlighted || figures.label != figures_.label ||
                                !shown || figures.frequencyFill.has_value() != figures_.frequencyFill.has_value();
    const bool readsDifferent =
        figures.busyText != figures_.busyText || figures.frequencyText != figures_.frequencyText;
    figures_ = figures;
    if (looksDifferent)
        update();
    else if (readsDifferent)
        update(mirrored(QRectF(0, 0, busyMeter().left(), frequencyBar().top())).toAlignedRect());
    advance(now);
    if (isMoving(now))
        look().clock.run(*this);
    if (readsDifferent)
        announceChange();
}

bool CoreTile::advance(double now) {
    if (std::abs(busy_.at(now) - paintedBusy_) > busy_.resolution())
        update(mirrored(busyMeter()).toAlignedRect());
    if (std::abs(frequency_.at(now) - paintedFrequency_) > frequency_.resolution())
        update(mirrored(frequencyBar()).toAlignedRect());
    return isMoving(now);
}

bool CoreTile::isMoving(double now) const {
    return !busy_.isAtRest(now) || !frequency_.isAtRest(now);
}

void CoreTile::settle() {
    look().clock.stop(*this);
    busy_.set(busy_.target(), 0, std::nullopt);
    frequency_.set(frequency_.target(), 0, std::nullopt);
}

void CoreTile::hideEvent(QHideEvent* event) {
    settle();
    PaintedWidget::hideEvent(event);
}

QRectF CoreTile::busyMeter() const {
    return {width() - padding - meterWidth, padding, meterWidth, height() - 2 * padding};
}

QRectF CoreTile::frequencyBar() const {
    const double right = busyMeter().left() - meterGap;
    return {padding, height() - padding, std::max(0.0, right - padding), barHeight};
}

void CoreTile::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool busy = figures_.isHighlighted;
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(busy ? Tone::tileBusy : Tone::tile));
    painter.drawRoundedRect(QRectF(rect()), Space::buttonRadius, Space::buttonRadius);

    constexpr TextStyle restingFigure{Type::figure.size, Type::figure.lineHeight, QFont::Medium};
    QRectF line(padding, textTop, busyMeter().left() - padding, lineHeight(Type::small));
    drawText(painter, line, busy ? Type::small.semibold() : Type::small,
             color(busy ? Tone::textPrimary : Tone::textSecondary), figures_.label);
    line = QRectF(line.left(), line.bottom(), line.width(), lineHeight(Type::figure));
    drawText(painter, line, busy ? Type::figure : restingFigure, color(Tone::textPrimary), figures_.busyText);
    line = QRectF(line.left(), line.bottom() + captionGap, line.width(), lineHeight(Type::caption));
    drawText(painter, line, Type::caption, color(Tone::textSecondary), figures_.frequencyText);

    const double now = look().clock.now();
    const QRectF meter = mirrored(busyMeter());
    paintedBusy_ = busy_.at(now);
    paintedFrequency_ = frequency_.at(now);
    const double filled = meter.height() * paintedBusy_;
    drawMeter(painter, meter, QRectF(meter.left(), meter.bottom() - filled, meter.width(), filled + meterWidth),
              color(Tone::tileTrack), color(busy ? Tone::textPrimary : Tone::bar));
    if (!figures_.frequencyFill)
        return;
    const QRectF bar = mirrored(frequencyBar());
    drawMeter(painter, bar,
              QRectF(bar.left() - barHeight, bar.top(), bar.width() * paintedFrequency_ + barHeight, barHeight),
              color(Tone::tileTrack), color(busy ? Tone::ink : Tone::bar));
}

Description CoreTile::describe() {
    return {.role = QAccessible::ProgressBar,
            .name = figures_.label,
            .value = figures_.spokenValue,
            .number = figures_.busy,
            .least = 0,
            .most = 1};
}

CoreGrid::CoreGrid(Look& look) : look_(look) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(&look.theme, &Theme::changed, this, &CoreGrid::relayout);
}

void CoreGrid::show(const std::vector<CoreFigures>& cores, const std::optional<Animation>& animation) {
    const bool changes = cores.size() != tiles_.size();
    while (tiles_.size() > cores.size()) {
        delete tiles_.back();
        tiles_.pop_back();
    }
    while (tiles_.size() < cores.size()) {
        tiles_.push_back(new CoreTile(look_, this));
        tiles_.back()->QWidget::show();
    }
    for (std::size_t i = 0; i < cores.size(); ++i)
        tiles_[i]->show(cores[i], animation);
    if (changes)
        relayout();
}

void CoreGrid::setColumns(int columns) {
    if (columns == columns_)
        return;
    columns_ = columns;
    relayout();
}

QSize CoreGrid::sizeHint() const {
    const int rows = (static_cast<int>(tiles_.size()) + columns_ - 1) / columns_;
    return {600, std::max(0, rows * (CoreTile::heightFor(look_.theme) + tileGap) - tileGap)};
}

QSize CoreGrid::minimumSizeHint() const {
    return {columns_ * (40 + tileGap), sizeHint().height()};
}

void CoreGrid::relayout() {
    updateGeometry();
    place();
}

void CoreGrid::place() {
    const double width = (this->width() + tileGap) / static_cast<double>(columns_);
    const int height = CoreTile::heightFor(look_.theme);
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        const int column = static_cast<int>(i) % columns_;
        const int left = qRound(column * width);
        const int right = qRound((column + 1) * width) - tileGap;
        const QRect tile(left, static_cast<int>(i) / columns_ * (height + tileGap), right - left, height);
        tiles_[i]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), tile));
    }
}

} // namespace vantoro
