// A button that shows the present choice and opens a list of all of them.
#pragma once

#include "Design/Controls/Pressable.h"

#include <QStringList>

namespace vantoro {

class PopUpButton : public Pressable {
    Q_OBJECT
public:
    /// Room around the button for the focus ring.
    static constexpr int ringMargin = 4;

    PopUpButton(Look& look, const QStringList& choices, QWidget* parent = nullptr);

    int current() const { return current_; }
    /// Without the signal: what the model says.
    void setCurrent(int index);
    /// What a screen reader says is chosen here.
    void setSpokenName(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {80, sizeHint().height()}; }
    Description describe() override;

signals:
    /// The user chose another one.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    /// Opens the list under the button.
    void press() override;
    bool isPressKey(int key) const override;

private:
    QRect drawnRect() const;

    QStringList choices_;
    int current_ = 0;
    QString spoken_;
};

} // namespace vantoro
