// What holds the desktop application together: the theme, the clock, the windows, the menus and the menu-bar item, and
// who opens whom.
#pragma once

#include "Model/Readers/OwnCostMeter.h"
#include "Views/MenuBar/MenuBarImage.h"
#include "Views/Shared/View.h"
#include "Views/Shared/Words.h"
#include "Views/Shell/LooksFollower.h"
#include "Views/Shell/MainWindow.h"
#include "Views/Shell/ShellModel.h"

#include <functional>
#include <memory>
#include <QObject>

class QAction;
class QMenuBar;

namespace vantoro {

/// The menus at the top of the screen. The bar belongs to no window: the system shows it whenever the program is in
/// front.
class AppMenus : public QObject {
    Q_OBJECT
public:
    AppMenus();
    ~AppMenus() override;

    const QMenuBar& bar() const { return *bar_; }

signals:
    void chosen(AppCommand command);

private:
    void refresh();

    std::unique_ptr<QMenuBar> bar_;
    /// In the model's order; owned by Qt as children of their menus.
    std::vector<QAction*> actions_;
};

class MenuBarItem;
class MenuBarPanel;
class SettingsView;

/// What differs from run to run and from system to system.
struct ShellOptions {
    /// What of the figures is made up.
    Simulation simulation = Simulation::none;
    /// What the data comes from.
    SourceNames sources;
    /// Outlives the shell, and has settled what an update before this start left; null: the program does not update
    /// itself.
    Updates* updates = nullptr;
    /// The system's account of how programs are to look; null: the desktop's portal is asked.
    std::shared_ptr<SystemLooks> looks;
    /// What the program itself takes; may be null.
    std::shared_ptr<OwnCost> ownCost;
    /// What room the menu bar has for the item.
    MenuBarArrangement menuBar = MenuBarArrangement::withinSquare;
    /// There are menus at the top of the screen, and the program can come to the front without a window.
    bool hasMenus = false;
    /// Says which program this is, for the menu's item.
    std::function<void()> showAbout;
    /// Starts what feeds the hub, once, when the window is first shown.
    std::function<void()> start;
};

class Shell : public QObject {
    Q_OBJECT
public:
    /// The hub, the settings and the motion must outlive the shell.
    Shell(SensorHub& hub, Settings& settings, const Motion& motion, ShellOptions options);
    ~Shell() override;

    /// Opens the main window, then puts the item into the menu bar; the settings too where an update was installed from
    /// there.
    void open();
    /// The window in front, opened anew when it was closed.
    void raiseWindow();
    void openSettings();

    /// Whether anything in a window is being animated at this moment.
    bool isMoving() const { return clock_.isBeating(); }
    /// The main window while it is open.
    MainWindow* window() const { return window_; }
    /// The menus at the top of the screen, where there are any.
    const AppMenus* menus() const { return menus_.get(); }

private:
    void settingChanged(std::string_view key);
    void makeMenus();
    void perform(AppCommand command);
    /// Someone asked for the program: the window opens if nothing of it is to be seen.
    void cameToFront();
    void windowClosed();
    void noteMissingMenuBar();
    void togglePanel(const QPoint& anchor);
    void updateClock();

    ShellOptions options_;
    OwnCostMeter ownCost_;
    Theme theme_;
    Icons icons_;
    AnimationClock clock_;
    /// The menu bar is seen while every window is hidden: what turns there has a clock of its own.
    AnimationClock menuBarClock_;
    Look look_;
    Look menuBarLook_;
    ViewContext context_;
    ViewContext menuBarContext_;
    LooksFollower follower_;
    MainWindow* window_ = nullptr; // the two delete themselves once closed, and say so
    SettingsView* settingsWindow_ = nullptr;
    std::unique_ptr<MenuBarPanel> panel_;
    std::unique_ptr<MenuBarItem> item_;
    std::unique_ptr<AppMenus> menus_;
};

} // namespace vantoro
