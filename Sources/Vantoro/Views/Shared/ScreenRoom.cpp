#include "Views/Shared/ScreenRoom.h"

#include <algorithm>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <utility>

namespace vantoro {

namespace {

/// What a window manager's frame takes, as long as there is none to be measured.
constexpr QMargins usualFrame(2, 34, 2, 6);

QRect roomFor(const QWidget& window) {
    const QScreen* screen = QGuiApplication::screenAt(window.frameGeometry().center());
    if (screen == nullptr)
        screen = window.screen();
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->availableGeometry() : QRect();
}

} // namespace

QRect fittedInto(QRect frame, const QRect& room) {
    frame.setSize(frame.size().boundedTo(room.size()));
    frame.moveLeft(std::clamp(frame.left(), room.left(), room.right() + 1 - frame.width()));
    frame.moveTop(std::clamp(frame.top(), room.top(), room.bottom() + 1 - frame.height()));
    return frame;
}

ScreenWatch::ScreenWatch(QObject* parent) : QObject(parent) {
    for (QScreen* const screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
        watch(screen);
        note();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &ScreenWatch::note);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &ScreenWatch::note);
}

void ScreenWatch::watch(QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, &ScreenWatch::note);
    connect(screen, &QScreen::availableGeometryChanged, this, &ScreenWatch::note);
}

// Queued: the toolkit itself still moves windows off a screen that goes.
void ScreenWatch::note() {
    if (std::exchange(isNoted_, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isNoted_ = false;
            emit changed();
        },
        Qt::QueuedConnection);
}

WindowKeeper::WindowKeeper(QWidget& window, std::function<QSize()> smallest)
    : QObject(&window), window_(window), smallest_(std::move(smallest)) {
    connect(&screens_, &ScreenWatch::changed, this, &WindowKeeper::fit);
    window.installEventFilter(this);
    fit();
}

QMargins WindowKeeper::frameMargins() const {
    if (window_.windowFlags() & Qt::FramelessWindowHint)
        return {};
    return hasFrame_ && window_.windowHandle() != nullptr ? window_.windowHandle()->frameMargins() : usualFrame;
}

void WindowKeeper::fit() {
    const QRect room = roomFor(window_);
    if (!room.isValid())
        return;
    const QMargins frame = frameMargins();
    const QSize most = room.marginsRemoved(frame).size();
    window_.setMinimumSize(smallest_().boundedTo(most));
    // These fill the screen by themselves, and come back by their own rules.
    if (window_.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized))
        return;
    const bool hasPlace = window_.testAttribute(Qt::WA_Moved) || hasFrame_;
    const QRect now(window_.geometry().topLeft(), window_.size());
    const QRect fitted = fittedInto(now.marginsAdded(frame), room).marginsRemoved(frame);
    // Until it is shown, the system chooses the place of a window that has none yet.
    if (fitted.size() != now.size())
        window_.resize(fitted.size());
    if (hasPlace && fitted.topLeft() != now.topLeft())
        window_.move(fitted.topLeft() - QPoint(frame.left(), frame.top()));
}

bool WindowKeeper::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window_ && event->type() == QEvent::Show && window_.windowHandle() != nullptr) {
        hasFrame_ = false;
        window_.windowHandle()->installEventFilter(this);
    }
    if (watched == &window_ && event->type() == QEvent::WindowStateChange)
        QMetaObject::invokeMethod(this, &WindowKeeper::fit, Qt::QueuedConnection);
    // Its frame is round it by the time that it has something to draw.
    if (watched == window_.windowHandle() && event->type() == QEvent::Expose && !hasFrame_ &&
        window_.windowHandle()->isExposed()) {
        hasFrame_ = true;
        QMetaObject::invokeMethod(this, &WindowKeeper::fit, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vantoro
