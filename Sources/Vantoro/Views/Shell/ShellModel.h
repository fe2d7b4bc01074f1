// What is said around the panes: by the menus at the top of the screen, by the bar at the top of the window, and by the
// notice about a desktop without a place for the menu-bar item.
#pragma once

#include <QString>
#include <vector>

namespace vantoro {

class SensorHub;

/// Of the menus, which some systems show for every program, also while no window is open.
enum class AppCommand { about, settings, quit, minimise, close, open, help };

struct AppMenuItem {
    /// Where the system wants an item in its own place among the program's, whatever menu it was put into.
    enum class Role { none, about, settings, quit };

    AppCommand command = AppCommand::about;
    QString text;
    /// As QKeySequence reads it, with "Ctrl" for the Mac's command key; empty for none.
    QString shortcut;
    Role role = Role::none;
    bool isEnabled = true;
    /// A line above sets it apart.
    bool startsGroup = false;

    bool operator==(const AppMenuItem&) const = default;
};

struct AppMenu {
    QString title;
    std::vector<AppMenuItem> items;

    bool operator==(const AppMenu&) const = default;
};

/// `hasActiveWindow`: a window of the program is in front, for the items that are about it.
std::vector<AppMenu> appMenus(bool hasActiveWindow);

/// A dashed mark beside the settings button: the figures are not this machine's own. Empty texts are no badge.
struct Badge {
    QString icon;
    QString text;
    QString tooltip;

    bool operator==(const Badge&) const = default;
};

/// What is made up: nothing, the lack of fans alone, or all sensors.
enum class Simulation { none, fanlessness, sensors };

Badge badge(const SensorHub& hub, Simulation simulation);

/// The window's title: the program's name, and what it shows in place of this machine.
QString windowTitle(const Badge& badge);

/// What is said once, with the one answer to it.
struct Notice {
    QString title;
    QString text;
    QString answer;
};

Notice missingMenuBarNotice();

} // namespace vantoro
