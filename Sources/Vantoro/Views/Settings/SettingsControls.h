// What is set by hand: a slider that stands at one of a few stops, and an on-off switch.
#pragma once

#include "Design/Controls/Pressable.h"
#include "Design/PaintedWidget.h"

#include <map>

namespace vantoro {

/// One stop of the keyboard: arrows step, Home and End go to the ends. A drag snaps to the nearest stop at once; the
/// knob glides there.
class StepSlider : public PaintedWidget {
    Q_OBJECT
public:
    /// Room around the knob for the focus ring.
    static constexpr int ringMargin = 4;

    StepSlider(Look& look, int stops, QWidget* parent = nullptr);

    int current() const { return current_; }
    /// Without the signal: what the model says.
    void setCurrent(int stop);
    /// A text under a stop.
    void setCaption(int stop, const QString& caption);
    /// What a screen reader says the present stop means.
    void setSpokenValue(const QString& value);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {160, sizeHint().height()}; }
    Description describe() override;

signals:
    /// The user moved it to another stop.
    void chosen(int stop);

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void moveTo(int stop);
    /// Where on the track a position in stops is.
    double xAt(double position) const;
    int stopAt(double x) const;
    void paintCaptions(QPainter& painter) const;

    int stops_;
    int current_ = 0;
    Glide knob_;
    std::map<int, QString> captions_;
    QString spokenValue_;
};

class Switch : public Pressable {
    Q_OBJECT
public:
    /// Room around the switch for the focus ring.
    static constexpr int ringMargin = 4;

    explicit Switch(Look& look, QWidget* parent = nullptr);

    /// Without the signal: what the model says.
    void setOn(bool on);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;

signals:
    /// The user turned it.
    void toggled(bool on);

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

    void press() override;

private:
    bool on_ = false;
    /// 0 off, 1 on.
    Glide knob_;
};

} // namespace vantoro
