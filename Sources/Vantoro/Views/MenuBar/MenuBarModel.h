// What the menu bar shows at all times, one icon and, when it matters, one figure; and the panel that opens from it:
// the answer in short.
#pragma once

#include "Model/Live/SensorHub.h"
#include "Views/Now/NowModel.h"
#include "Views/Shared/Words.h"
#include "Views/Suspects/SuspectsModel.h"

#include <optional>
#include <QRect>
#include <QString>

namespace vantoro {

enum class MenuBarVariant : std::uint8_t { fan, thermometer, gauge };

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

/// The panel that opens from the item.
struct MenuBarPanelModel {
    /// A figure with its caption; the unit stands behind it in a smaller size, where it has one.
    struct Figure {
        QString caption;
        QString figure;
        QString unit;

        bool operator==(const Figure&) const = default;
    };

    static constexpr std::size_t mostSuspects = 4;

    EyebrowModel eyebrow;
    QString title;
    /// Left out where it would repeat the title.
    QString cause;
    /// One of the two: the fan that works hardest, or the chip or the processors.
    std::optional<FanRotorFigures> rotor;
    std::optional<ThermalDialFigures> dial;
    std::vector<Figure> figures;
    std::vector<SuspectRowModel> suspects;
    /// In place of the suspects while there are none.
    QString noSuspects;
    int cores = 0;
    bool rotorTurns = true;

    bool operator==(const MenuBarPanelModel&) const = default;
};

MenuBarPanelModel menuBarPanelModel(const SensorHub& hub, const Settings& settings);

/// Where a panel of this size stands: below the item, or above it where the bar lies at the bottom; without an item
/// beside the pointer; without either in the middle. Always within the screen's available area, as far as it fits.
QRect placedPanel(const QSize& size, const QRect& item, const std::optional<QPoint>& pointer, const QRect& available);

} // namespace vantoro
