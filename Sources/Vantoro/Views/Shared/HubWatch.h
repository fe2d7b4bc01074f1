// Hears of some of the hub's properties, and of no others.
#pragma once

#include "Model/Live/SensorHub.h"

#include <functional>
#include <initializer_list>

namespace vantoro {

using HubSignal = void (SensorHub::*)();

/// However many of its properties change within one transaction, `changed` is called once, when the transaction ends.
class HubWatch : public QObject {
public:
    HubWatch(SensorHub& hub, std::initializer_list<HubSignal> properties, std::function<void()> changed,
             QObject* parent);

private:
    bool isDue_ = false;
};

} // namespace vantoro
