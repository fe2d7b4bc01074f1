// Where the panel stands on the screen.
#include "Views/MenuBar/MenuBarPanel.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantoro {

QSize MenuBarPanel::sizeHint() const {
    return cardRect().marginsAdded(shadow_).size();
}

void MenuBarPanel::moveIntoPlace() {
    mostSuspects_ = model_.suspects.size();
    laidOutHeight_ = layOut();
    // There the desktop alone decides where a window stands.
    const bool isPlacedByDesktop = QGuiApplication::platformName() == QStringLiteral("wayland");
    const QPoint anchor = item_.isValid() ? item_.center() : pointer_.value_or(QPoint());
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    if (isPlacedByDesktop || screen == nullptr) {
        setFixedSize(sizeHint());
        layOut();
        return;
    }
    const QRect room = screen->availableGeometry();
    while (laidOutHeight_ > room.height() && mostSuspects_ > 0) {
        --mostSuspects_;
        laidOutHeight_ = layOut();
    }
    const QRect card = placedPanel({cardWidth(), laidOutHeight_}, item_, pointer_, room);
    // A window that reached beyond the room would be moved back into it by the window manager, card and all.
    constexpr QMargins whole(shadowMargin, shadowMargin, shadowMargin, shadowMargin);
    const QRect outer = card | (card.marginsAdded(whole) & room);
    shadow_ = {card.left() - outer.left(), card.top() - outer.top(), outer.right() - card.right(),
               outer.bottom() - card.bottom()};
    if (geometry() != outer || minimumSize() != outer.size()) {
        // In one step, so that the edge at the menu bar never moves.
        setMinimumSize(0, 0);
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        setGeometry(outer);
        setFixedSize(outer.size());
    }
    layOut();
}

} // namespace vantoro
