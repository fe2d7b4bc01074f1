// How changes of value are animated.
#pragma once

#include "Model/Text/Format.h"

#include <optional>
#include <variant>

namespace vantoro {

struct LinearAnimation {
    double durationSeconds = 0;

    bool operator==(const LinearAnimation&) const = default;
};

struct SpringAnimation {
    double responseSeconds = 0;
    /// 1 is critically damped: no overshoot.
    double dampingFraction = 1;
    double blendDurationSeconds = 0;

    bool operator==(const SpringAnimation&) const = default;
};

using Animation = std::variant<LinearAnimation, SpringAnimation>;

/// Reads the settings of its context at the moment of each call.
class Motion {
public:
    explicit Motion(const FormatContext& context) : context_(context) {}

    /// Whether value changes are animated at all; true until the user says otherwise.
    bool smooth() const;
    /// The animation of a published sample; none means that changes apply at once. Up to half a second between samples
    /// values glide in a line, above it they spring.
    std::optional<Animation> update() const;

private:
    const FormatContext& context_;
};

/// A value under way to its target: the distance still to go (value minus target) and its speed per second.
struct Movement {
    double distance = 0;
    double speed = 0;

    bool operator==(const Movement&) const = default;
};

/// Where a critically damped spring of this response stands after `seconds`, exactly: with w = 2 pi / response,
/// x(t) = (d + (v + w d) t) e^(-w t). It never overshoots from rest. A response of 0 and below is there at once.
Movement criticallyDamped(Movement start, double responseSeconds, double seconds);

/// A value on screen that glides to what was measured last. Time is an argument, in seconds of any one clock.
class AnimatedValue {
public:
    explicit AnimatedValue(double value = 0) : target_(value) {}

    double target() const { return target_; }
    /// What is smaller than this cannot be seen: so short a way is not animated, and with no more than that to go the
    /// value has arrived.
    void setResolution(double smallest) { smallest_ = smallest; }
    double resolution() const { return smallest_; }
    /// Heads for a new target from where the value stands, keeping its speed; at once without an animation.
    void set(double target, double now, const std::optional<Animation>& animation);
    double at(double now) const;
    /// Whether it has arrived, to within a thousandth of the way or what cannot be seen.
    bool isAtRest(double now) const;

private:
    Movement movementAt(double now) const;
    bool canBeSeen(const Movement& movement) const;

    double target_;
    double smallest_ = 0;
    Movement start_;
    double begun_ = 0;
    std::optional<Animation> animation_;
};

} // namespace vantoro
