#include "Views/Shared/View.h"

#include <utility>

namespace vantoro {

HubWatch::HubWatch(const SensorHub& hub, std::initializer_list<HubSignal> properties, std::function<void()> changed,
                   QObject* parent)
    : QObject(parent) {
    for (const HubSignal changes : properties)
        connect(&hub, changes, this, [this] { isDue_ = true; });
    connect(&hub, &SensorHub::transactionEnded, this, [this, changed = std::move(changed)] {
        if (std::exchange(isDue_, false))
            changed();
    });
}

View::View(ViewContext& context, QWidget* parent) : PaintedWidget(context.look, parent), context_(context) {
    connect(&context.look.clock, &AnimationClock::resumed, this, [this] {
        if (isSeen())
            refresh();
    });
    shows({&SensorHub::formatChanged});
}

// A window that is covered or minimised counts as visible to the toolkit; the clock knows better.
bool View::isSeen() const {
    return isVisible() && !look().clock.isPaused();
}

void View::shows(std::initializer_list<HubSignal> properties, std::function<void()> part) {
    new HubWatch(
        hub(), properties,
        [this, part = std::move(part)] {
            if (!isSeen())
                return;
            look().transaction = &hub().animation();
            part();
            look().transaction = nullptr;
        },
        this); // owned by Qt as a child
}

void View::shows(std::initializer_list<HubSignal> properties) {
    shows(properties, [this] { refresh(); });
}

void View::showEvent(QShowEvent* event) {
    refresh();
    PaintedWidget::showEvent(event);
}

} // namespace vantoro
