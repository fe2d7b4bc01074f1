// What lies over the window until it is answered: the dimmed window and a raised card that rises into place; and the
// plainest of them, which says something once.
#pragma once

#include "Design/PaintedWidget.h"

#include <QPointer>

namespace vantoro {

class Button;
class TextLabel;

/// Covers its whole window, centres the card, keeps the keyboard within it, and closes on Escape; the keyboard goes
/// back to where it was. Deletes itself once it has closed.
class Sheet : public PaintedWidget, public Animated {
    Q_OBJECT
public:
    /// `radius` of the card's corners: 16 for a sheet, 14 for an alert.
    Sheet(Look& look, QWidget& window, int radius);
    ~Sheet() override;

    /// What the card shows; its size follows cardSize().
    QWidget* card() const { return card_; }
    /// Shows it over the window and gives the first focusable widget (or `focus`) the keyboard.
    void open(QWidget* focus = nullptr);
    void close();

    bool advance(double now) override;
    Description describe() override;

signals:
    void closed();

protected:
    /// How large the card is to be within this window.
    virtual QSize cardSize(const QSize& window) const = 0;
    /// Return was pressed anywhere in the card and no button took it.
    virtual void accept() {}

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    /// Open, and no other sheet over it.
    bool isOnTop() const;
    void placeCard();

    QWidget* card_; // owned by Qt as a child
    QPointer<QWidget> focusBefore_;
    int radius_;
    double opened_ = 0;
    double progress_ = 1;
};

class NoticeAlert : public Sheet {
    Q_OBJECT
public:
    NoticeAlert(Look& look, QWidget& window, const QString& title, const QString& text, const QString& answer);

    /// As Sheet::open, with the keyboard on the answer.
    void open();

protected:
    QSize cardSize(const QSize& window) const override;
    void accept() override { close(); }

private:
    TextLabel* title_; // these three are owned by Qt as children
    TextLabel* text_;
    Button* answer_;
};

} // namespace vantoro
