#include "Views/Shell/AppMenusModel.h"

#include "Views/Shared/Words.h"

namespace vantoro {

std::vector<AppMenu> appMenus(bool hasActiveWindow) {
    using Role = AppMenuItem::Role;
    return {
        {.title = "Vantoro",
         .items = {{.command = AppCommand::about, .text = tr("About Vantoro"), .role = Role::about},
                   {.command = AppCommand::settings,
                    .text = tr("Settings…"),
                    .shortcut = "Ctrl+,",
                    .role = Role::settings,
                    .startsGroup = true},
                   {.command = AppCommand::quit,
                    .text = tr("Quit Vantoro"),
                    .shortcut = "Ctrl+Q",
                    .role = Role::quit,
                    .startsGroup = true}}},
        {.title = tr("Window"),
         .items =
             {{.command = AppCommand::minimise,
               .text = tr("Minimize"),
               .shortcut = "Ctrl+M",
               .isEnabled = hasActiveWindow},
              {.command = AppCommand::close, .text = tr("Close"), .shortcut = "Ctrl+W", .isEnabled = hasActiveWindow},
              {.command = AppCommand::open, .text = tr("Open Vantoro"), .shortcut = "Ctrl+0", .startsGroup = true}}},
        {.title = tr("Help"), .items = {{.command = AppCommand::help, .text = tr("Vantoro on the Web")}}}};
}

} // namespace vantoro
