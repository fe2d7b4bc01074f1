// A panel's last line as one wide button: an icon, a text and a chevron, with a separator above.
#pragma once

#include "Design/Controls/Pressable.h"

namespace vantoro {

/// Lies over the panel's whole width at its lower edge, whose round corners it follows.
class FooterButton : public Pressable {
    Q_OBJECT
public:
    FooterButton(Look& look, const QString& icon, QWidget* parent = nullptr);

    void setText(const QString& text);

    QSize sizeHint() const override;
    Description describe() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString icon_;
    QString text_;
};

} // namespace vantoro
