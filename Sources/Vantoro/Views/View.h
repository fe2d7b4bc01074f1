// The base of the panes and windows: it hears when the hub has published and redraws then, but only while it is seen.
#pragma once

#include "Design/PaintedWidget.h"
#include "Model/SensorHub.h"
#include "Model/Settings.h"
#include "Views/SourceNames.h"

namespace vantoro {

class OwnCostMeter;
class Updates;

/// What every view is given. All of it outlives the views.
struct ViewContext {
    SensorHub& hub;
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

    /// Asks the hub anew and shows what has changed. Called when the hub has published and when the view comes on
    /// screen; never while it is hidden.
    virtual void refresh() = 0;

protected:
    ViewContext& context() const { return context_; }
    SensorHub& hub() const { return context_.hub; }

    void showEvent(QShowEvent* event) override;

private:
    ViewContext& context_;
};

} // namespace vantoro
