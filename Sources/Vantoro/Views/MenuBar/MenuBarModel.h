// What the menu bar shows at all times: one icon and, when it matters, one figure.
#pragma once

#include "Model/Live/SensorHub.h"

#include <optional>
#include <QString>

namespace vantoro {

enum class MenuBarVariant : std::uint8_t { fan, thermometer };

struct MenuBarModel {
    MenuBarVariant variant = MenuBarVariant::fan;
    /// The icon's name.
    QString symbol;
    /// None while there is nothing to say: the item is its icon alone.
    std::optional<QString> figure;
    /// How long a turn of the fan takes while it keeps turning.
    std::optional<double> secondsPerTurn;
    /// The headline, and the figure in full.
    QString tooltip;

    bool operator==(const MenuBarModel&) const = default;
};

/// `alwaysShowsFigure` is the user's wish, `reducesMotion` the system's.
MenuBarModel menuBarModel(const SensorHub& hub, bool alwaysShowsFigure, bool reducesMotion);

/// The figure appears from moderate on, unless it is always wanted.
bool showsMenuBarFigure(StressLevel state, bool always);
/// Digits only, fractions dropped.
QString menuBarSpeed(double rpm);
QString menuBarThermometer(StressLevel state);
/// In eighths of the fan load, so that it changes in steps; none at a quarter and below.
std::optional<double> menuBarSecondsPerTurn(double fanLoad, bool reducesMotion);

/// The turning of the fan in the menu bar: once when it appears, then as long as it has a period.
class MenuBarSpin {
public:
    /// The fan has four blades: after a quarter turn it looks as before.
    static constexpr int framesPerQuarter = 6;

    /// At most so many pictures a second.
    explicit MenuBarSpin(double picturesPerSecond) : interval_(1 / picturesPerSecond) {}

    void appear(double now);
    /// Whether it turns now or would with this period.
    bool isTurning(const std::optional<double>& secondsPerTurn) const;
    /// Moves on to this moment; whether there is another picture to show.
    bool advance(double now, const std::optional<double>& secondsPerTurn);
    /// Which picture, 0 to framesPerQuarter - 1.
    int frame() const;

private:
    double interval_;
    double lastPicture_ = 0;
    double turns_ = 0;
    double firstTurnLeft_ = 0;
};

} // namespace vantoro
