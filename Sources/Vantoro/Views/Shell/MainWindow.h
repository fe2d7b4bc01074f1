// The main window: the control bar and the pane below it. It is made when it is opened and gone when it is closed; the
// sampling goes on without it.
#pragma once

#include "Views/Shared/View.h"
#include "Views/Shell/ControlBar.h"

#include <array>
#include <functional>

class QStackedLayout;

namespace vantoro {

class MainWindow : public PaintedWidget {
    Q_OBJECT
public:
    static constexpr QSize usualSize{1040, 830};
    static constexpr QSize smallestSize{820, 560};

    /// `simulation` shows the badge; `start` starts whatever feeds the hub and is called when the window is first
    /// shown.
    MainWindow(ViewContext& context, Simulation simulation, std::function<void()> start);
    ~MainWindow() override;

    Pane pane() const { return pane_; }
    void showPane(Pane pane);
    /// The report in full, over the window.
    void openReport();
    /// Brings it up where it is hidden, minimised or covered.
    void raiseToFront();
    /// Whether any of it can be seen.
    bool canBeSeen() const { return canBeSeen_; }

    Description describe() override;

signals:
    void settingsRequested();
    void quitRequested();
    void canBeSeenChanged();
    /// What was painted first has reached the screen.
    void firstSeen();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* view(Pane pane);
    void refreshReadiness();
    void refreshUpdate();
    void updateCanBeSeen();
    void addShortcuts();
    void restoreGeometryOf();

    ViewContext& context_;
    std::function<void()> start_;
    Simulation simulation_;
    ControlBar* bar_; // this, the views and the layout are owned by Qt as children
    QWidget* content_;
    QStackedLayout* stack_;
    std::array<QWidget*, panes.size()> views_{};
    Pane pane_ = Pane::now;
    bool canBeSeen_ = false;
    bool wasPainted_ = false;
};

} // namespace vantoro
