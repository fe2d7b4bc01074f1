// The base of the panes and windows: each part of one hears of the hub's properties that it shows and redraws then, but
// only while it is seen.
#pragma once

#include "Design/PaintedWidget.h"
#include "Model/Live/SensorHub.h"
#include "Model/Live/Settings.h"
#include "Views/Shared/Words.h"

#include <functional>
#include <initializer_list>

namespace vantoro {

class OwnCostMeter;
class Updates;

using HubSignal = void (SensorHub::*)();

/// However many of its properties change within one transaction, `changed` is called once, when the transaction ends.
class HubWatch : public QObject {
public:
    HubWatch(const SensorHub& hub, std::initializer_list<HubSignal> properties, std::function<void()> changed,
             QObject* parent);

private:
    bool isDue_ = false;
};

/// What every view is given. All of it outlives the views.
struct ViewContext {
    const SensorHub& hub;
    HubActions& actions;
    Settings& settings;
    Look& look;
    SourceNames sources = {};
    /// Null where the program does not update itself.
    Updates* updates = nullptr;
    /// Null where the system does not say what the program itself takes.
    OwnCostMeter* ownCost = nullptr;
};

class View : public PaintedWidget {
    Q_OBJECT
public:
    explicit View(ViewContext& context, QWidget* parent = nullptr);

    /// Asks the hub anew for everything and shows what has changed. Called when the view comes on screen and when
    /// figures are to be written in another way.
    virtual void refresh() = 0;

protected:
    ViewContext& context() const { return context_; }
    const SensorHub& hub() const { return context_.hub; }

    /// Calls `part` at the end of every transaction in which one of these properties was published; never while the
    /// view cannot be seen. What the part changes is shown with the transaction's animation.
    void shows(std::initializer_list<HubSignal> properties, std::function<void()> part);
    /// The same for a view that is redrawn as a whole.
    void shows(std::initializer_list<HubSignal> properties);

    void showEvent(QShowEvent* event) override;

private:
    bool isSeen() const;

    ViewContext& context_;
};

} // namespace vantoro
