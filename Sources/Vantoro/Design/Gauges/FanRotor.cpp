#include "Design/Gauges/FanRotor.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <QPainter>
#include <QPainterPath>
#include <QPaintEvent>
#include <tuple>
#include <utility>

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

namespace {

/// How far the lines below stand within the gauge's gap.
constexpr double figureRise = 12;
constexpr double labelRise = 4;
constexpr SpringAnimation speedEase{.responseSeconds = 0.42};

/// Above this many turns per second the wheel would pass more than half a blade pitch from one beat to the next, and
/// seem to run backwards.
constexpr double fastestSeen = 0.45 * 1000.0 / AnimationClock::beatMilliseconds / WheelFrames::blades;

} // namespace

FanRotor::FanRotor(Look& look, int size, Captions captions, Tone background, QWidget* parent)
    : PaintedWidget(look, parent), size_(size), captions_(captions), background_(background) {
    keepDirection();
    setFocusPolicy(captions == Captions::none ? Qt::NoFocus : Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // Nothing below needs to be painted for a wheel that turns.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void FanRotor::setDiameter(int size) {
    if (size == size_)
        return;
    size_ = size;
    gauge_ = {};
    wheel_.reset();
    updateGeometry();
    update();
}

void FanRotor::show(const FanRotorFigures& figures) {
    if (figures == figures_)
        return;
    const double now = look().clock.now();
    // Where a position comes up or goes away there is nothing to glide from.
    const bool glides = figures.position && figures_.position && isInSight();
    position_.setResolution(smallestSeen(GaugeShape::ofSize(size_).arcLength()));
    position_.set(figures.position.value_or(0), now, glides ? look().update() : std::nullopt);
    const bool gaugeChanged = figures.heatStop != figures_.heatStop ||
                              figures.position.has_value() != figures_.position.has_value() ||
                              std::abs(position_.at(now) - painted_) > position_.resolution();
    const bool textsChanged = figures.figure != figures_.figure || figures.caption != figures_.caption ||
                              figures.label != figures_.label || figures.unit != figures_.unit;
    const bool speaksAnew = figures.spokenValue != figures_.spokenValue;
    figures_ = figures;
    if (gaugeChanged)
        gauge_ = {};
    if (textsChanged) {
        explainCut();
        update();
    } else if (gaugeChanged) {
        update(gaugeRect());
    }
    headForSpeed();
    gaugeMoves_ = !position_.isAtRest(now);
    if (gaugeMoves_)
        look().clock.run(*this);
    if (speaksAnew)
        announceChange();
}

void FanRotor::setTurning(bool allowed) {
    if (allowed == turningAllowed_)
        return;
    turningAllowed_ = allowed;
    headForSpeed();
}

void FanRotor::headForSpeed() {
    const bool stands = !turningAllowed_ || theme().reducesMotion();
    const double target = stands ? 0 : std::min(figures_.turnsPerSecond, fastestSeen);
    if (target != speed_.target())
        speed_.set(target, look().clock.now(),
                   isVisible() && !stands ? std::optional<Animation>(speedEase) : std::nullopt);
    if (isVisible() && target > 0) {
        lastBeat_ = look().clock.now();
        look().clock.run(*this);
    }
}

bool FanRotor::advance(double now) {
    // One more picture is due after the value has arrived.
    const bool positionMoves = std::exchange(gaugeMoves_, !position_.isAtRest(now));
    // After a pause the wheel goes on from where it stood.
    constexpr double longestStep = 0.1;
    const double step = std::clamp(now - lastBeat_, 0.0, longestStep);
    lastBeat_ = now;
    // Whoever is scrolled into sight again is painted, and goes on then.
    if (!isInSight())
        return false;
    const int picture = WheelFrames::step(turns_);
    turns_ = std::fmod(turns_ + step * speed_.at(now), 1.0);
    if (positionMoves) {
        gauge_ = {};
        update(gaugeRect());
    } else if (WheelFrames::step(turns_) != picture) {
        update(wheelSquare());
    }
    return gaugeMoves_ || speed_.target() > 0 || !speed_.isAtRest(now);
}

QRect FanRotor::gaugeRect() const {
    return {0, 0, width(), size_ + 2 * ringMargin};
}

QPointF FanRotor::centre() const {
    return {width() / 2.0, ringMargin + size_ / 2.0};
}

double FanRotor::wheelRadius() const {
    const double inset = size_ >= 120 ? 20 : size_ >= 100 ? 14 : size_ >= 68 ? 12 : 10;
    return GaugeShape::ofSize(size_).outerRadius - inset;
}

QRect FanRotor::wheelSquare() const {
    const double radius = wheelRadius();
    return QRectF(centre().x() - radius, centre().y() - radius, 2 * radius, 2 * radius).toAlignedRect();
}

QSize FanRotor::sizeAt(int diameter) const {
    double height = diameter;
    if (captions_ == Captions::full)
        height = diameter - figureRise + figureHeight() + 2 + lineHeight(Type::small);
    else if (captions_ == Captions::label)
        height = diameter - labelRise + lineHeight(Type::small);
    double width = diameter;
    if (captions_ == Captions::full)
        width = std::max(width, figureLineWidth({figures_.figure, figures_.unit}, theme()));
    return {static_cast<int>(std::ceil(width)) + 2 * ringMargin, static_cast<int>(std::ceil(height)) + 2 * ringMargin};
}

double FanRotor::nameRoom() const {
    return captions_ == Captions::full ? width() - textWidth(Type::small, figures_.caption.mid(figures_.label.size()))
                                       : width();
}

void FanRotor::explainCut() {
    const bool isCut = captions_ != Captions::none && textWidth(Type::small, figures_.label) > nameRoom();
    setToolTip(isCut ? figures_.label : QString());
}

Description FanRotor::describe() {
    return {.role = QAccessible::ProgressBar,
            .name = figures_.spokenName,
            .value = figures_.spokenValue,
            .number = figures_.position};
}

void FanRotor::paintGauge(QPainter& painter, double now) {
    if (gauge_.isNull()) {
        const double ratio = devicePixelRatioF();
        gauge_ = QPixmap(gaugeRect().size() * ratio);
        gauge_.setDevicePixelRatio(ratio);
        gauge_.fill(Qt::transparent);
        QPainter cached(&gauge_);
        painted_ = position_.at(now);
        const std::optional<double> shown = figures_.position ? std::optional(painted_) : std::nullopt;
        drawGauge(cached, centre(), GaugeShape::ofSize(size_), shown, figures_.heatStop, background_, theme());
    }
    painter.drawPixmap(0, 0, gauge_);
}

void FanRotor::paintCaptions(QPainter& painter) const {
    if (captions_ == Captions::label) {
        const QRectF line(0, ringMargin + size_ - labelRise, width(), lineHeight(Type::small));
        drawText(painter, line, Type::small, color(Tone::textSecondary), figures_.label, Qt::AlignHCenter);
        return;
    }
    const QRectF line(0, ringMargin + size_ - figureRise, width(), figureHeight());
    if (figures_.unit.isEmpty()) {
        drawText(painter, line, Type::small, color(Tone::textSecondary), figures_.figure, Qt::AlignHCenter);
        return;
    }
    drawFigureLine(painter, line, {figures_.figure, figures_.unit}, theme(), Qt::AlignHCenter);
    const QString name = elidedTabular(font(Type::small), figures_.label, nameRoom(), Qt::ElideRight);
    drawText(painter, QRectF(0, line.bottom() + 2, width(), lineHeight(Type::small)), Type::small,
             color(Tone::textSecondary), name + figures_.caption.mid(figures_.label.size()), Qt::AlignHCenter,
             Qt::ElideNone);
}

void FanRotor::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const double now = look().clock.now();
    painter.fillRect(event->rect(), color(background_));
    paintGauge(painter, now);
    if (wheel_ == nullptr)
        wheel_ = WheelFrames::shared(wheelRadius(), color(Tone::blade), devicePixelRatioF());
    const double radius = wheelRadius();
    painter.drawPixmap(centre() - QPointF(radius, radius), wheel_->at(turns_));
    if (wheelSquare().contains(event->rect()))
        return;
    if (captions_ != Captions::none)
        paintCaptions(painter);
    drawFocusRing(painter, QRectF(rect()), 12);
    if (isVisible() && (gaugeMoves_ || speed_.target() > 0 || !speed_.isAtRest(now)))
        look().clock.run(*this);
}

void FanRotor::showEvent(QShowEvent* event) {
    headForSpeed();
    PaintedWidget::showEvent(event);
}

void FanRotor::hideEvent(QHideEvent* event) {
    look().clock.stop(*this);
    position_.set(position_.target(), look().clock.now(), std::nullopt);
    speed_.set(speed_.target(), look().clock.now(), std::nullopt);
    gaugeMoves_ = false;
    gauge_ = {};
    PaintedWidget::hideEvent(event);
}

void FanRotor::resizeEvent(QResizeEvent* event) {
    gauge_ = {};
    explainCut();
    PaintedWidget::resizeEvent(event);
}

void FanRotor::themeChanged() {
    gauge_ = {};
    wheel_.reset();
    headForSpeed();
}

} // namespace vantoro
