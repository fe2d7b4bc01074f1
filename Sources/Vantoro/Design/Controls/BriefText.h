// What a button says for two seconds once it has done its work.
#pragma once

#include "Design/AnimationClock.h"
#include "Design/Controls/Button.h"

#include <utility>

namespace vantoro {

/// A member of what owns the button.
class BriefText : public Animated {
public:
    static constexpr double seconds = 2;

    BriefText(Look& look, Button& button) : look_(look), button_(button) {}

    /// The button says this, and after two seconds what it said before.
    void say(const QString& text) {
        if (!usual_)
            usual_ = button_.text();
        button_.setText(text);
        button_.announceChange(QAccessible::NameChanged);
        until_ = look_.clock.now() + seconds;
        look_.clock.run(*this);
    }

    /// At once: nobody sees the button any more.
    void end() {
        look_.clock.stop(*this);
        if (usual_)
            button_.setText(*std::exchange(usual_, std::nullopt));
    }

    bool advance(double now) override {
        if (now < until_)
            return true;
        end();
        return false;
    }

private:
    Look& look_;
    Button& button_;
    std::optional<QString> usual_;
    double until_ = 0;
};

} // namespace vantoro
