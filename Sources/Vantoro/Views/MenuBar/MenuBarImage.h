// The picture of the menu-bar item: icon and figure drawn together.
#pragma once

#include "Design/Icons.h"
#include "Design/Theme.h"
#include "Views/MenuBar/MenuBarModel.h"

#include <QIcon>

namespace vantoro {

enum class MenuBarArrangement : std::uint8_t {
    sideBySide,   ///< a bar that takes a picture of any width and colours it itself
    withinSquare, ///< a bar that squeezes every item into a square
};

/// Draws the item again and again; keeps the few positions of the fan.
class MenuBarImage {
public:
    MenuBarImage(MenuBarArrangement arrangement, Icons& icons) : arrangement_(arrangement), icons_(icons) {}

    /// `frame` as MenuBarSpin gives it.
    QIcon icon(const MenuBarModel& model, int frame, const QColor& color);
    /// One of its pictures, `height` points high.
    QPixmap picture(const MenuBarModel& model, int frame, const QColor& color, int height, double pixelRatio);

private:
    const QPixmap& symbol(const MenuBarModel& model, int frame, const QColor& color, int size, double pixelRatio);
    QPixmap sideBySide(const MenuBarModel& model, int frame, const QColor& color, int height, double pixelRatio);
    QPixmap withinSquare(const MenuBarModel& model, int frame, const QColor& color, int height, double pixelRatio);

    MenuBarArrangement arrangement_;
    Icons& icons_;
    QHash<QString, QPixmap> turned_;
};

/// The colour of an item in a panel that does not colour it itself: light on a dark panel. Some desktops keep their
/// panel dark whatever their windows look like.
QColor trayInk(bool isDarkDesktop, const QString& desktopName);

} // namespace vantoro
