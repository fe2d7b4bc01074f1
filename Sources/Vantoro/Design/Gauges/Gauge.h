// The gauge of five bands, an arc of 270 degrees from the lower left clockwise, as it stands round rotors and
// temperatures.
#pragma once

#include "Design/PaintedWidget.h"

#include <QPainter>

namespace vantoro {

/// The outer edge of the arc and how thick it is, in points.
struct GaugeShape {
    double outerRadius = 0;
    double stroke = 0;

    /// The shape for a rotor or dial of this nominal size.
    static GaugeShape ofSize(int size);
    /// How far the cursor reaches from the centre.
    double reach() const;

    bool operator==(const GaugeShape&) const = default;
};

/// Filled in one heat stop up to the position (0 to 1), where a cursor stands in a halo of the background; without a
/// position it is empty and has no cursor.
void drawGauge(QPainter& painter, const QPointF& centre, const GaugeShape& shape, std::optional<double> position,
               int heatStop, Tone background, const Theme& theme);

/// A widget with a gauge: what a rotor and a thermal dial have in common. The position glides as a change of value
/// does.
template <typename Figures>
class Dial : public PaintedWidget, public Animated {
public:
    /// Room on every side of what is drawn, for the focus ring and the cursor of small gauges.
    static constexpr int ringMargin = 4;

    Description describe() override {
        return {.role = QAccessible::ProgressBar,
                .name = figures_.spokenName,
                .value = figures_.spokenValue,
                .number = figures_.position};
    }
    using PaintedWidget::show;

protected:
    /// `size` across; one stop of the keyboard unless it is too small for that.
    Dial(Look& look, int size, bool isStop, Tone background, QWidget* parent)
        : PaintedWidget(look, parent), size_(size), background_(background) {
        keepDirection();
        setFocusPolicy(isStop ? Qt::StrongFocus : Qt::NoFocus);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    void take(const Figures& figures) {
        const double now = look().clock.now();
        // Where a position comes up or goes away there is nothing to glide from.
        const bool glides = figures.position && figures_.position && isVisible();
        position_.set(figures.position.value_or(0), now, glides ? look().update() : std::nullopt);
        const bool speaksAnew = figures.spokenValue != figures_.spokenValue;
        figures_ = figures;
        if (!position_.isAtRest(now))
            look().clock.run(*this);
        if (speaksAnew)
            announceChange();
    }

    QPointF centre() const { return {width() / 2.0, ringMargin + size_ / 2.0}; }

    void paintGauge(QPainter& painter) const {
        const std::optional<double> shown =
            figures_.position ? std::optional(position_.at(look().clock.now())) : std::nullopt;
        drawGauge(painter, centre(), GaugeShape::ofSize(size_), shown, figures_.heatStop, background_, theme());
    }

    void hideEvent(QHideEvent* event) override {
        look().clock.stop(*this);
        position_.set(position_.target(), look().clock.now(), std::nullopt);
        PaintedWidget::hideEvent(event);
    }

    int size_;
    Figures figures_;
    AnimatedValue position_;

private:
    Tone background_;
};

} // namespace vantoro
