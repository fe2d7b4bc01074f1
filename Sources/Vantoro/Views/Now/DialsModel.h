// The dials beside the verdict: the fans of a machine, or the temperature of one without.
#pragma once

#include "Design/Gauges/GaugeFigures.h"
#include "Model/Live/SensorHub.h"

#include <vector>

namespace vantoro {

struct DialsModel {
    /// One or two fans, or one that stands for none; from three on they are shown small.
    std::vector<FanRotorFigures> rotors;
    /// On a machine without fans, in place of the rotors.
    std::optional<ThermalDialFigures> dial;
    /// Below three or more rotors: "1,480" and "rpm peak".
    QString peakFigure;
    QString peakUnit;

    bool showsSmallRotors() const { return rotors.size() >= 3; }

    bool operator==(const DialsModel&) const = default;
};

DialsModel dialsModel(const SensorHub& hub);

/// A fan's figures, coloured in this heat stop.
FanRotorFigures rotorFigures(const FanReading& fan, int heatStop, const Format& format);
/// The figures of a machine whose fans cannot be read: a wheel that stands still, and no speed.
FanRotorFigures absentRotorFigures();
/// Where a fan stands between its limits, 0 to 1; none where they lie no more than 1 rpm apart.
std::optional<double> fanPosition(const FanReading& fan);
/// Without its cursor while there is no verdict yet, and a dash alone while nothing has been found.
ThermalDialFigures thermalDialFigures(const SensorHub& hub);
/// The same for a fan: its speed, and nothing in a colour.
FanRotorFigures withoutVerdict(FanRotorFigures figures);
/// Whether nothing has been found yet that a dial could show.
bool hasNothingForDials(const SensorHub& hub);

} // namespace vantoro
