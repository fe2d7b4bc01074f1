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
};

/// The list that a pop-up button opens: a window of its own that goes as soon as something else is wanted.
/// Deletes itself once it has closed. Up, down, Home and End move, Return and Space choose, Escape closes.
class ChoiceList : public PaintedWidget {
    Q_OBJECT
public:
    ChoiceList(Look& look, const QStringList& choices, int current, QWidget* parent);

    /// Under the anchor, at least as wide as it, or above where the screen ends.
    void openAt(const QWidget& anchor, const QRect& drawn);

    QSize sizeHint() const override;
    Description describe() override;

signals:
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    double rowHeight() const;
    QRectF rowRect(int index) const;
    int rowAt(const QPointF& point) const;
    void highlight(int index);
    void choose(int index);

    QStringList choices_;
    int current_;
    int highlighted_;
    std::vector<SpokenPart*> rows_; // owned by Qt as children
};

} // namespace vantoro
