// A fan as it stands in its range: the gauge, the wheel that turns as the fan does, and the figures below.
#pragma once

#include "Design/Gauges/Gauge.h"
#include "Design/Gauges/GaugeFigures.h"
#include "Design/PaintedWidget.h"

#include <array>
#include <memory>
#include <QColor>
#include <QPixmap>

namespace vantoro {

/// The blades, drawn once per size and colour and kept as the few pictures that make up one blade pitch.
class WheelFrames {
public:
    static constexpr int blades = 11;
    /// Pictures per blade pitch; after one pitch the wheel looks as before.
    static constexpr int count = 16;

    /// The frames for a wheel of this radius, shared by all that show the same.
    static std::shared_ptr<WheelFrames> shared(double radius, const QColor& color, double pixelRatio);

    WheelFrames(double radius, const QColor& color, double pixelRatio);

    /// Which of the pictures shows the wheel after so many turns.
    static int step(double turns);
    /// Where the wheel stands after so many turns, clockwise; a square with sides of twice the radius.
    const QPixmap& at(double turns);

private:
    QPixmap render(double degrees) const;

    double radius_;
    QColor color_;
    double pixelRatio_;
    std::array<QPixmap, count> frames_;
};

/// One stop of the keyboard. While it turns, only the wheel's square is painted anew, from pictures drawn once.
class FanRotor : public PaintedWidget, public Animated {
    Q_OBJECT
public:
    enum class Captions : std::uint8_t {
        full,  ///< the speed, and below it name and share
        label, ///< the name alone
        none,
    };

    /// Room on every side of what is drawn, for the focus ring and the cursor of small gauges.
    static constexpr int ringMargin = 4;

    /// `size` across: 148, 120, 100, 68 or 64; `background` is what it stands on.
    FanRotor(Look& look, int size, Captions captions, Tone background = Tone::window, QWidget* parent = nullptr);

    void setDiameter(int size);
    void show(const FanRotorFigures& figures);
    /// Whether the wheel may turn at all; it also stands where the system asks for stillness.
    void setTurning(bool allowed);
    /// How far the wheel has come, in turns.
    double turns() const { return turns_; }

    QSize sizeHint() const override { return sizeAt(size_); }
    /// What it would ask for at another diameter.
    QSize sizeAt(int diameter) const;
    QSize minimumSizeHint() const override { return sizeHint(); }
    Description describe() override;
    bool advance(double now) override;

    using PaintedWidget::show;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void themeChanged() override;

private:
    QRect gaugeRect() const;
    QPointF centre() const;
    double wheelRadius() const;
    QRect wheelSquare() const;
    double figureHeight() const { return lineHeight(Type::panelTitle) + 1; }
    void headForSpeed();
    /// How much of the caption's room is the name's, which gives way to the share behind it.
    double nameRoom() const;
    void explainCut();
    void paintGauge(QPainter& painter, double now);
    void paintCaptions(QPainter& painter) const;

    int size_;
    Captions captions_;
    Tone background_;
    FanRotorFigures figures_;
    AnimatedValue position_;
    bool gaugeMoves_ = false;
    /// Where the gauge's picture shows it.
    double painted_ = 0;
    AnimatedValue speed_;
    bool turningAllowed_ = true;
    double turns_ = 0;
    double lastBeat_ = 0;
    QPixmap gauge_;
    std::shared_ptr<WheelFrames> wheel_;
};

} // namespace vantoro
