// What can be pressed, whatever it looks like: buttons, switches, rows.
#pragma once

#include "Design/PaintedWidget.h"

namespace vantoro {

/// Pressed by the pointer, by Space and Return, and by a screen reader; a press that leaves before it is let go counts
/// for nothing.
class Pressable : public PaintedWidget {
    Q_OBJECT
public:
    explicit Pressable(Look& look, QWidget* parent = nullptr) : PaintedWidget(look, parent) {}

    bool isHovered() const { return hovered_; }
    /// A press that is under way counts no more: this has come to stand for something else.
    void cancelPress();

signals:
    void clicked();

protected:
    /// What a press does.
    virtual void press() { emit clicked(); }
    /// Whether there is anything to press now.
    virtual bool isPressable() const { return true; }
    /// Where the pointer presses.
    virtual QRect pressPlace() const { return rect(); }
    virtual bool isPressKey(int key) const;
    virtual void setHovered(bool hovered);
    /// As a menu does, which opens under the pointer that is still down.
    void setPressedAtOnce() { atOnce_ = true; }
    bool isPressed() const { return pressed_; }
    /// What a screen reader may do: press, by this name.
    std::vector<Description::Action> pressAction(const QString& name = QAccessibleActionInterface::pressAction());

    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool hovered_ = false;
    bool pressed_ = false;
    bool atOnce_ = false;
};

/// Speaks for one of several things that its parent paints and the pointer reaches through it.
class SpokenPart : public PaintedWidget {
    Q_OBJECT
public:
    SpokenPart(Look& look, QWidget* parent, std::function<Description()> describe);
    Description describe() override { return describe_(); }

private:
    std::function<Description()> describe_;
};

} // namespace vantoro
