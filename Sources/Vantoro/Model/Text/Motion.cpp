#include "Model/Text/Motion.h"

#include "Model/Text/Setting.h"

#include <cmath>
#include <numbers>

namespace vantoro {

bool Motion::smooth() const {
    return context_.flag(Setting::smoothUpdates.key).value_or(Setting::smoothUpdates.byDefault);
}

std::optional<Animation> Motion::update() const {
    if (!smooth())
        return std::nullopt;
    const double interval = context_.number(Setting::sampleInterval.key).value_or(Setting::sampleInterval.byDefault);
    if (interval > 0 && interval <= 0.5)
        return LinearAnimation{.durationSeconds = interval};
    constexpr double longestResponse = 0.42;
    const double half = interval / 2;
    return SpringAnimation{.responseSeconds = interval > 0 && half < longestResponse ? half : longestResponse};
}

Movement criticallyDamped(Movement start, double responseSeconds, double seconds) {
    if (!(responseSeconds > 0))
        return {};
    const double w = 2 * std::numbers::pi / responseSeconds;
    const double slope = start.speed + w * start.distance;
    const double decay = std::exp(-w * seconds);
    return {.distance = (start.distance + slope * seconds) * decay,
            .speed = (slope - w * (start.distance + slope * seconds)) * decay};
}

Movement AnimatedValue::movementAt(double now) const {
    if (!animation_)
        return {};
    const double seconds = now > begun_ ? now - begun_ : 0;
    if (const SpringAnimation* spring = std::get_if<SpringAnimation>(&*animation_))
        return criticallyDamped(start_, spring->responseSeconds, seconds);
    const double duration = std::get<LinearAnimation>(*animation_).durationSeconds;
    if (seconds >= duration)
        return {};
    return {.distance = start_.distance * (1 - seconds / duration), .speed = -start_.distance / duration};
}

// A spring's speed alone carries it no further than this.
bool AnimatedValue::canBeSeen(const Movement& movement) const {
    const SpringAnimation* const spring = animation_ ? std::get_if<SpringAnimation>(&*animation_) : nullptr;
    const double swing =
        spring != nullptr ? std::abs(movement.speed) * spring->responseSeconds / 2 / std::numbers::pi : 0.0;
    return std::abs(movement.distance) + swing > smallest_;
}

void AnimatedValue::set(double target, double now, const std::optional<Animation>& animation) {
    const Movement movement = movementAt(now);
    start_ = {.distance = target_ + movement.distance - target, .speed = movement.speed};
    target_ = target;
    begun_ = now;
    animation_ = animation;
    if (smallest_ > 0 && !canBeSeen(start_))
        animation_.reset();
}

double AnimatedValue::at(double now) const {
    const Movement movement = movementAt(now);
    return smallest_ > 0 && !canBeSeen(movement) ? target_ : target_ + movement.distance;
}

bool AnimatedValue::isAtRest(double now) const {
    if (!animation_)
        return true;
    constexpr double arrived = 1e-3;
    // The scale is the way it had to go, or the sweep that its speed at the start would have made of it.
    const double response = std::holds_alternative<SpringAnimation>(*animation_)
                                ? std::get<SpringAnimation>(*animation_).responseSeconds
                                : std::get<LinearAnimation>(*animation_).durationSeconds;
    const double way = std::abs(start_.distance) + std::abs(start_.speed) * response;
    const Movement movement = movementAt(now);
    return (smallest_ > 0 && !canBeSeen(movement)) ||
           std::abs(movement.distance) + std::abs(movement.speed) * response <= arrived * way;
}

} // namespace vantoro
