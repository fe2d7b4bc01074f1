#include "Design/Gauges/LevelPips.h"

#include <QPainter>

namespace vantoro {

namespace {
constexpr int count = 5;
constexpr double pipWidth = 3;
constexpr double pitch = 6;
constexpr double outline = 1;
} // namespace

LevelPips::LevelPips(Look& look, Height height, QWidget* parent)
    : PaintedWidget(look, parent), height_(static_cast<int>(height)) {
    keepDirection();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void LevelPips::show(std::optional<int> level, int heatStop) {
    if (level == level_ && heatStop == heatStop_)
        return;
    level_ = level;
    heatStop_ = heatStop;
    update();
}

QSize LevelPips::sizeHint() const {
    const double scale = theme().textScale();
    return {qRound(((count - 1) * pitch + pipWidth + outline) * scale), qRound(height_ * scale)};
}

Description LevelPips::describe() {
    return {.isDecoration = true};
}

void LevelPips::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(theme().textScale(), theme().textScale());
    const int filled = level_ ? *level_ + 1 : 0;
    for (int i = 0; i < count; ++i) {
        const bool isFilled = i < filled;
        painter.setPen(QPen(isFilled ? theme().heatFill(heatStop_) : color(Tone::textTertiary), outline));
        painter.setBrush(isFilled ? QBrush(theme().heatFill(heatStop_)) : QBrush(Qt::NoBrush));
        const QRectF pip(outline / 2 + i * pitch, outline / 2, pipWidth, height_ - outline);
        painter.drawRoundedRect(pip, pipWidth / 2, pipWidth / 2);
    }
}

} // namespace vantoro
