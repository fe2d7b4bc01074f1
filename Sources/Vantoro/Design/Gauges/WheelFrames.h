// The blades of a rotor, drawn once per size and colour and kept as the few pictures that make up one blade pitch.
#pragma once

#include <array>
#include <memory>
#include <QColor>
#include <QPixmap>

namespace vantoro {

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

} // namespace vantoro
