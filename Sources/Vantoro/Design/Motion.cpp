#include "Design/Motion.h"

namespace vantoro {

bool Motion::smooth() const {
    return context_.flag("smoothUpdates").value_or(true);
}

std::optional<Animation> Motion::update() const {
    if (!smooth())
        return std::nullopt;
    const double interval = context_.number("sampleInterval").value_or(2.0);
    if (interval > 0 && interval <= 0.5)
        return LinearAnimation{.durationSeconds = interval};
    constexpr double longestResponse = 0.42;
    const double half = interval / 2;
    return SpringAnimation{.responseSeconds = interval > 0 && half < longestResponse ? half : longestResponse};
}

} // namespace vantoro
