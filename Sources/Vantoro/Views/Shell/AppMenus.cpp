#include "Views/Shell/AppMenus.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QWindow>

namespace vantoro {

namespace {

bool hasActiveWindow() {
    return QApplication::activeWindow() != nullptr;
}

QAction::MenuRole menuRole(AppMenuItem::Role role) {
    switch (role) {
    case AppMenuItem::Role::about:
        return QAction::AboutRole;
    case AppMenuItem::Role::settings:
        return QAction::PreferencesRole;
    case AppMenuItem::Role::quit:
        return QAction::QuitRole;
    case AppMenuItem::Role::none:
        break;
    }
    // Never by the words of the text, which Qt would go by.
    return QAction::NoRole;
}

} // namespace

AppMenus::AppMenus() : bar_(std::make_unique<QMenuBar>()) {
    for (const AppMenu& menu : appMenus(hasActiveWindow())) {
        QMenu* const shown = bar_->addMenu(menu.title); // owned by Qt as a child, like its actions
        connect(shown, &QMenu::aboutToShow, this, &AppMenus::refresh);
        for (const AppMenuItem& item : menu.items) {
            if (item.startsGroup)
                shown->addSeparator();
            QAction* const action = shown->addAction(item.text);
            action->setShortcut(QKeySequence(item.shortcut, QKeySequence::PortableText));
            action->setMenuRole(menuRole(item.role));
            action->setEnabled(item.isEnabled);
            connect(action, &QAction::triggered, this, [this, command = item.command] { emit chosen(command); });
            actions_.push_back(action);
        }
    }
    // For the items' keys, which work while no menu is open.
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &AppMenus::refresh);
}

AppMenus::~AppMenus() = default;

void AppMenus::refresh() {
    auto action = actions_.begin();
    for (const AppMenu& menu : appMenus(hasActiveWindow()))
        for (const AppMenuItem& item : menu.items)
            (*action++)->setEnabled(item.isEnabled);
}

} // namespace vantoro
