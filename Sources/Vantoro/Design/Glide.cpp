#include "Design/Glide.h"

namespace vantoro {

void Glide::set(double target, double responseSeconds, bool isSeen) {
    const bool glides = isSeen && !look_.theme.reducesMotion() && !look_.clock.isPaused();
    value_.set(target, look_.clock.now(),
               glides ? std::optional<Animation>(SpringAnimation{.responseSeconds = responseSeconds}) : std::nullopt);
    if (glides)
        look_.clock.run(*this);
    moved_();
}

void Glide::settle() {
    look_.clock.stop(*this);
    value_.set(value_.target(), look_.clock.now(), std::nullopt);
}

bool Glide::advance(double now) {
    moved_();
    return !value_.isAtRest(now);
}

} // namespace vantoro
