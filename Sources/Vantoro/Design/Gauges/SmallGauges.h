// What stands small beside a figure: a process's work in cores, and a figure's course.
#pragma once

#include "Design/Gauges/GaugeFigures.h"
#include "Design/PaintedWidget.h"

namespace vantoro {

/// Work measured in cores: one cell of the bar is one core, so 486 % is seen as almost five of twelve. With more cores
/// than cells can be told apart, or with none known, one continuous bar; of one core it is the bar of any share of one
/// thing, the graphics processor's too. Pure decoration for a screen reader: the figure beside it says the same.
class CoreBar : public PaintedWidget, public Animated {
    Q_OBJECT
public:
    static constexpr int mostCells = 24;

    /// How many cells a bar of this width shows on a machine of so many cores: 1 where they could not be told apart.
    static int cellsIn(int width, int cores);

    explicit CoreBar(Look& look, QWidget* parent = nullptr);

    /// `percent` of one core, on a machine of so many; filled in a heat stop's colour, neutral without one. The length
    /// glides to it while the bar is on screen.
    void show(double percent, int cores, std::optional<int> heatStop);
    using QWidget::show;
    /// At once: the bar has come to stand for something else.
    void jump();
    /// In points: 8 unless told.
    void setBarHeight(int points);
    /// What is filled is only outlined: a share that belongs to nobody.
    void setHollow(bool hollow);

    QSize sizeHint() const override { return {220, height_}; }
    QSize minimumSizeHint() const override { return {40, height_}; }
    Description describe() override { return {.isDecoration = true}; }
    bool advance(double now) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// What the whole length stands for.
    double fullPercent() const;

    AnimatedValue percent_;
    double painted_ = 0;
    int cores_ = 0;
    std::optional<int> heatStop_;
    int height_ = 8;
    bool isHollow_ = false;
};

/// The course of one figure as a small line with a dot at its end. Drawn in ink on a panel. Points that are not above 0
/// are no readings, unless told, and are left out; fewer than two draw nothing.
class Sparkline : public PaintedWidget {
    Q_OBJECT
public:
    explicit Sparkline(Look& look, QWidget* parent = nullptr);

    void show(const SparklineLine& line);
    using QWidget::show;
    /// Whether the ground under the line is tinted; it is unless told.
    void setAreaShown(bool shown);
    /// In points: 44 unless told.
    void setLineHeight(int points);

    QSize sizeHint() const override { return {128, height_}; }
    QSize minimumSizeHint() const override { return {40, height_}; }
    Description describe() override { return {.isDecoration = true}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double xOf(UnixSeconds time) const;

    SparklineLine line_;
    bool area_ = true;
    int height_ = 44;
};

} // namespace vantoro
