#include "Design/Gauges/WheelFrames.h"

#include <cmath>
#include <map>
#include <numbers>
#include <QPainter>
#include <QPainterPath>
#include <tuple>

namespace vantoro {

namespace {

constexpr double pitchDegrees = 360.0 / WheelFrames::blades;
// Shares of the radius.
constexpr double bladeRoot = 0.34;
constexpr double hubOuter = 0.36;
constexpr double hubInner = 0.27;
constexpr double core = 0.20;
constexpr double sweepDegrees = 38;
// Where a blade's edge is pulled to: outwards from its root before it sweeps.
constexpr double bendRadius = 0.72;
constexpr double bendDegrees = 4;

/// Degrees clockwise from the top.
QPointF polar(double radius, double degrees) {
    const double radians = degrees * std::numbers::pi / 180;
    return {radius * std::sin(radians), -radius * std::cos(radians)};
}

QPainterPath blade(double radius) {
    const double root = -sweepDegrees;
    const double width = pitchDegrees / 2;
    QPainterPath path(polar(radius * bladeRoot, root));
    path.quadTo(polar(radius * bendRadius, root + bendDegrees), polar(radius, 0));
    path.lineTo(polar(radius, width));
    path.quadTo(polar(radius * bendRadius, root + bendDegrees + width), polar(radius * bladeRoot, root + width));
    path.closeSubpath();
    return path;
}

} // namespace

std::shared_ptr<WheelFrames> WheelFrames::shared(double radius, const QColor& color, double pixelRatio) {
    static std::map<std::tuple<double, QRgb, double>, std::weak_ptr<WheelFrames>> known;
    std::erase_if(known, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<WheelFrames>& entry = known[{radius, color.rgba(), pixelRatio}];
    std::shared_ptr<WheelFrames> frames = entry.lock();
    if (frames == nullptr) {
        frames = std::make_shared<WheelFrames>(radius, color, pixelRatio);
        entry = frames;
    }
    return frames;
}

WheelFrames::WheelFrames(double radius, const QColor& color, double pixelRatio)
    : radius_(radius), color_(color), pixelRatio_(pixelRatio) {}

int WheelFrames::step(double turns) {
    const double pitches = turns * blades;
    const double within = pitches - std::floor(pitches);
    return static_cast<int>(within * count) % count;
}

const QPixmap& WheelFrames::at(double turns) {
    const int picture = step(turns);
    QPixmap& frame = frames_[static_cast<std::size_t>(picture)];
    if (frame.isNull())
        frame = render(pitchDegrees * picture / count);
    return frame;
}

QPixmap WheelFrames::render(double degrees) const {
    const int side = static_cast<int>(std::ceil(2 * radius_ * pixelRatio_));
    QPixmap picture(side, side);
    picture.setDevicePixelRatio(pixelRatio_);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(radius_, radius_);
    painter.rotate(degrees);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color_);
    const QPainterPath shape = blade(radius_);
    for (int i = 0; i < blades; ++i) {
        painter.drawPath(shape);
        painter.rotate(pitchDegrees);
    }
    painter.drawEllipse(QPointF(), radius_ * hubOuter, radius_ * hubOuter);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.drawEllipse(QPointF(), radius_ * hubInner, radius_ * hubInner);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawEllipse(QPointF(), radius_ * core, radius_ * core);
    return picture;
}

} // namespace vantoro
