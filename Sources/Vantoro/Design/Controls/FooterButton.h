// A panel's last line as one wide button: an icon, a text and a chevron, with a separator above.
#pragma once

#include "Design/PaintedWidget.h"

namespace vantoro {

/// Lies over the panel's whole width at its lower edge, whose round corners it follows.
class FooterButton : public PaintedWidget {
    Q_OBJECT
public:
    FooterButton(Look& look, const QString& icon, QWidget* parent = nullptr);

    void setText(const QString& text);

    QSize sizeHint() const override;
    Description describe() override;

signals:
    void clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QString icon_;
    QString text_;
    bool isHovered_ = false;
    bool isPressed_ = false;
    FocusTracker focus_;
};

} // namespace vantoro
