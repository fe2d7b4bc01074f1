// What the bar at the top of the window says.
#pragma once

#include <QString>

namespace vantoro {

class SensorHub;

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
