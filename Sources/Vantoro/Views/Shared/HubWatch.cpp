#include "Views/Shared/HubWatch.h"

#include <utility>

namespace vantoro {

HubWatch::HubWatch(SensorHub& hub, std::initializer_list<HubSignal> properties, std::function<void()> changed,
                   QObject* parent)
    : QObject(parent) {
    for (const HubSignal changes : properties)
        connect(&hub, changes, this, [this] { isDue_ = true; });
    connect(&hub, &SensorHub::transactionEnded, this, [this, changed = std::move(changed)] {
        if (std::exchange(isDue_, false))
            changed();
    });
}

} // namespace vantoro
