#include "Views/Shell/ShellModel.h"

#include "Model/Live/SensorHub.h"
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

Badge badge(const SensorHub& hub, Simulation simulation) {
    if (hub.isReplay())
        return {.icon = "tape.replay",
                .text = tr("Replay"),
                .tooltip = tr("A recording is shown in place of this machine's sensors and processes.")};
    if (simulation != Simulation::none)
        return {.icon = "flask",
                .text = tr("Simulated"),
                .tooltip = simulation == Simulation::sensors
                               ? tr("The sensors are simulated; processes and load are this machine's own.")
                               : tr("Shown as on a machine without fans; all readings are this machine's own.")};
    return {};
}

QString windowTitle(const Badge& badge) {
    return badge.text.isEmpty() ? QStringLiteral("Vantoro") : QStringLiteral("Vantoro — ") + badge.text;
}

Notice missingMenuBarNotice() {
    return {.title = tr("No menu bar to sit in"),
            .text = tr("This desktop shows no status items, so Vantoro has only this window. Closing it ends the "
                       "program; opening Vantoro again while it runs brings the window back to the front."),
            .answer = tr("OK")};
}

} // namespace vantoro
