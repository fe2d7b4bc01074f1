// The item in the system's menu bar or tray.
#pragma once

#include "Views/MenuBar/MenuBarImage.h"
#include "Views/Shared/View.h"

#include <memory>
#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>

class QDBusServiceWatcher;

namespace vantoro {

class MenuBarItem : public QObject, public Animated {
    Q_OBJECT
public:
    /// Everything in the context outlives the item.
    MenuBarItem(ViewContext& context, MenuBarArrangement arrangement, QObject* parent = nullptr);
    ~MenuBarItem() override;

    /// How long a picture of the turning fan stays; its clock needs no other beat.
    static int pictureMilliseconds(MenuBarArrangement arrangement);

    /// Comes up as soon as there is a bar to stand in: on desktops whose bar is a service of its own, that is waited
    /// for, without holding anything up.
    void appear();
    /// Whether it stands in a bar.
    bool isShown() const { return item_ != nullptr && item_->isVisible(); }
    /// Where it stands on the screen; empty where the system does not tell.
    QRect geometry() const;
    /// What it shows.
    const MenuBarModel& model() const { return model_; }

    /// Shows what the hub and the settings say now.
    void refresh();

    bool advance(double now) override;

signals:
    /// The item was clicked; the point lies below the item, or under the pointer.
    void panelRequested(const QPoint& globalAnchor);
    /// It was double-clicked or clicked with the middle button.
    void openRequested();
    /// Whether this desktop has a bar for it; again should one come later.
    void availabilityKnown(bool available);

private slots:
    void create();

private:
    void askForTray();
    void waitForTray();
    void showPicture();
    void activated(QSystemTrayIcon::ActivationReason reason);

    ViewContext& context_;
    MenuBarArrangement arrangement_;
    MenuBarImage image_;
    MenuBarSpin spin_;
    HubWatch watch_;
    MenuBarModel model_;
    std::unique_ptr<QSystemTrayIcon> item_;
    std::unique_ptr<QDBusServiceWatcher> trayWatcher_;
    QTimer patience_;
};

} // namespace vantoro
