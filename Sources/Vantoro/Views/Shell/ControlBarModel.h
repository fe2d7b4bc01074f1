// What the bar at the top of the window says.
#pragma once

#include <array>
#include <QString>
#include <QStringList>

namespace vantoro {

class SensorHub;

enum class Pane { now, cores, timeline, sensors };

inline constexpr std::array allPanes{Pane::now, Pane::cores, Pane::timeline, Pane::sensors};

/// The panes' names in their order.
QStringList paneTitles();

/// A dashed mark beside the settings button: the figures are not this machine's own. Empty texts are no badge.
struct Badge {
    QString icon;
    QString text;
    QString tooltip;

    bool operator==(const Badge&) const = default;
};

/// `simulates`: the sensors, or the lack of fans, are made up.
Badge badge(const SensorHub& hub, bool simulates);

/// The window's title: the program's name, and what it shows in place of this machine.
QString windowTitle(const Badge& badge);

} // namespace vantoro
