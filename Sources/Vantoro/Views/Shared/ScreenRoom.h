// Windows and the room that their screen leaves them.
#pragma once

#include <functional>
#include <QMargins>
#include <QObject>
#include <QRect>

class QScreen;
class QWidget;

namespace vantoro {

/// The rectangle moved, and where need be shrunk, to lie within `room`. One that does already is left as it is.
QRect fittedInto(QRect frame, const QRect& room);

/// Tells when screens come, go, or leave another room to windows: once for changes that come together.
class ScreenWatch : public QObject {
    Q_OBJECT
public:
    explicit ScreenWatch(QObject* parent = nullptr);

signals:
    void changed();

private:
    void watch(QScreen* screen);
    void note();

    bool isNoted_ = false;
};

/// Keeps a window, its frame included, within its screen when it opens and after the screens have changed. What the
/// user makes of it in between is the user's.
class WindowKeeper : public QObject {
    Q_OBJECT
public:
    /// Of a window that is about to be shown, as its child. `smallest` says what it asks for at least, where the screen
    /// has that room.
    WindowKeeper(QWidget& window, std::function<QSize()> smallest);

    void fit();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QMargins frameMargins() const;

    QWidget& window_; // its parent
    std::function<QSize()> smallest_;
    ScreenWatch screens_;
    /// The system draws the frame: only then is it known how large it is.
    bool hasFrame_ = false;
};

} // namespace vantoro
