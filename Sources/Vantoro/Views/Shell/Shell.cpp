#include "Views/Shell/Shell.h"

#include "Design/Controls/Sheet.h"
#include "Model/Live/Log.h"
#include "Model/Updates/Updates.h"
#include "Platform/System.h"
#include "Views/MenuBar/MenuBarItem.h"
#include "Views/MenuBar/MenuBarPanel.h"
#include "Views/Settings/SettingsView.h"
#include "Views/Shared/ScreenRoom.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QTimer>
#include <QUrl>
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

namespace {
constexpr const char* homePage = "https://vantoro.example";
/// By then the first figures have been shown and what glides has arrived.
constexpr int settlingMilliseconds = 5000;
} // namespace

Shell::Shell(SensorHub& hub, Settings& settings, const Motion& motion, ShellOptions options)
    : options_(std::move(options))
    , ownCost_(options_.ownCost)
    , look_{theme_, icons_, clock_, motion}
    , menuBarLook_{theme_, icons_, menuBarClock_, motion}
    , context_{hub, hub, settings, look_, options_.sources, options_.updates, &ownCost_}
    , menuBarContext_{hub, hub, settings, menuBarLook_}
    , follower_(theme_, options_.looks) {
    menuBarClock_.setBeat(MenuBarItem::pictureMilliseconds(options_.menuBar));
    settingChanged(Setting::appearance.key);
    connect(&settings, &Settings::changed, this, &Shell::settingChanged);
    // Noted all the time, so that whoever opens the settings finds the last minute known.
    connect(&hub, &SensorHub::snapshotChanged, this, [this] { ownCost_.note(clock_.now()); });
    // With nothing to be seen there is nothing to draw; the first window starts the clock.
    clock_.setPaused(true);
}

Shell::~Shell() {
    // The windows refer to the hub and to what this shell holds; what they say on going is of no interest any more.
    for (QWidget* const window : {static_cast<QWidget*>(settingsWindow_), static_cast<QWidget*>(window_)})
        if (window != nullptr) {
            window->disconnect(this);
            delete window;
        }
}

void Shell::settingChanged(std::string_view key) {
    if (key == Setting::appearance.key)
        follower_.applyAppearance(QString::fromStdString(context_.settings.value(Setting::appearance)));
    // What turns or stands is decided when a view refreshes.
    else if (key == Setting::spinRotors.key)
        context_.actions.publish(true);
}

void Shell::open() {
    QApplication::setQuitOnLastWindowClosed(false);
    if (options_.hasMenus)
        makeMenus();
    raiseWindow();
    item_ = std::make_unique<MenuBarItem>(menuBarContext_, options_.menuBar);
    connect(item_.get(), &MenuBarItem::panelRequested, this, &Shell::togglePanel);
    connect(item_.get(), &MenuBarItem::openRequested, this, &Shell::raiseWindow);
    connect(item_.get(), &MenuBarItem::availabilityKnown, this, [this](bool available) {
        if (available)
            return;
        // Without the item a closed window could not be reached again.
        QApplication::setQuitOnLastWindowClosed(true);
        if (!window_)
            QApplication::quit();
        else
            noteMissingMenuBar();
    });
    item_->appear();
    if (options_.updates != nullptr && options_.updates->takeWantsSettings()) {
        Log::updates("reopening Settings, where the install was clicked");
        openSettings();
    }
}

void Shell::makeMenus() {
    menus_ = std::make_unique<AppMenus>();
    connect(menus_.get(), &AppMenus::chosen, this, &Shell::perform);
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        // What brought the program to the front may be a window or the panel, about to be shown.
        if (state == Qt::ApplicationActive)
            QMetaObject::invokeMethod(this, &Shell::cameToFront, Qt::QueuedConnection);
    });
}

void Shell::cameToFront() {
    if (!window_ && !settingsWindow_ && (!panel_ || !panel_->isVisible()))
        raiseWindow();
}

void Shell::perform(AppCommand command) {
    QWidget* const active = QApplication::activeWindow();
    switch (command) {
    case AppCommand::about:
        if (options_.showAbout)
            options_.showAbout();
        break;
    case AppCommand::settings:
        openSettings();
        break;
    case AppCommand::quit:
        QApplication::quit();
        break;
    case AppCommand::minimise:
        if (active != nullptr)
            active->showMinimized();
        break;
    case AppCommand::close:
        if (active != nullptr)
            active->close();
        break;
    case AppCommand::open:
        raiseWindow();
        break;
    case AppCommand::help:
        QDesktopServices::openUrl(QUrl(homePage));
        break;
    }
}

void Shell::raiseWindow() {
    if (panel_)
        panel_->close();
    if (!window_) {
        window_ = new MainWindow(context_, options_.simulation, std::exchange(options_.start, nullptr));
        window_->setAttribute(Qt::WA_DeleteOnClose);
        connect(window_, &MainWindow::settingsRequested, this, &Shell::openSettings);
        connect(window_, &MainWindow::quitRequested, qApp, &QApplication::quit);
        connect(window_, &MainWindow::canBeSeenChanged, this, &Shell::updateClock);
        connect(window_, &QObject::destroyed, this, &Shell::windowClosed);
        // Most of what it took to start and to open a window is not needed to keep it open.
        connect(window_, &MainWindow::firstSeen, this,
                [this] { QTimer::singleShot(settlingMilliseconds, this, &releaseUnusedMemory); });
        if (options_.updates != nullptr)
            connect(window_, &MainWindow::firstSeen, options_.updates, &Updates::windowWasSeen);
        new WindowKeeper(*window_,
                         [] { return MainWindow::smallestSize; }); // owned by the window, as the next is by its own
    }
    window_->raiseToFront();
}

// A window tells of its end when it is half gone: the pointers are let go of first.
void Shell::windowClosed() {
    window_ = nullptr;
    updateClock();
    icons_.clear();
    releaseUnusedMemory();
}

void Shell::openSettings() {
    if (panel_)
        panel_->close();
    if (!settingsWindow_) {
        settingsWindow_ = new SettingsView(context_, context_.sources);
        settingsWindow_->setAttribute(Qt::WA_DeleteOnClose);
        auto* const quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), settingsWindow_); // owned by Qt as a child
        connect(quit, &QShortcut::activated, qApp, &QApplication::quit);
        connect(settingsWindow_, &QObject::destroyed, this, [this] {
            settingsWindow_ = nullptr;
            updateClock();
        });
        new WindowKeeper(*settingsWindow_, [this] { return settingsWindow_->smallestSize(); });
    }
    settingsWindow_->show();
    settingsWindow_->raise();
    settingsWindow_->activateWindow();
    updateClock();
}

void Shell::togglePanel(const QPoint& anchor) {
    if (!panel_) {
        panel_ = std::make_unique<MenuBarPanel>(context_);
        connect(panel_.get(), &MenuBarPanel::openRequested, this, &Shell::raiseWindow);
        connect(panel_.get(), &MenuBarPanel::settingsRequested, this, &Shell::openSettings);
        connect(panel_.get(), &MenuBarPanel::quitRequested, qApp, &QApplication::quit);
    }
    // The panel is a popup: it moves only while it is open, and then it is in front.
    panel_->toggle(item_->geometry(), anchor);
    updateClock();
}

void Shell::noteMissingMenuBar() {
    if (context_.settings.value(Setting::toldOfMissingTray) || !window_)
        return;
    context_.settings.store(Setting::toldOfMissingTray, true);
    const Notice words = missingMenuBarNotice();
    // Deletes itself once closed.
    (new NoticeAlert(look_, *window_, words.title, words.text, words.answer))->open();
}

void Shell::updateClock() {
    const bool seen = (window_ && window_->canBeSeen()) || (panel_ && panel_->isVisible()) ||
                      (settingsWindow_ && settingsWindow_->isVisible());
    clock_.setPaused(!seen);
}

} // namespace vantoro
