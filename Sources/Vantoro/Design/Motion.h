// How changes of value are animated.
#pragma once

#include "Design/FormatContext.h"

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

} // namespace vantoro
