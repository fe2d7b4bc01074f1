// The panes of the main window, in one table.
#pragma once

#include "Views/Cores/CoresView.h"
#include "Views/Now/NowView.h"
#include "Views/Sensors/SensorsView.h"
#include "Views/Timeline/TimelineView.h"

#include <array>
#include <functional>

namespace vantoro {

/// `count` is how many there are.
enum class Pane { now, cores, timeline, sensors, count };

struct PaneKind {
    Pane pane;
    const char* title;
    /// Pressed with the command key.
    Qt::Key key;
    /// Makes its view, which the parent owns; `openReport` is for views that ask for it.
    QWidget* (*make)(ViewContext& context, QWidget* parent, const std::function<void()>& openReport);
};

template <class PaneView>
QWidget* makePane(ViewContext& context, QWidget* parent, const std::function<void()>& openReport) {
    auto* const view = new PaneView(context, parent); // owned by Qt as a child
    if constexpr (requires { &PaneView::explainRequested; })
        QObject::connect(view, &PaneView::explainRequested, parent, openReport);
    return view;
}

/// In the order of the switcher.
inline constexpr std::array panes{
    PaneKind{Pane::now, "Now", Qt::Key_1, makePane<NowView>},
    PaneKind{Pane::cores, "Cores", Qt::Key_2, makePane<CoresView>},
    PaneKind{Pane::timeline, "Timeline", Qt::Key_3, makePane<TimelineView>},
    PaneKind{Pane::sensors, "Sensors", Qt::Key_4, makePane<SensorsView>},
};

consteval bool everyPaneHasItsRow() {
    for (std::size_t place = 0; place < panes.size(); ++place)
        if (panes[place].pane != static_cast<Pane>(place))
            return false;
    return panes.size() == static_cast<std::size_t>(Pane::count);
}

static_assert(everyPaneHasItsRow());

} // namespace vantoro
