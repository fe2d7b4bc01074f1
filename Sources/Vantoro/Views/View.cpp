#include "Views/View.h"

namespace vantoro {

View::View(ViewContext& context, QWidget* parent) : PaintedWidget(context.look, parent), context_(context) {
    // A window that is covered or minimised counts as visible to the toolkit; the clock knows better.
    const auto refreshIfSeen = [this] {
        if (isVisible() && !context_.look.clock.isPaused())
            refresh();
    };
    connect(&context.hub, &SensorHub::refreshed, this, refreshIfSeen);
    connect(&context.look.clock, &AnimationClock::resumed, this, refreshIfSeen);
}

void View::showEvent(QShowEvent* event) {
    refresh();
    PaintedWidget::showEvent(event);
}

} // namespace vantoro
