// One value of a widget that glides to where it was sent, on the one clock.
#pragma once

#include "Design/PaintedWidget.h"

#include <functional>

namespace vantoro {

/// A member of the widget that shows it. What the user does glides whatever the setting for readings says, but not
/// where the system asks for stillness.
class Glide : public Animated {
public:
    /// `moved` is called at every beat while the value is under way.
    Glide(Look& look, double value, std::function<void()> moved)
        : look_(look), value_(value), moved_(std::move(moved)) {}

    double value() const { return value_.at(look_.clock.now()); }
    /// Heads for the target by a spring of this response; there at once where nobody sees it.
    void set(double target, double responseSeconds, bool isSeen);
    /// Stands at its target and asks for no more beats: for a widget that is being hidden.
    void settle();

    bool advance(double now) override;

private:
    Look& look_;
    AnimatedValue value_;
    std::function<void()> moved_;
};

} // namespace vantoro
