// The menus at the top of the screen, on systems where every program has some, also while no window is open.
#pragma once

#include <QString>
#include <vector>

namespace vantoro {

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

} // namespace vantoro
